// Copyright (c) 2026 the mimora developers.
//
// Texts for people: what a sender wrote made harmless for a terminal, numbers, aligned columns.
#ifndef MIMORA_TOOL_TEXT_OUTPUT_H_
#define MIMORA_TOOL_TEXT_OUTPUT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/locale_charset.h"
#include "tool/output.h"

namespace mimora::tool {

// The text on one line: folding is undone, a tab becomes a space, and every byte that could
// steer a terminal, reorder the text or belongs to no character of the set shows as \xNN.
std::string OneLine(std::string_view text, const LocaleCharset& charset);

// The text with the line ends of this system. On a terminal it must not steer: what is no line end
// or tab shows as in OneLine. Programs get the other bytes as they are.
std::string Lines(std::string_view text, const Output& out);

// Writes the same of a text that comes in pieces.
class LinesWriter {
 public:
  explicit LinesWriter(Output& out) : out_(out) {}

  void Write(std::string_view piece);
  // Called once, behind the last piece. END_LINE: what follows is to begin on a line of its own.
  void Finish(bool end_line);

 private:
  void WriteLines(std::string_view lines);

  Output& out_;
  std::string pending_;
  bool at_line_start_ = true;
};

// The titles over the texts of several files; a single file has none.
class Titles {
 public:
  Titles(std::size_t files, Output& out) : wanted_(files > 1), out_(out) {}

  bool AreWanted() const { return wanted_; }
  void Print(std::string_view path);

 private:
  const bool wanted_;
  Output& out_;
  std::string_view gap_ = "";
};

// "1,234,567"
std::string Grouped(int64_t number);

// "1 byte", "1,234 bytes"
std::string Bytes(int64_t count);

// Lines of cells, aligned when all are known.
class Table {
 public:
  enum class Align { kLeft, kRight };

  explicit Table(std::vector<Align> columns) : columns_(std::move(columns)) {}

  // At most as many cells as there are columns.
  void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  // A line that stands between the rows and widens no column.
  void AddLine(std::string text) { rows_.push_back({std::move(text)}); }

  void Print(Output& out) const;

 private:
  std::vector<std::size_t> Widths() const;

  const std::vector<Align> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_TEXT_OUTPUT_H_

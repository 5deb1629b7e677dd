// Copyright (c) 2026 the mimora developers.
//
// Texts for people: what a sender wrote made harmless for a terminal, numbers, aligned columns.
#ifndef MIMORA_TOOL_TEXT_OUTPUT_H_
#define MIMORA_TOOL_TEXT_OUTPUT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/output.h"

namespace mimora::tool {

// The text on one line: folding is undone, a tab becomes a space, and every byte that could
// steer a terminal, reorder the text or is no proper UTF-8 shows as \xNN. Without UTF8 this
// applies to all bytes above 0x7F.
std::string OneLine(std::string_view text, bool utf8);

// The same with line ends and tabs kept; CR LF becomes LF.
std::string ManyLines(std::string_view text, bool utf8);

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

// Copyright (c) 2026 the mimora developers.
#include "tool/text_output.h"

#include <algorithm>
#include <utility>

namespace mimora::tool {
namespace {

// A sender may write a type or charset of any length. A cell beyond this pushes the rest of its
// own line aside and leaves the other lines alone, so that output grows with the input only.
constexpr std::size_t kWidestColumn = 40;

// What must be seen of a text to know how it goes on: more than a line end, in no locale less.
constexpr std::size_t kLongestCharacter = 8;

// Control characters, line separators, and the marks that turn the direction of writing, with
// which a name can pretend to end in another extension.
bool IsUnsafe(char32_t code) {
  constexpr struct {
    char32_t first, last;
  } kUnsafe[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
                 {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}};
  return std::ranges::any_of(
      kUnsafe, [code](const auto& range) { return code >= range.first && code <= range.last; });
}

void AppendEscaped(std::string& out, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    out += {'\\', 'x', kDigits[value >> 4], kDigits[value & 15]};
  }
}

struct Blanks {
  std::string_view tab, line_end;
};
constexpr Blanks kOnOneLine = {" ", ""};
constexpr Blanks kOnManyLines = {"\t", "\n"};

// Takes characters off the front of TEXT while more than KEEP bytes are left.
std::string TakeEscaped(std::string_view& text, std::size_t keep, const LocaleCharset& charset,
                        const Blanks& blanks) {
  std::string out;
  out.reserve(text.size());
  while (text.size() > keep) {
    const Character character = charset.First(text);
    std::size_t length = std::max<std::size_t>(character.length, 1);
    if (text.starts_with("\r\n")) {
      length = 2;
      out += blanks.line_end;
    } else if (text.front() == '\n' && !blanks.line_end.empty()) {
      out += blanks.line_end;
    } else if (text.front() == '\t') {
      out += blanks.tab;
    } else if (character.length == 0 || IsUnsafe(character.code)) {
      AppendEscaped(out, text.substr(0, length));
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return out;
}

std::string TakeUnixLines(std::string_view& text, std::size_t keep) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t end; (end = text.find("\r\n")) != std::string_view::npos;) {
    out += text.substr(0, end);
    text.remove_prefix(end + 1);
  }
  if (text.size() <= keep) return out;
  out += text.substr(0, text.size() - keep);
  text.remove_prefix(text.size() - keep);
  return out;
}

std::string TakeLines(std::string_view& text, std::size_t keep, const Output& out) {
  return out.IsTerminal() ? TakeEscaped(text, keep, out.Charset(), kOnManyLines)
                          : TakeUnixLines(text, keep);
}

std::size_t Width(std::string_view text) {
  const auto is_continuation = [](char byte) { return (byte & 0xC0) == 0x80; };
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, is_continuation));
}

}  // namespace

std::string OneLine(std::string_view text, const LocaleCharset& charset) {
  return TakeEscaped(text, 0, charset, kOnOneLine);
}

std::string Lines(std::string_view text, const Output& out) { return TakeLines(text, 0, out); }

void LinesWriter::Write(std::string_view piece) {
  pending_ += piece;
  std::string_view rest = pending_;
  WriteLines(TakeLines(rest, kLongestCharacter - 1, out_));
  pending_ = std::string(rest);
}

void LinesWriter::Finish(bool end_line) {
  WriteLines(Lines(std::exchange(pending_, {}), out_));
  if (end_line && !at_line_start_) WriteLines("\n");
}

void LinesWriter::WriteLines(std::string_view lines) {
  if (lines.empty()) return;
  out_.Write(lines);
  at_line_start_ = lines.back() == '\n';
}

void Titles::Print(std::string_view path) {
  if (!wanted_) return;
  out_.Write(std::exchange(gap_, "\n"));
  out_.Write("==> " + OneLine(path, out_.Charset()) + " <==\n");
}

std::string Grouped(int64_t number) {
  std::string digits = std::to_string(number);
  const std::ptrdiff_t first = number < 0 ? 1 : 0;
  for (std::ptrdiff_t at = std::ssize(digits) - 3; at > first; at -= 3)
    digits.insert(static_cast<std::size_t>(at), 1, ',');
  return digits;
}

std::string Bytes(int64_t count) { return Grouped(count) + (count == 1 ? " byte" : " bytes"); }

std::vector<std::size_t> Table::Widths() const {
  std::vector<std::size_t> widths(columns_.size(), 0);
  for (const auto& row : rows_) {
    if (row.size() == 1) continue;
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], std::min(Width(row[i]), kWidestColumn));
  }
  return widths;
}

void Table::Print(Output& out) const {
  const std::vector<std::size_t> widths = Widths();
  for (const auto& row : rows_) {
    std::string line;
    // Room is owed, and only paid when something follows: no line ends in spaces.
    std::size_t owed = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::size_t width = Width(row[i]);
      const std::size_t room = width < widths[i] ? widths[i] - width : 0;
      const bool right = columns_[i] == Align::kRight;
      if (!row[i].empty()) {
        line.append(std::exchange(owed, 0) + (right ? room : 0), ' ');
        line += row[i];
      }
      owed += (right && !row[i].empty() ? 0 : room) + 2;
    }
    out.Write(line += '\n');
  }
}

}  // namespace mimora::tool

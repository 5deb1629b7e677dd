// Copyright (c) 2026 the mimora developers.
#include "tool/text_output.h"

#include <algorithm>
#include <utility>

namespace mimora::tool {
namespace {

// A sender may write a type or charset of any length. A cell beyond this pushes the rest of its
// own line aside and leaves the other lines alone, so that output grows with the input only.
constexpr std::size_t kWidestColumn = 40;

struct Character {
  char32_t code = 0;
  std::size_t length = 0;  // in bytes; 0: no proper UTF-8
};

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// The first character of TEXT, which is not empty. Overlong forms, surrogates and numbers past
// U+10FFFF are not proper.
Character FirstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  char32_t code = lead & (0x7Fu >> length);
  for (const char byte : text.substr(1, length - 1)) {
    if (!IsContinuation(byte)) return {};
    code = code << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
  }
  constexpr char32_t kLeast[] = {0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[length - 2] || code > 0x10FFFF || surrogate) return {};
  return {code, length};
}

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

std::string Escape(std::string_view text, bool utf8, std::string_view tab,
                   std::string_view line_end) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const Character character = FirstCharacter(text);
    std::size_t length = std::max<std::size_t>(character.length, 1);
    if (text.starts_with("\r\n")) {
      length = 2;
      out += line_end;
    } else if (text.front() == '\t') {
      out += tab;
    } else if (character.length == 0 || IsUnsafe(character.code) ||
               (!utf8 && character.length > 1)) {
      AppendEscaped(out, text.substr(0, length));
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return out;
}

std::size_t Width(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, IsContinuation));
}

}  // namespace

std::string OneLine(std::string_view text, bool utf8) { return Escape(text, utf8, " ", ""); }

std::string ManyLines(std::string_view text, bool utf8) { return Escape(text, utf8, "\t", "\n"); }

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

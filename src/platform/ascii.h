// Copyright (c) 2026 the mimora developers.
//
// Letters of header syntax: ASCII only, whatever the locale says.
#ifndef MIMORA_PLATFORM_ASCII_H_
#define MIMORA_PLATFORM_ASCII_H_

#include <algorithm>
#include <string>
#include <string_view>

namespace mimora {

constexpr char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr bool IsLetter(char c) { return ToUpper(c) >= 'A' && ToUpper(c) <= 'Z'; }

constexpr bool IsBlank(char c) { return c == ' ' || c == '\t'; }

constexpr bool IsControl(char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }

constexpr bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

// White space of a header value, folding included.
constexpr bool IsSpace(char c) { return IsBlank(c) || IsLineEnd(c); }

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr char kUpperHexDigits[] = "0123456789ABCDEF";

// Of a hexadecimal digit; -1 for anything else.
constexpr int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  const char upper = ToUpper(c);
  return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

// A kind of characters, as a table: quicker than asking about each character several times.
class CharacterSet {
 public:
  template <typename IsOfKind>
  consteval explicit CharacterSet(IsOfKind is_of_kind) {
    for (int i = 0; i < 256; ++i) members_[i] = is_of_kind(static_cast<char>(i));
  }

  constexpr bool operator()(char c) const { return members_[static_cast<unsigned char>(c)]; }

  // The first place in [p, end) where such a character stands; end when there is none.
  constexpr const char* Find(const char* p, const char* end) const {
    while (p < end && !(*this)(*p)) ++p;
    return p;
  }

 private:
  bool members_[256] = {};
};

// Without the characters of a kind at its end, or in front.
template <typename IsOfKind>
constexpr std::string_view TrimRight(std::string_view text, IsOfKind is_of_kind) {
  while (!text.empty() && is_of_kind(text.back())) text.remove_suffix(1);
  return text;
}

template <typename IsOfKind>
constexpr std::string_view TrimLeft(std::string_view text, IsOfKind is_of_kind) {
  while (!text.empty() && is_of_kind(text.front())) text.remove_prefix(1);
  return text;
}

inline std::string UpperCase(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(), ToUpper);
  return upper;
}

constexpr bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  const auto is_same = [](char x, char y) { return x == y || ToUpper(x) == ToUpper(y); };
  if (a.size() != b.size()) return false;
  // Most are written alike.
  return a == b || std::equal(a.begin(), a.end(), b.begin(), is_same);
}

}  // namespace mimora

#endif  // MIMORA_PLATFORM_ASCII_H_

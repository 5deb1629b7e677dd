// Copyright (c) 2026 the mimora developers.
//
// Units of UTF-16 as HTML's syntax sees them, and searches over runs of them: eight at a time where
// the machine can, with the same answers.
#ifndef MIMORA_HTML_UNITS_H_
#define MIMORA_HTML_UNITS_H_

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <bit>
#include <cstdint>
#include <string_view>

namespace mimora {

constexpr bool IsHtmlSpace(char16_t c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f';
}

// Makes the small letter of a capital, leaves other letters and digits alone, and makes no letter
// of anything else.
constexpr char16_t ToLower(char16_t c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char16_t>(c + 32) : c;
}

constexpr bool IsLetter(char16_t c) { return ToLower(c) >= 'a' && ToLower(c) <= 'z'; }

constexpr bool IsLetterOrDigit(char16_t c) { return IsLetter(c) || (c >= '0' && c <= '9'); }

// Of a hexadecimal digit; -1 for anything else.
constexpr int DigitValue(char16_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char16_t lower = ToLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Whether TEXT, in small letters or not, is this NAME in small letters.
constexpr bool EqualsName(std::u16string_view text, std::string_view name) {
  if (text.size() != name.size()) return false;
  for (size_t i = 0; i < name.size(); ++i) {
    if (ToLower(text[i]) != static_cast<char16_t>(name[i])) return false;
  }
  return true;
}

constexpr std::u16string_view TrimSpace(std::u16string_view text) {
  while (!text.empty() && IsHtmlSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsHtmlSpace(text.back())) text.remove_suffix(1);
  return text;
}

// The first A or B in [p, end); end when there is none.
inline const char16_t* FindEither(const char16_t* p, const char16_t* end, char16_t a, char16_t b) {
#if defined(__SSE2__)
  const __m128i first = _mm_set1_epi16(static_cast<short>(a));
  const __m128i second = _mm_set1_epi16(static_cast<short>(b));
  for (; end - p >= 8; p += 8) {
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i hit = _mm_or_si128(_mm_cmpeq_epi16(here, first), _mm_cmpeq_epi16(here, second));
    if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hit)))
      return p + std::countr_zero(mask) / 2;
  }
#endif
  while (p < end && *p != a && *p != b) ++p;
  return p;
}

inline const char16_t* FindUnit(const char16_t* p, const char16_t* end, char16_t c) {
  return FindEither(p, end, c, c);
}

}  // namespace mimora

#endif  // MIMORA_HTML_UNITS_H_

// Copyright (c) 2026 the mimora developers.
//
// The digits of quoted-printable escapes.
#ifndef MIMORA_CODEC_QUOTED_PRINTABLE_DIGITS_H_
#define MIMORA_CODEC_QUOTED_PRINTABLE_DIGITS_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/ascii.h"

namespace mimora {

constexpr bool IsLetterOrDigit(char c) { return IsDigit(c) || IsLetter(c); }

consteval std::array<int8_t, 256> MakeQuotedPrintableDigits() {
  std::array<int8_t, 256> digits{};
  for (size_t i = 0; i < digits.size(); ++i) {
    const char c = static_cast<char>(i);
    // Letters behind F go on with the sequence.
    const int value = IsDigit(c) ? c - '0' : ToUpper(c) - 'A' + 10;
    digits[i] = static_cast<int8_t>(IsLetterOrDigit(c) ? value : -1);
  }
  return digits;
}

constexpr std::array<int8_t, 256> kQuotedPrintableDigits = MakeQuotedPrintableDigits();

constexpr int QuotedPrintableDigit(char c) {
  return kQuotedPrintableDigits[static_cast<uint8_t>(c)];
}

// The byte of an escape, which keeps the low eight bits of the pair's value; below 0 when these are
// no digits.
constexpr int QuotedPrintableValue(char high, char low) {
  const int a = QuotedPrintableDigit(high);
  const int b = QuotedPrintableDigit(low);
  return a < 0 || b < 0 ? -1 : (16 * a + b) & 0xFF;
}

}  // namespace mimora

#endif  // MIMORA_CODEC_QUOTED_PRINTABLE_DIGITS_H_

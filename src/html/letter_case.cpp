// Copyright (c) 2026 the mimora developers.
#include "html/letter_case.h"

#include "html/units.h"

namespace mimora {
namespace {

// Small letters and the capital of the first. STEP 2: small letters and capitals take turns.
struct Letters {
  char16_t first;
  char16_t last;
  char16_t capital;
  int step = 1;
};

// Where two small letters have one capital, its small letter comes first.
constexpr Letters kLetters[] = {
    {'a', 'z', 'A'},
    {0xE0, 0xF6, 0xC0},
    {0xF8, 0xFE, 0xD8},
    {0xFF, 0xFF, 0x178},
    {0x101, 0x12F, 0x100, 2},
    {0x133, 0x137, 0x132, 2},
    {0x13A, 0x148, 0x139, 2},
    {0x14B, 0x177, 0x14A, 2},
    {0x17A, 0x17E, 0x179, 2},
    {0x1A1, 0x1A5, 0x1A0, 2},
    {0x1B0, 0x1B0, 0x1AF},
    {0x1CE, 0x1DC, 0x1CD, 2},
    {0x1DF, 0x1EF, 0x1DE, 2},
    {0x1F9, 0x21F, 0x1F8, 2},
    {0x223, 0x233, 0x222, 2},
    {0x259, 0x259, 0x18F},
    {0x3AC, 0x3AC, 0x386},
    {0x3AD, 0x3AF, 0x388},
    {0x3B1, 0x3C1, 0x391},
    {0x3C3, 0x3CB, 0x3A3},
    {0x3C2, 0x3C2, 0x3A3},
    {0x3CC, 0x3CC, 0x38C},
    {0x3CD, 0x3CE, 0x38E},
    {0x430, 0x44F, 0x410},
    {0x450, 0x45F, 0x400},
    {0x461, 0x481, 0x460, 2},
    {0x48B, 0x4BF, 0x48A, 2},
    {0x4C2, 0x4CE, 0x4C1, 2},
    {0x4D1, 0x52F, 0x4D0, 2},
    {0x561, 0x586, 0x531},
    {0x1E01, 0x1E95, 0x1E00, 2},
    {0x1EA1, 0x1EFF, 0x1EA0, 2},
    {0xB5, 0xB5, 0x39C},
    {0x131, 0x131, 'I'},
    {0x17F, 0x17F, 'S'},
};
constexpr char16_t kSharpS = 0xDF;

char16_t Shift(char16_t c, char16_t from, char16_t to) {
  return static_cast<char16_t>(c - from + to);
}

char16_t UpperCase(char16_t c) {
  for (const Letters& row : kLetters) {
    if (c >= row.first && c <= row.last && (c - row.first) % row.step == 0)
      return Shift(c, row.first, row.capital);
  }
  return c;
}

char16_t LowerCase(char16_t c) {
  for (const Letters& row : kLetters) {
    if (c >= row.capital && c - row.capital <= row.last - row.first &&
        (c - row.capital) % row.step == 0)
      return Shift(c, row.capital, row.first);
  }
  return c;
}

void AppendUpper(char16_t c, std::u16string& text) {
  if (c == kSharpS) {
    text += u"SS";
  } else {
    text += UpperCase(c);
  }
}

// Whether a letter behind it is in the middle of a word. An apostrophe does not end one.
bool IsInWord(char16_t c) {
  return IsLetterOrDigit(c) || c == '\'' || c == 0x2019 || (c >= 0xC0 && c < 0x2000) || c >= 0x3040;
}

}  // namespace

void AppendInCase(std::u16string_view words, LetterCase letter_case, std::u16string& text) {
  for (const char16_t c : words) {
    if (letter_case == LetterCase::kLower) {
      text += LowerCase(c);
    } else if (letter_case == LetterCase::kUpper || text.empty() || !IsInWord(text.back())) {
      AppendUpper(c, text);
    } else {
      text += c;
    }
  }
}

}  // namespace mimora

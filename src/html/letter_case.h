// Copyright (c) 2026 the mimora developers.
//
// Capitals and small letters of the Latin, Greek, Cyrillic and Armenian alphabets; letters of
// others are left alone.
#ifndef MIMORA_HTML_LETTER_CASE_H_
#define MIMORA_HTML_LETTER_CASE_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace mimora {

enum class LetterCase : uint8_t { kInherited, kAsIs, kUpper, kLower, kCapitalized };

// Appends WORDS in another case. Capitalized: the first letter of each word; one that TEXT ends
// with goes on.
void AppendInCase(std::u16string_view words, LetterCase letter_case, std::u16string& text);

}  // namespace mimora

#endif  // MIMORA_HTML_LETTER_CASE_H_

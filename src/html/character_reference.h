// Copyright (c) 2026 the mimora developers.
//
// Characters that markup names or numbers: "&eacute;", "&#233;", "&#xE9;".
#ifndef MIMORA_HTML_CHARACTER_REFERENCE_H_
#define MIMORA_HTML_CHARACTER_REFERENCE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace mimora {

struct CharacterReference {
  size_t length = 0;  // how much of the markup it takes; 0: its "&" is text
  char16_t text[2] = {};
  size_t units = 0;  // of the text

  std::u16string_view Text() const { return {text, units}; }
};

// Reads what stands in front of MARKUP, which begins with "&". The longest name counts, and a
// number means what it means in browsers: 80 to 9F are those of windows-1252, and what is no
// character is U+FFFD.
CharacterReference ReadCharacterReference(std::u16string_view markup);

// Replaces all references. An attribute's value, in which a name without its semicolon is text when
// a letter, a digit or "=" follows.
std::u16string DecodeAttribute(std::u16string_view value);

}  // namespace mimora

#endif  // MIMORA_HTML_CHARACTER_REFERENCE_H_

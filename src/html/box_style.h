// Copyright (c) 2026 the mimora developers.
//
// How one element is shown: what its tag says, and its style attribute on top of that.
#ifndef MIMORA_HTML_BOX_STYLE_H_
#define MIMORA_HTML_BOX_STYLE_H_

#include <cstdint>

#include "html/letter_case.h"
#include "html/tokenizer.h"

namespace mimora {

enum class WhiteSpace : uint8_t {
  kInherited,
  kCollapsed,
  kPreserved,
  kLines,  // the line ends are preserved, the rest is collapsed
};

enum class Visibility : uint8_t { kInherited, kVisible, kHidden };

struct BoxStyle {
  Display display = Display::kInline;
  bool flexible = false;  // its children are blocks
  bool floats = false;
  bool positioned = false;
  bool closed = false;  // only its summary is shown
  WhiteSpace white_space = WhiteSpace::kInherited;
  Visibility visibility = Visibility::kInherited;
  LetterCase letter_case = LetterCase::kInherited;

  // Whether there is nothing to be seen of it but its content.
  bool IsPlain() const;
};

BoxStyle StyleOf(Tag tag, const Attributes& attributes);

// What is blocks inside its parent, or taken out of the flow, is no longer inline.
void MakeBlock(BoxStyle& style);

}  // namespace mimora

#endif  // MIMORA_HTML_BOX_STYLE_H_

// Copyright (c) 2026 the mimora developers.
//
// Where the visible text is put together: white space is folded as lines of a page fold it, and
// edges of blocks become line ends once there is text on both sides of them.
#ifndef MIMORA_HTML_TEXT_SINK_H_
#define MIMORA_HTML_TEXT_SINK_H_

#include <algorithm>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>

#include "html/box_style.h"

namespace mimora {

struct TextStyle {
  WhiteSpace white_space = WhiteSpace::kCollapsed;
  LetterCase letter_case = LetterCase::kAsIs;
  bool visible = true;  // otherwise it takes its place all the same
};

class TextSink {
 public:
  // Text in the flow.
  void Text(std::u16string_view run, const TextStyle& style);

  // Something that is no text stands here in the line.
  void Object();

  // What follows begins a line, without a line end if there is text in front.
  void BeginLine() {
    space_ = Space::kNone;
    at_line_start_ = true;
  }

  // An edge of a block. Of several between two texts, the one with the most line ends counts.
  void Break(size_t line_ends) {
    BeginLine();
    line_ends_ = std::max(line_ends_, line_ends);
  }

  // A line end or a tab that is there in any case.
  void Put(char16_t c) {
    BeginLine();
    Append({&c, 1});
  }

  // What another sink has taken, as part of the flow of this one.
  void Add(TextSink&& other);

  std::u16string Take();

 private:
  // White space that will be one blank when something follows in the line.
  enum class Space { kNone, kHidden, kVisible };

  void Collapsed(std::u16string_view run, const TextStyle& style);
  void LineEnd(bool visible);
  void Words(std::u16string_view words, const TextStyle& style);
  void WriteLineEnds();
  void Append(std::u16string_view text);

  // Whole texts that were added are moved, so that a text in many tables, each in another, is not
  // copied for each of them.
  std::list<std::u16string> chunks_;
  std::u16string text_;  // behind the chunks; not empty if there are any
  size_t line_ends_ = 0;
  size_t leading_line_ends_ = 0;  // that would stand in front of the first text
  Space space_ = Space::kNone;
  bool at_line_start_ = true;
};

}  // namespace mimora

#endif  // MIMORA_HTML_TEXT_SINK_H_

// Copyright (c) 2026 the mimora developers.
//
// An open element of a document: how it is shown, and what it hands down.
#ifndef MIMORA_HTML_ELEMENT_H_
#define MIMORA_HTML_ELEMENT_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "html/box_style.h"
#include "html/tags.h"
#include "html/text_sink.h"

namespace mimora {

enum class Markup : uint8_t { kHtml, kSvg, kMath };

// What an element hands down to what is in it.
struct Inherited {
  TextSink* sink = nullptr;
  TextStyle text;
  Markup markup = Markup::kHtml;
  bool flexible = false;
  bool hidden = false;
  // Some content of what is hidden may be shown all the same: the summary of closed details, text
  // in a picture. This is how things are outside of it.
  bool hidden_outside = false;
};

struct Element {
  // In a place where OUTSIDE is handed down.
  Element(const TagName& its_name, const BoxStyle& its_style, const Inherited& outside);

  void Inherit(const Inherited& outside);
  // Gives it a sink for what is in it.
  void SetApart();

  bool Is(Tag tag) const { return name.tag == tag; }
  bool Has(int any_trait) const { return (traits & any_trait) != 0; }

  // Whether its edges end lines, and how many line ends there are then.
  bool IsBlock() const;
  size_t LineEnds() const;
  // Whether it stands for something in the line.
  bool IsObject() const;

  TagName name;
  uint16_t traits = 0;
  BoxStyle style;
  TextSink* sink = nullptr;        // takes its edges
  std::unique_ptr<TextSink> rows;  // of a table: what is in it
  Inherited inside;
  bool foreign = false;  // of SVG or MathML
  bool shown = false;    // its edges count
  bool ended = false;    // by its end tag, though there are open elements in it
  // What was in it before: a visible row, a visible cell, a summary.
  bool after_row = false;
  bool after_cell = false;
  bool after_summary = false;
};

}  // namespace mimora

#endif  // MIMORA_HTML_ELEMENT_H_

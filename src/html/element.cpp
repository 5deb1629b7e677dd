// Copyright (c) 2026 the mimora developers.
#include "html/element.h"

namespace mimora {
namespace {

void HideContent(Inherited& inside) {
  inside.hidden_outside = inside.hidden;
  inside.hidden = true;
}

// Text is shown in a TEXT of a picture.
void InheritInSvg(Tag tag, Inherited& inside) {
  if (tag == Tag::kForeignObject || tag == Tag::kText) inside.hidden = inside.hidden_outside;
  if (tag == Tag::kForeignObject || tag == Tag::kDesc || tag == Tag::kTitle)
    inside.markup = Markup::kHtml;
}

// Text is shown in a leaf of a formula.
void InheritInMath(Tag tag, Inherited& inside) {
  if (!IsFormulaLeaf(tag)) return;
  inside.markup = Markup::kHtml;
  inside.hidden = inside.hidden_outside;
}

void InheritForeign(Tag tag, Inherited& inside) {
  switch (inside.markup) {
    case Markup::kHtml:
      inside.markup = tag == Tag::kSvg ? Markup::kSvg : Markup::kMath;
      HideContent(inside);
      break;
    case Markup::kSvg:
      InheritInSvg(tag, inside);
      break;
    case Markup::kMath:
      InheritInMath(tag, inside);
      break;
  }
}

void InheritText(const BoxStyle& style, TextStyle& text) {
  if (style.white_space != WhiteSpace::kInherited) text.white_space = style.white_space;
  if (style.letter_case != LetterCase::kInherited) text.letter_case = style.letter_case;
  if (style.visibility != Visibility::kInherited)
    text.visible = style.visibility == Visibility::kVisible;
}

}  // namespace

Element::Element(const TagName& its_name, const BoxStyle& its_style, const Inherited& outside)
    : name(its_name), traits(TraitsOf(its_name.tag).traits), style(its_style) {
  const bool in_html = outside.markup == Markup::kHtml;
  foreign = !in_html || Is(Tag::kSvg) || Is(Tag::kMath);
  if (outside.flexible) MakeBlock(style);
  if (!in_html && style.display != Display::kNone)
    style.display = Is(Tag::kText) || Is(Tag::kForeignObject) ? Display::kBlock : Display::kInline;
  Inherit(outside);
}

void Element::Inherit(const Inherited& outside) {
  sink = outside.sink;
  inside = outside;
  if (rows != nullptr) inside.sink = rows.get();
  inside.flexible = style.flexible;
  InheritText(style, inside.text);
  shown = !outside.hidden && style.display != Display::kNone;
  if (foreign) InheritForeign(name.tag, inside);
  // Texts are shown in a picture that has hidden content otherwise.
  if (outside.markup != Markup::kHtml && IsBlock()) shown = !inside.hidden;
  if (style.display == Display::kNone || Has(kReplaced))
    inside.hidden = inside.hidden_outside = true;
  if (style.closed) HideContent(inside);
}

void Element::SetApart() {
  rows = std::make_unique<TextSink>();
  inside.sink = rows.get();
}

// Those of a paragraph do, however it is shown.
bool Element::IsBlock() const {
  return style.display == Display::kBlock || style.display == Display::kTable ||
         style.display == Display::kCaption || Is(Tag::kP);
}

size_t Element::LineEnds() const {
  if (!inside.text.visible) return 0;
  return Is(Tag::kP) ? 2 : 1;
}

bool Element::IsObject() const {
  return style.display == Display::kInline && (Has(kReplaced) || Is(Tag::kSvg));
}

}  // namespace mimora

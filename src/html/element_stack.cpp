// Copyright (c) 2026 the mimora developers.
#include "html/element_stack.h"

#include "diag/limits.h"
#include "html/units.h"

namespace mimora {
namespace {

void End(const Element& element) {
  if (!element.shown) return;
  switch (element.style.display) {
    case Display::kInlineBlock:
      element.sink->BeginLine();
      element.sink->Object();
      break;
    case Display::kRow:
    case Display::kCell:
      element.sink->BeginLine();
      break;
    default:
      break;
  }
  if (element.IsBlock()) element.sink->Break(element.LineEnds());
}

// Beyond the limit: whether an end tag belongs to each start tag.
bool IsCounted(Tag tag) {
  return !TraitsOf(tag).Has(kImpliedEnd) && !IsTablePart(TraitsOf(tag).rule);
}

}  // namespace

ElementStack::ElementStack(TextSink& sink) {
  Inherited document;
  document.sink = &sink;
  elements_.emplace_back(TagName{Tag::kBody, 0}, StyleOf(Tag::kBody, {}), document);
}

void ElementStack::SetRootStyle(const BoxStyle& style) {
  Element& root = elements_.front();
  root.style = style;
  root.style.display = Display::kBlock;
  Inherited document;
  document.sink = root.sink;
  root.Inherit(document);
}

size_t ElementStack::FindInScope(Tag tag, int traits) const {
  if (!IsOpen(tag)) return kNowhere;
  return Find([tag](const Element& e) { return e.Is(tag); },
              [traits](const Element& e) { return e.Has(traits); });
}

// ---- Opening ------------------------------------------------------------------------------------

bool ElementStack::Open(const TagName& name, const BoxStyle& style) {
  Element element(name, style, Outside(name.tag));
  if (!IsKept(element)) return false;
  if (beyond_ != 0 || !HasRoom(name.tag)) {
    OpenBeyondLimit(element);
    return false;
  }
  // What strays between the rows of a table is still to come, and stands in front of it.
  if (element.Is(Tag::kTable) && element.shown) {
    element.SetApart();
  } else {
    Begin(element);
  }
  elements_.push_back(std::move(element));
  ++open_[static_cast<size_t>(name.tag)];
  return true;
}

void ElementStack::Void(const TagName& name, const BoxStyle& style) {
  if (hidden_beyond_ != 0) return;
  const Element element(name, style, Outside(name.tag));
  Begin(element);
  End(element);
}

void ElementStack::LineEnd(const BoxStyle& style) {
  if (hidden_beyond_ != 0) return;
  const Element element({Tag::kBr, 0}, style, Outside(Tag::kBr));
  if (!element.shown) return;
  if (element.inside.text.visible) {
    element.sink->Put(u'\n');
  } else {
    element.sink->BeginLine();
  }
}

Inherited ElementStack::Outside(Tag tag) {
  Element& top = elements_.back();
  if (IsTableStructure(TopTag()) && !IsTablePart(TraitsOf(tag).rule)) return OutsideOfTable();
  Inherited outside = top.inside;
  if (tag == Tag::kSummary && top.style.closed && !top.after_summary) {
    top.after_summary = true;
    outside.hidden = outside.hidden_outside;
  }
  return outside;
}

// Of the table between the rows and cells of which something stands.
const Inherited& ElementStack::OutsideOfTable() const {
  size_t i = elements_.size() - 1;
  while (!elements_[i].Is(Tag::kTable)) --i;
  return elements_[i - 1].inside;
}

// An inline element without a style of its own matters only where another one of its kind could be
// closed by its end tag.
bool ElementStack::IsKept(const Element& element) const {
  const Rule rule = TraitsOf(element.name.tag).rule;
  return rule > Rule::kRubyPart || element.foreign || element.Has(kKept) ||
         IsOpen(element.name.tag) || !element.style.IsPlain();
}

// For a table there is room when there is some for a group, a row and a cell in it.
bool ElementStack::HasRoom(Tag tag) const {
  return elements_.size() + (tag == Tag::kTable ? 4 : 1) <= kDeepestElement;
}

void ElementStack::OpenBeyondLimit(const Element& element) {
  if (!OpensScope(TraitsOf(element.name.tag).rule)) return;
  if (hidden_beyond_ == 0 && element.shown) element.sink->Break(element.LineEnds());
  if (!IsCounted(element.name.tag)) return;
  ++beyond_;
  if (hidden_beyond_ != 0) return;
  if (element.inside.hidden && !Top().inside.hidden) hidden_beyond_ = beyond_;
}

// ---- Closing ------------------------------------------------------------------------------------

void ElementStack::CloseTo(size_t index) {
  while (elements_.size() > index || Top().ended) Pop();
}

void ElementStack::CloseLater(size_t index) {
  if (index != kNowhere) elements_[index].ended = true;
  if (Top().ended) CloseTop();
}

void ElementStack::Pop() {
  const Element element = std::move(elements_.back());
  elements_.pop_back();
  --open_[static_cast<size_t>(element.name.tag)];
  if (element.rows != nullptr) {
    Begin(element);
    element.sink->Add(std::move(*element.rows));
  }
  End(element);
  in_stray_text_ = false;
}

void ElementStack::CloseAround(size_t index) {
  End(elements_[index]);
  --open_[static_cast<size_t>(elements_[index].name.tag)];
  elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(index));
  for (; index < elements_.size(); ++index) {
    Element& element = elements_[index];
    const bool was_shown = element.shown;
    element.Inherit(elements_[index - 1].inside);
    if (!was_shown && element.shown && element.IsBlock()) element.sink->Break(element.LineEnds());
  }
}

void ElementStack::CloseBeyondLimit(Tag tag) {
  if (!OpensScope(TraitsOf(tag).rule)) return;
  if (hidden_beyond_ == 0 && !Top().inside.hidden) Top().inside.sink->Break(tag == Tag::kP ? 2 : 1);
  if (IsCounted(tag) && hidden_beyond_ == beyond_--) hidden_beyond_ = 0;
}

// ---- Edges --------------------------------------------------------------------------------------

void ElementStack::Begin(const Element& element) {
  if (!element.shown) return;
  in_stray_text_ = false;
  if (element.IsBlock()) element.sink->Break(element.LineEnds());
  switch (element.style.display) {
    case Display::kInline:
      if (element.IsObject()) element.sink->Object();
      break;
    case Display::kInlineBlock:
      element.sink->Object();
      element.sink->BeginLine();
      break;
    case Display::kRow:
      BeginRow(element);
      break;
    case Display::kCell:
      BeginCell(element);
      break;
    default:
      break;
  }
}

// The line end of a row is written in front of the next one. The groups do not count.
void ElementStack::BeginRow(const Element& element) {
  size_t i = elements_.size() - 1;
  while (i > 0 && elements_[i].style.display == Display::kRowGroup) --i;
  Element& table = elements_[i];
  if (table.after_row) element.sink->Put(u'\n');
  element.sink->BeginLine();
  table.after_row = element.inside.text.visible;
}

void ElementStack::BeginCell(const Element& element) {
  Element& row = elements_.back();
  if (row.after_cell) element.sink->Put(u'\t');
  element.sink->BeginLine();
  row.after_cell = element.inside.text.visible;
}

// ---- Text ---------------------------------------------------------------------------------------

void ElementStack::Text(std::u16string_view run) {
  if (hidden_beyond_ != 0) return;
  if (IsTableStructure(TopTag())) return StrayText(run);
  const Inherited& inside = Top().inside;
  if (!inside.hidden) inside.sink->Text(run, inside.text);
}

// White space between rows and cells is none, unless it belongs to other text that stands there.
void ElementStack::StrayText(std::u16string_view run) {
  if (!in_stray_text_ && TrimSpace(run).empty()) return;
  in_stray_text_ = true;
  const Inherited& outside = OutsideOfTable();
  if (!outside.hidden) outside.sink->Text(run, outside.text);
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "html/tree_reader.h"

#include <iterator>

#include "html/doctype.h"
#include "html/units.h"

namespace mimora {
namespace {

bool IsTable(const Element& element) { return element.Is(Tag::kTable); }

bool EndsTable(const Element& element) { return IsTable(element) || element.Is(Tag::kTemplate); }

bool IsTableOrRowGroup(const Element& element) {
  return IsTable(element) || IsRowGroup(element.name.tag);
}

bool IsStructure(const Element& element) { return IsTableStructure(element.name.tag); }

// Names that only mean something in SVG and MathML.
bool IsForeignName(Tag tag) {
  return IsFormulaLeaf(tag) || tag == Tag::kDesc || tag == Tag::kForeignObject || tag == Tag::kText;
}

TagName AsHtml(const TagName& name) {
  if (name.tag == Tag::kImage) return {Tag::kImg, name.key};
  return IsForeignName(name.tag) ? TagName{Tag::kUnknown, name.key} : name;
}

TagName AsForeign(const TagName& name) {
  const Tag tag = name.tag;
  const bool known = IsForeignName(tag) || tag == Tag::kSvg || tag == Tag::kMath ||
                     tag == Tag::kTitle || tag == Tag::kStyle || tag == Tag::kScript;
  return known ? name : TagName{Tag::kUnknown, name.key};
}

std::u16string_view WithoutFirstLineEnd(std::u16string_view run) {
  if (run.starts_with(u"\r\n")) return run.substr(2);
  return run.starts_with(u'\n') || run.starts_with(u'\r') ? run.substr(1) : run;
}

}  // namespace

void TreeReader::Read() {
  while (true) {
    const Token& token = tokenizer_.Next(IsForeign());
    switch (token.kind) {
      case Token::kEnd:
        return stack_.CloseAll();
      case Token::kText:
        Text(token.text);
        break;
      case Token::kStartTag:
        StartTag(token);
        break;
      case Token::kEndTag:
        EndTag(token);
        break;
      case Token::kDoctype:
        Doctype(token.text);
        break;
    }
  }
}

void TreeReader::Doctype(std::u16string_view text) {
  if (at_start_) quirks_ = IsQuirksDoctype(text);
  at_start_ = false;
}

void TreeReader::Text(std::u16string_view run) {
  if (at_start_ && !TrimSpace(run).empty()) at_start_ = false;
  if (skips_line_end_) run = WithoutFirstLineEnd(run);
  skips_line_end_ = false;
  stack_.Text(run);
}

const TreeReader::Handlers& TreeReader::HandlersOf(Tag tag) {
  using R = TreeReader;
  static constexpr Handlers kHandlers[] = {
      {&R::StartOther, &R::EndOther},         // kOther
      {&R::StartOther, &R::EndFormatting},    // kFormatting
      {&R::StartAnchor, &R::EndFormatting},   // kAnchor
      {&R::StartRubyPart, &R::EndOther},      // kRubyPart
      {&R::StartBlock, &R::EndBlock},         // kBlock
      {&R::StartBlock, &R::EndParagraph},     // kParagraph
      {&R::StartPre, &R::EndBlock},           // kPre
      {&R::StartHeading, &R::EndHeading},     // kHeading
      {&R::StartListItem, &R::EndListItem},   // kListItem
      {&R::StartDefinition, &R::EndBlock},    // kDefinition
      {&R::StartForm, &R::EndForm},           // kForm
      {&R::StartButton, &R::EndBlock},        // kButton
      {&R::StartSelect, &R::EndBlock},        // kSelect
      {&R::StartOption, &R::EndOther},        // kOption
      {&R::StartOptgroup, &R::EndOther},      // kOptgroup
      {&R::StartTable, &R::EndTablePart},     // kTable
      {&R::StartRowGroup, &R::EndTablePart},  // kCaption
      {&R::StartRowGroup, &R::EndTablePart},  // kRowGroup
      {&R::StartRow, &R::EndTablePart},       // kRow
      {&R::StartCell, &R::EndTablePart},      // kCell
      {&R::StartOther, &R::EndBlock},         // kObject
      {&R::StartOther, &R::EndTemplate},      // kTemplate
      {&R::StartOther, &R::EndOther},         // kForeign
      {&R::StartColumn, &R::EndNothing},      // kColumn
      {&R::StartVoid, &R::EndNothing},        // kVoid
      {&R::StartBr, &R::EndBr},               // kBr
      {&R::StartHr, &R::EndNothing},          // kHr
      {&R::StartRaw, &R::EndNothing},         // kRaw
      {&R::StartPlaintext, &R::EndNothing},   // kPlaintext
      {&R::StartBody, &R::EndNothing},        // kBody
      {&R::StartNothing, &R::EndNothing},     // kIgnored
  };
  static_assert(std::size(kHandlers) == kRuleCount);
  return kHandlers[static_cast<size_t>(TraitsOf(tag).rule)];
}

// ---- Start tags ---------------------------------------------------------------------------------

void TreeReader::StartTag(const Token& token) {
  at_start_ = skips_line_end_ = false;
  if (IsForeign() && StartForeign(token)) return;
  const TagName name = AsHtml(token.name);
  const TagTraits& traits = TraitsOf(name.tag);
  const BoxStyle style = StyleOf(name.tag, token.attributes);
  if (traits.rule == Rule::kForeign && token.self_closing) return stack_.Void(name, style);
  // There are no tables to be seen beyond the limit.
  if (stack_.IsBeyondLimit() && OpensScope(traits.rule)) return StartOther(name, style);
  if (traits.Has(kEndsSelect)) CloseInScope(Tag::kSelect, kScope);
  (this->*HandlersOf(name.tag).start)(name, style);
}

bool TreeReader::StartForeign(const Token& token) {
  const Tag tag = token.name.tag;
  if (TraitsOf(tag).Has(kLeavesForeign) || (tag == Tag::kFont && token.attributes.font)) {
    while (IsForeign() && !stack_.IsBeyondLimit()) stack_.CloseTop();
    return false;
  }
  const TagName name = AsForeign(token.name);
  if (!token.self_closing) stack_.Open(name, StyleOf(name.tag, token.attributes));
  return true;
}

void TreeReader::StartAnchor(const TagName& name, const BoxStyle& style) {
  EndFormatting(name);
  stack_.Open(name, style);
}

void TreeReader::StartBlock(const TagName& name, const BoxStyle& style) {
  CloseParagraph();
  stack_.Open(name, style);
}

void TreeReader::StartPre(const TagName& name, const BoxStyle& style) {
  StartBlock(name, style);
  skips_line_end_ = true;
}

void TreeReader::StartHeading(const TagName& name, const BoxStyle& style) {
  CloseParagraph();
  if (IsHeading(stack_.TopTag())) stack_.CloseTop();
  stack_.Open(name, style);
}

void TreeReader::StartListItem(const TagName& name, const BoxStyle& style) {
  CloseItem(Tag::kLi, Tag::kLi);
  StartBlock(name, style);
}

void TreeReader::StartDefinition(const TagName& name, const BoxStyle& style) {
  CloseItem(Tag::kDd, Tag::kDt);
  StartBlock(name, style);
}

void TreeReader::CloseItem(Tag tag, Tag other) {
  if (!stack_.IsOpen(tag) && !stack_.IsOpen(other)) return;
  stack_.CloseTo(
      stack_.Find([=](const Element& e) { return e.Is(tag) || e.Is(other); },
                  [](const Element& e) { return e.Has(kSpecial) && !e.Has(kListParent); }));
}

// There are no forms in forms, and one between the rows of a table is empty.
void TreeReader::StartForm(const TagName& name, const BoxStyle& style) {
  if (in_form_) return;
  in_form_ = true;
  if (!IsInTableStructure()) StartBlock(name, style);
}

void TreeReader::StartButton(const TagName& name, const BoxStyle& style) {
  CloseInScope(Tag::kButton, kScope);
  stack_.Open(name, style);
}

// One in another one only closes that.
void TreeReader::StartSelect(const TagName& name, const BoxStyle& style) {
  const size_t open = stack_.FindInScope(Tag::kSelect, kScope);
  if (open != ElementStack::kNowhere) return stack_.CloseTo(open);
  stack_.Open(name, style);
}

void TreeReader::StartOption(const TagName& name, const BoxStyle& style) {
  if (stack_.TopTag() == Tag::kOption) stack_.CloseTop();
  stack_.Open(name, style);
}

void TreeReader::StartOptgroup(const TagName& name, const BoxStyle& style) {
  if (stack_.TopTag() == Tag::kOption) stack_.CloseTop();
  if (stack_.TopTag() == Tag::kOptgroup && stack_.IsOpen(Tag::kSelect)) stack_.CloseTop();
  stack_.Open(name, style);
}

void TreeReader::StartRubyPart(const TagName& name, const BoxStyle& style) {
  if (IsBetween(stack_.TopTag(), Tag::kRb, Tag::kRtc)) stack_.CloseTop();
  stack_.Open(name, style);
}

void TreeReader::StartBr(const TagName&, const BoxStyle& style) { stack_.LineEnd(style); }

void TreeReader::StartHr(const TagName& name, const BoxStyle& style) {
  CloseParagraph();
  stack_.Void(name, style);
}

void TreeReader::StartRaw(const TagName& name, const BoxStyle& style) {
  const TagTraits& traits = TraitsOf(name.tag);
  if (name.tag == Tag::kXmp) CloseParagraph();
  const std::u16string_view content =
      name.tag == Tag::kScript ? tokenizer_.TakeScript() : tokenizer_.TakeRawText(traits.name);
  if (traits.Has(kReplaced) || style.display == Display::kNone) return stack_.Void(name, style);
  if (!stack_.Open(name, style)) return;
  stack_.Text(content);
  stack_.CloseTop();
}

void TreeReader::StartPlaintext(const TagName& name, const BoxStyle& style) {
  StartBlock(name, style);
  stack_.Text(tokenizer_.TakeRest());
}

void TreeReader::StartBody(const TagName&, const BoxStyle& style) { stack_.SetRootStyle(style); }

// ---- Tables -------------------------------------------------------------------------------------

// Whether what comes now stands between the rows and cells of a table.
bool TreeReader::IsInTableStructure() const {
  const size_t structure = stack_.Find(IsStructure, [](const Element& e) {
    return IsCell(e.name.tag) || e.Is(Tag::kCaption) || e.Is(Tag::kTemplate);
  });
  return structure != ElementStack::kNowhere;
}

// One between the rows of another ends that. Old documents have tables in paragraphs, and those in
// preformatted text are not.
void TreeReader::StartTable(const TagName& name, const BoxStyle& style) {
  BoxStyle its_style = style;
  if (quirks_ && style.white_space == WhiteSpace::kInherited)
    its_style.white_space = WhiteSpace::kCollapsed;
  if (IsInTableStructure()) {
    EndTablePart(name);
  } else if (!quirks_) {
    CloseParagraph();
  }
  stack_.Open(name, its_style);
}

// Captions, too.
void TreeReader::StartRowGroup(const TagName& name, const BoxStyle& style) {
  const size_t table = stack_.Find(IsTable, EndsTable);
  if (table == ElementStack::kNowhere) return;
  stack_.CloseTo(table + 1);
  stack_.Open(name, style);
}

void TreeReader::StartColumn(const TagName&, const BoxStyle&) {
  const size_t table = stack_.Find(IsTable, EndsTable);
  if (table != ElementStack::kNowhere) stack_.CloseTo(table + 1);
}

void TreeReader::StartRow(const TagName& name, const BoxStyle& style) {
  const size_t group = stack_.Find(IsTableOrRowGroup, EndsTable);
  if (group == ElementStack::kNowhere) return;
  stack_.CloseTo(group + 1);
  stack_.Open(name, style);
}

void TreeReader::StartCell(const TagName& name, const BoxStyle& style) {
  const size_t row = stack_.Find(IsStructure, EndsTable);
  if (row == ElementStack::kNowhere) return;
  stack_.CloseTo(row + 1);
  if (stack_.TopTag() != Tag::kTr) stack_.Open({Tag::kTr, 0}, StyleOf(Tag::kTr, {}));
  stack_.Open(name, style);
}

void TreeReader::EndTablePart(const TagName& name) {
  if (!stack_.IsOpen(name.tag)) return;
  stack_.CloseTo(stack_.Find([&](const Element& e) { return e.Is(name.tag); }, EndsTable));
}

// ---- End tags -----------------------------------------------------------------------------------

void TreeReader::EndTag(const Token& token) {
  at_start_ = skips_line_end_ = false;
  if (stack_.Top().foreign && EndForeign(token.name)) return;
  const TagName name = AsHtml(token.name);
  if (stack_.IsBeyondLimit()) return stack_.CloseBeyondLimit(name.tag);
  (this->*HandlersOf(name.tag).end)(name);
}

bool TreeReader::EndForeign(const TagName& name) {
  if (name.tag == Tag::kP || name.tag == Tag::kBr) {
    while (IsForeign() && !stack_.IsBeyondLimit()) stack_.CloseTop();
    return false;
  }
  const size_t found =
      stack_.Find([&](const Element& e) { return e.foreign && e.name.key == name.key; },
                  [](const Element& e) { return !e.foreign; });
  stack_.CloseTo(found);
  return found != ElementStack::kNowhere;
}

void TreeReader::EndOther(const TagName& name) {
  if (!stack_.IsOpen(name.tag)) return;
  stack_.CloseTo(
      stack_.Find([&](const Element& e) { return e.Is(name.tag) && e.name.key == name.key; },
                  [](const Element& e) { return e.Has(kSpecial); }));
}

// Blocks in it go on without it.
void TreeReader::EndFormatting(const TagName& name) {
  const size_t found = stack_.FindInScope(name.tag, kScope);
  if (found == ElementStack::kNowhere) return;
  if (stack_.FindInScope(name.tag, kSpecial) != ElementStack::kNowhere) {
    stack_.CloseTo(found);
  } else {
    stack_.CloseAround(found);
  }
}

// One that ends nothing is an empty paragraph.
void TreeReader::EndParagraph(const TagName& name) {
  const size_t found = stack_.FindInScope(Tag::kP, kScope | kButtonScope);
  if (found == ElementStack::kNowhere) return stack_.Void(name, StyleOf(Tag::kP, {}));
  stack_.CloseTo(found);
}

// That of any level ends a heading of any other.
void TreeReader::EndHeading(const TagName&) {
  stack_.CloseTo(stack_.Find([](const Element& e) { return IsHeading(e.name.tag); },
                             [](const Element& e) { return e.Has(kScope); }));
}

// What is still open in the form remains so.
void TreeReader::EndForm(const TagName&) {
  if (!in_form_) return;
  in_form_ = false;
  const size_t found = stack_.FindInScope(Tag::kForm, kScope);
  const size_t inner = stack_.Find([](const Element& e) { return e.Is(Tag::kForm); },
                                   [](const Element& e) { return !e.Has(kImpliedEnd); });
  stack_.CloseTo(inner);
  if (inner == ElementStack::kNowhere) stack_.CloseLater(found);
}

}  // namespace mimora

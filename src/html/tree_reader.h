// Copyright (c) 2026 the mimora developers.
//
// Makes elements of the tags of a document: those that are missing, those that end with others, and
// those that do not belong where they stand.
#ifndef MIMORA_HTML_TREE_READER_H_
#define MIMORA_HTML_TREE_READER_H_

#include <string_view>

#include "html/element_stack.h"
#include "html/tokenizer.h"

namespace mimora {

class TreeReader {
 public:
  TreeReader(std::u16string_view html, TextSink& sink) : tokenizer_(html), stack_(sink) {}

  void Read();

 private:
  bool IsForeign() const { return stack_.Top().inside.markup != Markup::kHtml; }

  void Doctype(std::u16string_view text);
  void Text(std::u16string_view run);

  void StartTag(const Token& token);
  bool StartForeign(const Token& token);
  void EndTag(const Token& token);
  bool EndForeign(const TagName& name);

  // What the rules do, see Rule.
  void StartOther(const TagName& name, const BoxStyle& style) { stack_.Open(name, style); }
  void StartAnchor(const TagName& name, const BoxStyle& style);
  void StartBlock(const TagName& name, const BoxStyle& style);
  void StartPre(const TagName& name, const BoxStyle& style);
  void StartHeading(const TagName& name, const BoxStyle& style);
  void StartListItem(const TagName& name, const BoxStyle& style);
  void StartDefinition(const TagName& name, const BoxStyle& style);
  void StartForm(const TagName& name, const BoxStyle& style);
  void StartButton(const TagName& name, const BoxStyle& style);
  void StartSelect(const TagName& name, const BoxStyle& style);
  void StartOption(const TagName& name, const BoxStyle& style);
  void StartOptgroup(const TagName& name, const BoxStyle& style);
  void StartRubyPart(const TagName& name, const BoxStyle& style);
  void StartTable(const TagName& name, const BoxStyle& style);
  void StartRowGroup(const TagName& name, const BoxStyle& style);
  void StartRow(const TagName& name, const BoxStyle& style);
  void StartCell(const TagName& name, const BoxStyle& style);
  void StartColumn(const TagName& name, const BoxStyle& style);
  void StartVoid(const TagName& name, const BoxStyle& style) { stack_.Void(name, style); }
  void StartBr(const TagName& name, const BoxStyle& style);
  void StartHr(const TagName& name, const BoxStyle& style);
  void StartRaw(const TagName& name, const BoxStyle& style);
  void StartPlaintext(const TagName& name, const BoxStyle& style);
  void StartBody(const TagName& name, const BoxStyle& style);
  void StartNothing(const TagName&, const BoxStyle&) {}

  void EndOther(const TagName& name);
  void EndFormatting(const TagName& name);
  void EndBlock(const TagName& name) { CloseInScope(name.tag, kScope); }
  void EndParagraph(const TagName& name);
  void EndHeading(const TagName& name);
  void EndListItem(const TagName& name) { CloseInScope(name.tag, kScope | kListScope); }
  void EndForm(const TagName& name);
  void EndTablePart(const TagName& name);
  void EndTemplate(const TagName& name) { CloseInScope(name.tag, 0); }
  void EndBr(const TagName&) { stack_.LineEnd({}); }
  void EndNothing(const TagName&) {}

  struct Handlers {
    void (TreeReader::*start)(const TagName&, const BoxStyle&);
    void (TreeReader::*end)(const TagName&);
  };
  static const Handlers& HandlersOf(Tag tag);

  void CloseInScope(Tag tag, int traits) { stack_.CloseTo(stack_.FindInScope(tag, traits)); }
  void CloseParagraph() { CloseInScope(Tag::kP, kScope | kButtonScope); }
  void CloseItem(Tag tag, Tag other);
  bool IsInTableStructure() const;

  Tokenizer tokenizer_;
  ElementStack stack_;
  bool at_start_ = true;
  bool quirks_ = true;  // there is no document type, or an old one
  bool in_form_ = false;
  bool skips_line_end_ = false;
};

}  // namespace mimora

#endif  // MIMORA_HTML_TREE_READER_H_

// Copyright (c) 2026 the mimora developers.
//
// HTML's syntax: a document cut into text and tags, in one pass and without copies.
#ifndef MIMORA_HTML_TOKENIZER_H_
#define MIMORA_HTML_TOKENIZER_H_

#include <cstdint>
#include <string_view>

#include "html/character_reference.h"
#include "html/tags.h"

namespace mimora {

// Those of a tag's attributes that have a say in what is seen.
struct Attributes {
  std::u16string_view style;  // as it stands, with its references
  std::u16string_view type;
  bool hidden = false;
  bool open = false;
  bool font = false;  // one that only makes sense for FONT
};

struct Token {
  enum Kind : uint8_t { kEnd, kText, kStartTag, kEndTag, kDoctype };
  Kind kind = kEnd;
  bool self_closing = false;
  std::u16string_view text;  // of a text, or between "<!doctype" and ">"
  TagName name;
  Attributes attributes;
};

// The document must outlive the tokenizer. What it hands out lives until the next call.
class Tokenizer {
 public:
  explicit Tokenizer(std::u16string_view html) : p_(html.data()), end_(html.data() + html.size()) {}

  // FOREIGN: whether "<![CDATA[" begins text here.
  const Token& Next(bool foreign);

  // The text up to the end tag of this name, and all the rest: no markup is seen in them.
  std::u16string_view TakeRawText(std::string_view name);
  std::u16string_view TakeScript();
  std::u16string_view TakeRest() { return TakeUntil(end_); }

 private:
  std::u16string_view Rest() const { return {p_, static_cast<size_t>(end_ - p_)}; }
  std::u16string_view TakeUntil(const char16_t* stop);

  void ReadText();
  void ReadReference();
  void ReadMarkup(bool foreign);
  void ReadDeclaration(bool foreign);
  void ReadQuotation();
  void ReadTag(Token::Kind kind);
  bool ReadAttributes();
  void ReadAttribute();
  std::u16string_view ReadValue();
  void SetText(const char16_t* stop);

  void SkipComment();
  void SkipBehind(const char16_t* stop) { p_ = stop < end_ ? stop + 1 : end_; }
  void SkipSpace();

  const char16_t* p_;
  const char16_t* const end_;
  Token token_;
  CharacterReference reference_;
};

}  // namespace mimora

#endif  // MIMORA_HTML_TOKENIZER_H_

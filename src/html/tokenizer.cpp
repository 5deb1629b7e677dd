// Copyright (c) 2026 the mimora developers.
#include "html/tokenizer.h"

#include <algorithm>

#include "html/units.h"

namespace mimora {
namespace {

constexpr std::u16string_view kQuotation = u"<![CDATA[";

constexpr bool EndsTagName(char16_t c) { return IsHtmlSpace(c) || c == '/' || c == '>'; }

bool StartsWithName(std::u16string_view text, std::string_view name) {
  return EqualsName(text.substr(0, name.size()), name);
}

// Whether TEXT begins with a tag of this name. OPEN is "<" or "</".
bool BeginsTag(std::u16string_view text, std::u16string_view open, std::string_view name) {
  if (!text.starts_with(open) || !StartsWithName(text.substr(open.size()), name)) return false;
  const size_t behind = open.size() + name.size();
  return behind < text.size() && EndsTagName(text[behind]);
}

// The first of an attribute's name counts.
void SetOnce(std::u16string_view value, std::u16string_view& attribute) {
  if (attribute.data() == nullptr) attribute = value;
}

void SetAttribute(std::u16string_view name, std::u16string_view value, Attributes& attributes) {
  switch (name.size()) {
    case 4:
      if (EqualsName(name, "type")) SetOnce(value, attributes.type);
      attributes.open |= EqualsName(name, "open");
      attributes.font |= EqualsName(name, "face") || EqualsName(name, "size");
      break;
    case 5:
      if (EqualsName(name, "style")) SetOnce(value, attributes.style);
      attributes.font |= EqualsName(name, "color");
      break;
    case 6:
      attributes.hidden |= EqualsName(name, "hidden");
      break;
    default:
      break;
  }
}

}  // namespace

const Token& Tokenizer::Next(bool foreign) {
  token_.kind = Token::kEnd;
  while (p_ < end_ && token_.kind == Token::kEnd) {
    if (*p_ == '<') {
      ReadMarkup(foreign);
    } else if (*p_ == '&') {
      ReadReference();
    } else {
      ReadText();
    }
  }
  return token_;
}

std::u16string_view Tokenizer::TakeUntil(const char16_t* stop) {
  const std::u16string_view taken(p_, static_cast<size_t>(stop - p_));
  p_ = stop;
  return taken;
}

void Tokenizer::SetText(const char16_t* stop) {
  token_.kind = Token::kText;
  token_.text = TakeUntil(stop);
}

// Whatever stands here is text.
void Tokenizer::ReadText() { SetText(FindEither(p_ + 1, end_, '<', '&')); }

void Tokenizer::ReadReference() {
  reference_ = ReadCharacterReference(Rest());
  if (reference_.length == 0) return ReadText();
  p_ += reference_.length;
  token_.kind = Token::kText;
  token_.text = reference_.Text();
}

// Comments, and what is cut off, give no token.
void Tokenizer::ReadMarkup(bool foreign) {
  const char16_t next = end_ - p_ > 1 ? p_[1] : u'\0';
  if (IsLetter(next)) {
    ++p_;
    ReadTag(Token::kStartTag);
  } else if (next == '/' && end_ - p_ > 2) {
    p_ += 2;
    if (IsLetter(*p_)) return ReadTag(Token::kEndTag);
    SkipBehind(FindUnit(p_, end_, '>'));
  } else if (next == '!') {
    ReadDeclaration(foreign);
  } else if (next == '?') {
    SkipBehind(FindUnit(p_, end_, '>'));
  } else {
    ReadText();
  }
}

void Tokenizer::ReadDeclaration(bool foreign) {
  constexpr std::string_view kDoctype = "<!doctype";
  if (Rest().starts_with(u"<!--")) return SkipComment();
  if (foreign && Rest().starts_with(kQuotation)) return ReadQuotation();
  const char16_t* const stop = FindUnit(p_, end_, '>');
  if (StartsWithName(Rest(), kDoctype)) {
    p_ += kDoctype.size();
    token_.kind = Token::kDoctype;
    token_.text = TakeUntil(stop);
  }
  SkipBehind(stop);
}

void Tokenizer::ReadQuotation() {
  constexpr std::u16string_view kQuotationEnd = u"]]>";
  p_ += kQuotation.size();
  const size_t size = std::min(Rest().find(kQuotationEnd), Rest().size());
  SetText(p_ + size);
  if (p_ < end_) p_ += kQuotationEnd.size();
}

// "-->" ends a comment, also when the dashes are those that begin it; so does "--!>".
void Tokenizer::SkipComment() {
  const char16_t* const begin = p_ + 4;
  for (p_ = FindUnit(begin, end_, '>'); p_ < end_; p_ = FindUnit(p_ + 1, end_, '>')) {
    const bool plain = p_[-1] == '-' && p_[-2] == '-';
    const bool shouted = p_ - begin >= 3 && p_[-1] == '!' && p_[-2] == '-' && p_[-3] == '-';
    if (plain || shouted) break;
  }
  SkipBehind(p_);
}

void Tokenizer::SkipSpace() {
  while (p_ < end_ && IsHtmlSpace(*p_)) ++p_;
}

// A tag that is not closed before the document ends is none.
void Tokenizer::ReadTag(Token::Kind kind) {
  const char16_t* stop = p_;
  while (stop < end_ && !EndsTagName(*stop)) ++stop;
  token_.name = ReadTagName(TakeUntil(stop));
  token_.attributes = {};
  token_.self_closing = false;
  if (ReadAttributes()) token_.kind = kind;
}

bool Tokenizer::ReadAttributes() {
  while (true) {
    SkipSpace();
    if (p_ == end_) return false;
    if (*p_ == '>') break;
    if (*p_ == '/') {
      ++p_;
      token_.self_closing = p_ < end_ && *p_ == '>';
    } else {
      ReadAttribute();
    }
  }
  ++p_;
  return true;
}

void Tokenizer::ReadAttribute() {
  const char16_t* stop = p_ + 1;  // an equals sign in front begins a name
  while (stop < end_ && !EndsTagName(*stop) && *stop != '=') ++stop;
  const std::u16string_view name = TakeUntil(stop);
  SkipSpace();
  std::u16string_view value(p_, 0);
  if (p_ < end_ && *p_ == '=') {
    ++p_;
    value = ReadValue();
  }
  SetAttribute(name, value, token_.attributes);
}

std::u16string_view Tokenizer::ReadValue() {
  SkipSpace();
  if (p_ < end_ && (*p_ == '"' || *p_ == '\'')) {
    const char16_t quote = *p_++;
    const std::u16string_view value = TakeUntil(FindUnit(p_, end_, quote));
    SkipBehind(p_);
    return value;
  }
  const char16_t* stop = p_;
  while (stop < end_ && !IsHtmlSpace(*stop) && *stop != '>') ++stop;
  return TakeUntil(stop);
}

std::u16string_view Tokenizer::TakeRawText(std::string_view name) {
  const char16_t* const begin = p_;
  for (p_ = FindUnit(p_, end_, '<'); p_ < end_; p_ = FindUnit(p_ + 1, end_, '<')) {
    if (BeginsTag(Rest(), u"</", name)) break;
  }
  return {begin, static_cast<size_t>(p_ - begin)};
}

// A comment in a script hides the end tags of the scripts that are written in it.
std::u16string_view Tokenizer::TakeScript() {
  constexpr std::string_view kScript = "script";
  enum { kPlain, kComment, kScriptInComment } state = kPlain;
  const char16_t* const begin = p_;
  for (; (p_ = FindEither(p_, end_, '<', '-')) < end_; ++p_) {
    if (Rest().starts_with(u"-->")) {
      state = kPlain;
    } else if (state == kPlain && Rest().starts_with(u"<!--")) {
      state = kComment;
      ++p_;  // its dashes may be those of the end
    } else if (BeginsTag(Rest(), u"</", kScript)) {
      if (state != kScriptInComment) break;
      state = kComment;
    } else if (state == kComment && BeginsTag(Rest(), u"<", kScript)) {
      state = kScriptInComment;
    }
  }
  return {begin, static_cast<size_t>(p_ - begin)};
}

}  // namespace mimora

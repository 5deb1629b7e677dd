// Copyright (c) 2026 the mimora developers.
#include "html/box_style.h"

#include <algorithm>
#include <string>

#include "html/units.h"

namespace mimora {
namespace {

// Cuts the text of a style attribute into declarations. Semicolons in quotes, brackets and comments
// do not count.
class DeclarationReader {
 public:
  explicit DeclarationReader(std::u16string_view text) : text_(text) {}

  bool Next(std::u16string_view& name, std::u16string_view& value) {
    while (at_ < text_.size()) {
      const size_t begin = at_;
      colon_ = std::u16string_view::npos;
      SkipDeclaration();
      const std::u16string_view whole = text_.substr(begin, at_ - begin);
      if (at_ < text_.size()) ++at_;
      if (colon_ == std::u16string_view::npos) continue;
      name = WithoutComment(whole.substr(0, colon_ - begin));
      value = WithoutComment(whole.substr(colon_ - begin + 1));
      return true;
    }
    return false;
  }

 private:
  void SkipDeclaration() {
    size_t depth = 0;
    for (; at_ < text_.size(); ++at_) {
      switch (text_[at_]) {
        case ';':
          if (depth == 0) return;
          break;
        case ':':
          if (colon_ == std::u16string_view::npos) colon_ = at_;
          break;
        case '(':
          ++depth;
          break;
        case ')':
          if (depth > 0) --depth;
          break;
        case '"':
        case '\'':
          SkipTo(text_.find(text_[at_], at_ + 1));
          break;
        case '\\':
          SkipTo(at_ + 1);
          break;
        case '/':
          if (text_.substr(at_, 2) == u"/*") SkipTo(text_.find(u"*/", at_ + 2), 1);
          break;
        default:
          break;
      }
    }
  }

  // Stops at the last unit, of what is closed there, or of the text.
  void SkipTo(size_t at, size_t more = 0) {
    at_ = at >= text_.size() ? text_.size() - 1 : at + more;
  }

  // One in front or behind; one in the middle of a word leaves no word that is known.
  static std::u16string_view WithoutComment(std::u16string_view text) {
    text = TrimSpace(text);
    if (text.starts_with(u"/*"))
      text.remove_prefix(std::min(text.find(u"*/"), text.size() - 2) + 2);
    return TrimSpace(text.substr(0, text.find(u"/*")));
  }

  const std::u16string_view text_;
  size_t at_ = 0;
  size_t colon_ = 0;
};

template <typename Value>
struct Keyword {
  std::string_view name;
  Value value;
  bool flexible = false;
};

constexpr Keyword<Display> kDisplays[] = {
    {"inline", Display::kInline},
    {"block", Display::kBlock},
    {"none", Display::kNone},
    {"inline-block", Display::kInlineBlock},
    {"flex", Display::kBlock, true},
    {"inline-flex", Display::kInlineBlock, true},
    {"grid", Display::kBlock, true},
    {"inline-grid", Display::kInlineBlock, true},
    {"-webkit-box", Display::kBlock, true},
    {"-webkit-flex", Display::kBlock, true},
    {"-webkit-inline-box", Display::kInlineBlock, true},
    {"-webkit-inline-flex", Display::kInlineBlock, true},
    {"table", Display::kTable},
    {"inline-table", Display::kInlineBlock},
    {"table-row-group", Display::kRowGroup},
    {"table-header-group", Display::kRowGroup},
    {"table-footer-group", Display::kRowGroup},
    {"table-row", Display::kRow},
    {"table-cell", Display::kCell},
    {"table-caption", Display::kCaption},
    {"table-column", Display::kNone},
    {"table-column-group", Display::kNone},
    {"list-item", Display::kBlock},
    {"flow-root", Display::kBlock},
    {"contents", Display::kContents},
    {"initial", Display::kInline},
    {"unset", Display::kInline},
    {"inherit", Display::kInline},
};

constexpr Keyword<WhiteSpace> kWhiteSpaces[] = {
    {"normal", WhiteSpace::kCollapsed},   {"nowrap", WhiteSpace::kCollapsed},
    {"initial", WhiteSpace::kCollapsed},  {"pre", WhiteSpace::kPreserved},
    {"pre-wrap", WhiteSpace::kPreserved}, {"break-spaces", WhiteSpace::kPreserved},
    {"pre-line", WhiteSpace::kLines},     {"inherit", WhiteSpace::kInherited},
    {"unset", WhiteSpace::kInherited},
};

constexpr Keyword<Visibility> kVisibilities[] = {
    {"visible", Visibility::kVisible},   {"initial", Visibility::kVisible},
    {"hidden", Visibility::kHidden},     {"collapse", Visibility::kHidden},
    {"inherit", Visibility::kInherited}, {"unset", Visibility::kInherited},
};

constexpr Keyword<LetterCase> kLetterCases[] = {
    {"none", LetterCase::kAsIs},
    {"initial", LetterCase::kAsIs},
    {"uppercase", LetterCase::kUpper},
    {"lowercase", LetterCase::kLower},
    {"capitalize", LetterCase::kCapitalized},
    {"inherit", LetterCase::kInherited},
    {"unset", LetterCase::kInherited},
};

constexpr Keyword<bool> kFloats[] = {
    {"none", false}, {"initial", false},     {"unset", false},     {"left", true},
    {"right", true}, {"inline-start", true}, {"inline-end", true},
};

constexpr Keyword<bool> kPositions[] = {
    {"static", false}, {"initial", false}, {"unset", false}, {"relative", false},
    {"sticky", false}, {"absolute", true}, {"fixed", true},
};

template <typename Value, size_t kCount>
const Keyword<Value>* FindKeyword(const Keyword<Value> (&keywords)[kCount],
                                  std::u16string_view name) {
  for (const Keyword<Value>& keyword : keywords) {
    if (EqualsName(name, keyword.name)) return &keyword;
  }
  return nullptr;
}

template <typename Value, size_t kCount>
bool Set(const Keyword<Value> (&keywords)[kCount], std::u16string_view name, Value& value) {
  const Keyword<Value>* const keyword = FindKeyword(keywords, name);
  if (keyword != nullptr) value = keyword->value;
  return keyword != nullptr;
}

bool SetDisplay(std::u16string_view value, BoxStyle& style) {
  const Keyword<Display>* const keyword = FindKeyword(kDisplays, value);
  if (keyword == nullptr) return false;
  style.display = keyword->value;
  style.flexible = keyword->flexible;
  return true;
}

struct Property {
  std::string_view name;
  bool (*set)(std::u16string_view value, BoxStyle& style);  // whether the value makes sense
};

constexpr Property kProperties[] = {
    {"display", SetDisplay},
    {"white-space",
     [](auto value, auto& style) { return Set(kWhiteSpaces, value, style.white_space); }},
    {"visibility",
     [](auto value, auto& style) { return Set(kVisibilities, value, style.visibility); }},
    {"text-transform",
     [](auto value, auto& style) { return Set(kLetterCases, value, style.letter_case); }},
    {"float", [](auto value, auto& style) { return Set(kFloats, value, style.floats); }},
    {"position", [](auto value, auto& style) { return Set(kPositions, value, style.positioned); }},
};

bool TakeImportant(std::u16string_view& value) {
  constexpr std::string_view kWord = "important";
  if (value.size() <= kWord.size() || !EqualsName(value.substr(value.size() - kWord.size()), kWord))
    return false;
  const std::u16string_view before = TrimSpace(value.substr(0, value.size() - kWord.size()));
  if (!before.ends_with(u'!')) return false;
  value = TrimSpace(before.substr(0, before.size() - 1));
  return true;
}

// Of several declarations of one property the last that makes sense counts, important ones first.
void ReadDeclarations(std::u16string_view text, BoxStyle& style) {
  unsigned important_ones = 0;
  DeclarationReader declarations(text);
  for (std::u16string_view name, value; declarations.Next(name, value);) {
    for (size_t i = 0; i < std::size(kProperties); ++i) {
      if (!EqualsName(name, kProperties[i].name)) continue;
      const unsigned bit = 1u << i;
      const bool important = TakeImportant(value);
      const bool counts = important || (important_ones & bit) == 0;
      if (counts && kProperties[i].set(value, style) && important) important_ones |= bit;
    }
  }
}

void ReadStyle(std::u16string_view text, BoxStyle& style) {
  if (text.find(u'&') == std::u16string_view::npos) return ReadDeclarations(text, style);
  ReadDeclarations(DecodeAttribute(text), style);
}

bool IsHidden(Tag tag, const Attributes& attributes) {
  if (tag == Tag::kDialog && !attributes.open) return true;
  if (tag == Tag::kInput && EqualsName(attributes.type, "hidden")) return true;
  return attributes.hidden;
}

}  // namespace

bool BoxStyle::IsPlain() const {
  return (display == Display::kInline || display == Display::kContents) &&
         white_space == WhiteSpace::kInherited && visibility == Visibility::kInherited &&
         letter_case == LetterCase::kInherited;
}

BoxStyle StyleOf(Tag tag, const Attributes& attributes) {
  const TagTraits& traits = TraitsOf(tag);
  BoxStyle style;
  style.display = IsHidden(tag, attributes) ? Display::kNone : traits.display;
  style.closed = tag == Tag::kDetails && !attributes.open;
  if (traits.Has(kPreformatted)) style.white_space = WhiteSpace::kPreserved;
  if (tag == Tag::kNobr) style.white_space = WhiteSpace::kCollapsed;
  if (!attributes.style.empty()) ReadStyle(attributes.style, style);
  if (style.floats || style.positioned) MakeBlock(style);
  // Its content is no part of the document.
  if (tag == Tag::kTemplate) style.display = Display::kNone;
  return style;
}

void MakeBlock(BoxStyle& style) {
  if (style.display == Display::kNone || style.display == Display::kContents) return;
  if (style.display != Display::kTable) style.display = Display::kBlock;
}

}  // namespace mimora

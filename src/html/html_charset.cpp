// Copyright (c) 2026 the mimora developers.
#include "html/html_charset.h"

#include <algorithm>

#include "codec/charset_table.h"
#include "platform/ascii.h"

namespace mimora {
namespace {

constexpr bool IsHtmlSpace(char c) { return IsSpace(c) || c == '\f'; }

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return EqualIgnoringCase(text.substr(0, prefix.size()), prefix);
}

size_t FindIgnoringCase(std::string_view text, std::string_view word) {
  const auto found = std::search(text.begin(), text.end(), word.begin(), word.end(),
                                 [](char a, char b) { return ToUpper(a) == ToUpper(b); });
  return found == text.end() ? std::string_view::npos : static_cast<size_t>(found - text.begin());
}

uint32_t PageOfDeclared(std::string_view charset) {
  const uint32_t page = PageOfCharset(charset);
  return IsUtf16Page(page) ? kUtf8Page : page;
}

uint32_t PageOfMark(std::string_view html) {
  if (html.starts_with("\xEF\xBB\xBF")) return kUtf8Page;
  if (html.starts_with("\xFF\xFE")) return kUtf16Page;
  if (html.starts_with("\xFE\xFF")) return kUtf16BigEndianPage;
  return 0;
}

struct Attribute {
  std::string_view name;
  std::string_view value;
};

// The attributes of a tag, one after the other. The text is what follows the tag's name, and
// becomes what follows the tag.
class AttributeReader {
 public:
  explicit AttributeReader(std::string_view& text) : text_(text) {}

  bool Next(Attribute& attribute) {
    text_ = TrimLeft(text_, [](char c) { return IsHtmlSpace(c) || c == '/'; });
    if (text_.empty() || text_[0] == '>') return false;
    // An equals sign in front begins a name.
    attribute.name = Take(std::min(text_.find_first_of("= \t\r\n\f/>", 1), text_.size()));
    attribute.value = {};
    text_ = TrimLeft(text_, IsHtmlSpace);
    if (!text_.starts_with('=')) return true;
    text_ = TrimLeft(text_.substr(1), IsHtmlSpace);
    attribute.value = TakeValue();
    return true;
  }

 private:
  std::string_view Take(size_t count) {
    const std::string_view taken = text_.substr(0, count);
    text_.remove_prefix(count);
    return taken;
  }

  std::string_view TakeValue() {
    const bool quoted = text_.starts_with('"') || text_.starts_with('\'');
    if (!quoted) return Take(std::min(text_.find_first_of(" \t\r\n\f>"), text_.size()));
    const char quote = Take(1)[0];
    const std::string_view value = Take(std::min(text_.find(quote), text_.size()));
    Take(std::min<size_t>(1, text_.size()));
    return value;
  }

  std::string_view& text_;
};

// The charset in a text such as "text/html; charset=utf-8".
std::string_view CharsetInContentType(std::string_view content) {
  constexpr std::string_view kWord = "charset";
  for (size_t at; (at = FindIgnoringCase(content, kWord)) != std::string_view::npos;) {
    content = TrimLeft(content.substr(at + kWord.size()), IsHtmlSpace);
    if (!content.starts_with('=')) continue;
    content = TrimLeft(content.substr(1), IsHtmlSpace);
    if (content.starts_with('"') || content.starts_with('\'')) {
      const size_t end = content.find(content[0], 1);
      return end == std::string_view::npos ? std::string_view() : content.substr(1, end - 1);
    }
    return content.substr(0, content.find_first_of("; \t\r\n\f"));
  }
  return {};
}

uint32_t PageOfMeta(std::string_view& text) {
  AttributeReader attributes(text);
  bool content_type = false;
  uint32_t from_charset = 0;
  uint32_t from_content = 0;
  for (Attribute attribute; attributes.Next(attribute);) {
    if (EqualIgnoringCase(attribute.name, "http-equiv")) {
      content_type = EqualIgnoringCase(attribute.value, "content-type");
    } else if (EqualIgnoringCase(attribute.name, "content") && from_content == 0) {
      from_content = PageOfDeclared(CharsetInContentType(attribute.value));
    } else if (EqualIgnoringCase(attribute.name, "charset") && from_charset == 0) {
      from_charset = PageOfDeclared(TrimLeft(TrimRight(attribute.value, IsHtmlSpace), IsHtmlSpace));
    }
  }
  if (from_charset != 0) return from_charset;
  return content_type ? from_content : 0;
}

// <?xml version="1.0" encoding="iso-8859-2"?>
uint32_t PageOfXmlDeclaration(std::string_view text) {
  AttributeReader attributes(text);
  for (Attribute attribute; attributes.Next(attribute);) {
    if (EqualIgnoringCase(attribute.name, "encoding")) return PageOfDeclared(attribute.value);
  }
  return 0;
}

bool BeginsTag(std::string_view text, std::string_view name) {
  if (!StartsWithIgnoringCase(text, name) || text.size() == name.size()) return false;
  const char next = text[name.size()];
  return IsHtmlSpace(next) || next == '/';
}

void SkipTag(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_of(" \t\r\n\f/>"), text.size()));
  AttributeReader attributes(text);
  for (Attribute attribute; attributes.Next(attribute);) continue;
}

void SkipBehind(std::string_view& text, std::string_view end) {
  const size_t at = text.find(end);
  text.remove_prefix(at == std::string_view::npos ? text.size() : at + end.size());
}

}  // namespace

uint32_t HtmlCodePage(std::string_view html) {
  constexpr std::string_view kXml = "<?xml";
  if (const uint32_t page = PageOfMark(html)) return page;
  if (BeginsTag(html, kXml)) {
    if (const uint32_t page = PageOfXmlDeclaration(html.substr(kXml.size()))) return page;
  }
  while (true) {
    html.remove_prefix(std::min(html.find('<'), html.size()));
    if (html.empty()) return 0;
    html.remove_prefix(1);
    if (html.starts_with("!--")) {
      // "<!-->" is a whole comment.
      html.remove_prefix(1);
      SkipBehind(html, "-->");
    } else if (BeginsTag(html, "meta")) {
      html.remove_prefix(4);
      if (const uint32_t page = PageOfMeta(html)) return page;
    } else if (!html.empty() && (IsLetter(html[0]) || html[0] == '/')) {
      SkipTag(html);
    }
  }
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "tool/locale_charset.h"

#include <langinfo.h>

#include <algorithm>
#include <cwchar>

#include "tool/texts.h"

namespace mimora::tool {
namespace {

// The set of the locale C. The library may take it for a larger one, which mail means by it.
constexpr std::string_view kAsciiCodeset = "ANSI_X3.4-1968";

// Texts in sets that the library does not know come out in UTF-8.
bool LibraryKnows(const char* charset) {
  return DecodedValue("=?utf-8?q?=C3=A9?=", charset) != "\xC3\xA9";
}

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

Character FirstAscii(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  return byte < 0x80 ? Character{byte, 1} : Character{};
}

// The locale is in force during the call only: nothing else here may depend on it, least of all
// how header names are compared.
Character FirstOfLocale(std::string_view text, locale_t locale) {
  const locale_t before = ::uselocale(locale);
  std::mbstate_t state{};
  wchar_t code = 0;
  const std::size_t length = std::mbrtowc(&code, text.data(), text.size(), &state);
  ::uselocale(before);
  // Its failures are numbers beyond any text.
  if (length > text.size()) return {};
  return {static_cast<char32_t>(code), std::max<std::size_t>(length, 1)};
}

}  // namespace

// Overlong forms, surrogates and numbers past U+10FFFF are not proper.
Character FirstUtf8(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  char32_t code = lead & (0x7Fu >> length);
  for (const char byte : text.substr(1, length - 1)) {
    if (!IsContinuation(byte)) return {};
    code = code << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
  }
  constexpr char32_t kLeast[] = {0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[length - 2] || code > 0x10FFFF || surrogate) return {};
  return {code, length};
}

LocaleCharset::LocaleCharset() : name_(kUtf8), locale_(::newlocale(LC_CTYPE_MASK, "", nullptr)) {
  if (locale_ == nullptr) return;
  const std::string codeset = ::nl_langinfo_l(CODESET, locale_);
  if (codeset == "UTF-8") {
    kind_ = Kind::kUtf8;
  } else if (codeset != kAsciiCodeset && LibraryKnows(codeset.c_str())) {
    kind_ = Kind::kOther;
    name_ = codeset;
  }
}

LocaleCharset::~LocaleCharset() {
  if (locale_ != nullptr) ::freelocale(locale_);
}

Character LocaleCharset::First(std::string_view text) const {
  switch (kind_) {
    case Kind::kAscii:
      return FirstAscii(text);
    case Kind::kUtf8:
      return FirstUtf8(text);
    case Kind::kOther:
      return FirstOfLocale(text, locale_);
  }
  return {};
}

}  // namespace mimora::tool

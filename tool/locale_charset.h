// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TOOL_LOCALE_CHARSET_H_
#define MIMORA_TOOL_LOCALE_CHARSET_H_

#include <locale.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace mimora::tool {

struct Character {
  char32_t code = 0;
  std::size_t length = 0;  // in bytes; 0: the text does not begin with a character of the set
};

// The first character of a text in UTF-8, which is not empty.
Character FirstUtf8(std::string_view text);

// The character set of the user's locale. One that the library cannot translate to (that of the
// locale C is such a one) counts as ASCII.
class LocaleCharset {
 public:
  LocaleCharset();
  LocaleCharset(const LocaleCharset&) = delete;
  LocaleCharset& operator=(const LocaleCharset&) = delete;
  ~LocaleCharset();

  bool IsUtf8() const { return kind_ == Kind::kUtf8; }
  // What the library is to translate to. For ASCII that is UTF-8: programs can use it, and on a
  // terminal it is seen which characters are missing.
  const char* Name() const { return name_.c_str(); }
  // The first character of TEXT, which is not empty.
  Character First(std::string_view text) const;

 private:
  enum class Kind { kAscii, kUtf8, kOther };

  Kind kind_ = Kind::kAscii;
  std::string name_;
  locale_t locale_;  // null when it is not installed
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_LOCALE_CHARSET_H_

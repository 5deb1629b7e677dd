// Copyright (c) 2026 the mimora developers.
#include "tool/output.h"

#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "tool/text_output.h"

namespace mimora::tool {
namespace {

constexpr std::size_t kBufferSize = 65536;

// Asks the user's locale without making it that of the process: nothing else here may depend on
// it, least of all how header names are compared.
bool LocaleIsUtf8() {
  const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return false;
  const bool utf8 = std::string_view(::nl_langinfo_l(CODESET, locale)) == "UTF-8";
  ::freelocale(locale);
  return utf8;
}

}  // namespace

Output::Output() : utf8_(LocaleIsUtf8()), terminal_(::isatty(STDOUT_FILENO) == 1) {}

void Output::Write(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kBufferSize) Flush();
}

void Output::Flush() {
  const std::string pending = std::exchange(buffer_, {});
  std::string_view rest = pending;
  while (!rest.empty()) {
    const ssize_t count = ::write(STDOUT_FILENO, rest.data(), rest.size());
    if (count >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw OutputError(std::generic_category().message(errno));
    }
  }
}

void Output::ReportError(std::string_view subject, std::string_view reason) {
  Flush();
  std::string line = "mimora: ";
  if (!subject.empty()) line += OneLine(subject, utf8_) + ": ";
  line += OneLine(reason, utf8_) + "\n";
  std::fputs(line.c_str(), stderr);
}

}  // namespace mimora::tool

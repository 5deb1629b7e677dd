// Copyright (c) 2026 the mimora developers.
//
// What the tool says: buffered standard output whose errors are never lost, and error lines.
#ifndef MIMORA_TOOL_OUTPUT_H_
#define MIMORA_TOOL_OUTPUT_H_

#include <stdexcept>
#include <string>
#include <string_view>

#include "tool/locale_charset.h"

namespace mimora::tool {

// The standard output takes no more (disk full, reader gone): nothing is left to do.
class OutputError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Output {
 public:
  Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  const LocaleCharset& Charset() const { return charset_; }
  bool IsTerminal() const { return terminal_; }

  // Both throw OutputError.
  void Write(std::string_view text);
  void Flush();

  // Writes an error line, behind all that was written until now. SUBJECT, a file mostly, may be
  // empty.
  void ReportError(std::string_view subject, std::string_view reason);

 private:
  const LocaleCharset charset_;
  const bool terminal_;
  std::string buffer_;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_OUTPUT_H_

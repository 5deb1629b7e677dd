// Copyright (c) 2026 the mimora developers.
#include "tool/output.h"

#include <unistd.h>

#include <cstdio>
#include <system_error>
#include <utility>

#include "tool/descriptor.h"
#include "tool/text_output.h"

namespace mimora::tool {
namespace {

constexpr std::size_t kBufferSize = 65536;

}  // namespace

Output::Output() : terminal_(::isatty(STDOUT_FILENO) == 1) {}

void Output::Write(std::string_view text) {
  buffer_ += text;
  if (buffer_.size() >= kBufferSize) Flush();
}

void Output::Flush() {
  const std::string pending = std::exchange(buffer_, {});
  try {
    WriteAll(STDOUT_FILENO, pending);
  } catch (const std::system_error& error) {
    throw OutputError(error.what());
  }
}

void Output::ReportError(std::string_view subject, std::string_view reason) {
  Flush();
  std::string line = "mimora: ";
  if (!subject.empty()) line += OneLine(subject, charset_) + ": ";
  line += OneLine(reason, charset_) + "\n";
  std::fputs(line.c_str(), stderr);
}

}  // namespace mimora::tool

// Copyright (c) 2026 the mimora developers.
//
// Any text in the log: lines have their form, and what a sender writes makes no lines of its own.
#include <stdexcept>

#include "analysis/write_body.h"
#include "diag/log.h"
#include "fuzz.h"
#include "mime/parser.h"
#include "mimora/mimora.h"
#include "platform/platform.h"
#include "private_directory.h"

namespace mimora::fuzz {
namespace {

constexpr size_t kLongestLine = 2047;

// Both files are there before the library decides whether it logs.
class LogDirectory {
 public:
  LogDirectory() {
    ::setenv("MIMORA_KEY20", ("a;b;c;" + directory_.Path()).c_str(), 1);
    WriteFile(directory_.File("mimora1.err"), "");
    Take();
    LogTrace("decided");
  }

  // The log, which is empty then.
  std::string Take() const {
    std::string text = ReadFile(directory_.File("mimora.err"));
    WriteFile(directory_.File("mimora.err"), "");
    return text;
  }

 private:
  PrivateDirectory directory_;
};

std::string traced;
int lines = 0;

void Trace(const char* line) {
  traced = line;
  ++lines;
}

void TraceAndThrow(const char* line) {
  Trace(line);
  throw std::runtime_error("lost");
}

// As a line shows it.
std::string Shown(std::string text, size_t longest) {
  text.resize(std::min(text.size(), longest));
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

std::string WithoutDoublePercents(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    plain += text[i];
    if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
  }
  return plain;
}

void CheckCallback(const std::string& text, TraceCallback callback) {
  SetTraceCallback(callback);
  lines = 0;
  P_QQ(text.c_str());
  FUZZ_CHECK(lines == 1);
  FUZZ_CHECK(traced == Shown(WithoutDoublePercents(text), kLongestLine));
  LogTrace("%s", text.c_str());
  FUZZ_CHECK(traced == Shown(text, kLongestLine));
  SetTraceCallback(nullptr);
}

// "2026-11-21 09:05:07 [0000ABCD:0000ABCD] "
constexpr std::string_view kPrefix = "dddd-dd-dd dd:dd:dd [xxxxxxxx:xxxxxxxx] ";

bool HasPrefix(std::string_view line) {
  if (line.size() < kPrefix.size()) return false;
  return std::equal(kPrefix.begin(), kPrefix.end(), line.begin(), [](char form, char c) {
    const bool digit = c >= '0' && c <= '9';
    return form == 'd' ? digit : form == 'x' ? digit || (c >= 'A' && c <= 'F') : c == form;
  });
}

void CheckDump(const LogDirectory& log, const std::string& text, std::string_view data) {
  LogTraceWithData(data.data(), std::ssize(data), "%s", text.c_str());
  const std::string written = log.Take();
  FUZZ_CHECK(HasPrefix(written));
  std::string wanted = Shown(written.substr(0, kPrefix.size()) + text, kLongestLine);
  wanted += "\nBINARY DATA START size = " + std::to_string(data.size()) + "\n";
  std::copy_if(data.begin(), data.end(), std::back_inserter(wanted),
               [](char c) { return c != '\r'; });
  FUZZ_CHECK(written == wanted + "\nBINARY DATA END\n");
}

// Whatever is in a message, each line of the log is the library's own.
void CheckMessage(const LogDirectory& log, std::string_view text) {
  Bodypart message;
  LoadFromMemory(message, text);
  Moutstream out(MemorySink{});
  WriteBodypartBodyToStream(message, out, nullptr, {.target_charset = "utf-8"});
  const std::string written = log.Take();
  FUZZ_CHECK(written.empty() || written.ends_with('\n'));
  for (size_t at = 0; at < written.size(); at = written.find('\n', at) + 1)
    FUZZ_CHECK(HasPrefix(std::string_view(written).substr(at)));
}

void CheckSettings(const std::string& text) {
  const std::string path = LogFilePathFor(text);
  FUZZ_CHECK(path == text || path.ends_with("/mimora.err"));
  const auto found = platform::FindSetting(text, "Key20");
  FUZZ_CHECK(!found || (found->find('\n') == std::string::npos &&
                        text.find("Key20=" + *found) != std::string::npos));
}

}  // namespace

void CheckInput(Input input) {
  static const LogDirectory log;
  const bool throws = input.Flag();
  std::string text(input.Rest());
  CheckSettings(text);
  CheckMessage(log, text);
  text.resize(std::min(text.find('\0'), text.size()));
  CheckCallback(text, throws ? TraceAndThrow : Trace);
  FUZZ_CHECK(log.Take().empty());
  CheckDump(log, text, input.Rest());
}

}  // namespace mimora::fuzz

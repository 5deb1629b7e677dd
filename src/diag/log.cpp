// Copyright (c) 2026 the mimora developers.
#include "diag/log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora {
namespace log_internal {
std::atomic<bool> trace_gate{true};
}

namespace {

constexpr const char* kDefaultLogFile = "/var/log/mimora.err";
constexpr std::string_view kLogFileName = "mimora.err";
constexpr std::string_view kSwitchFileName = "mimora1.err";

// A longer setting cannot be read and leaves the default in force. The zero counts.
constexpr size_t kLongestSetting = 512;

// A line is cut where it would pass this, its zero included.
constexpr size_t kLineSize = 2048;

enum State : int { kOff = -1, kUndecided = 0, kOn = 1 };

std::atomic<int> trace_state{kUndecided};
std::atomic<int> error_state{kUndecided};
std::atomic<TraceCallback> trace_callback{nullptr};

// Brings the gate in step with callback and state. Two threads that change one each may compute
// different answers at once: whoever stores looks again, so the last word is right.
void UpdateTraceGate() {
  const auto heard = [] { return trace_callback.load() != nullptr || trace_state.load() != kOff; };
  bool now = false;
  do {
    now = heard();
    log_internal::trace_gate.store(now);
  } while (now != heard());
}

// Whatever goes wrong with the log, or in a trace callback, the mail goes on. The unwinding of a
// thread that is cancelled is no standard exception and has to pass.
template <typename Work>
void Quietly(Work work) {
  try {
    work();
  } catch (const std::exception&) {
  }
}

bool LogFileExists() { return platform::IsRegularFile(GetLogFilePath().c_str()); }
bool SwitchFileExists() { return platform::IsRegularFile(GetLogSwitchFilePath().c_str()); }

void DecideTrace(bool on) {
  trace_state.store(on ? kOn : kOff);
  UpdateTraceGate();
}

// One line of text under construction.
class Line {
 public:
  void AppendPrefix() {
    const platform::LocalTime t = platform::Now();
    Append("%d-%2.2d-%2.2d %2.2d:%2.2d:%2.2d [%8.8X:%8.8X] ", t.year, t.month, t.day, t.hour,
           t.minute, t.second, platform::ProcessId(), platform::ThreadId());
  }

  [[gnu::format(printf, 2, 0)]] void AppendList(const char* format, va_list arguments) {
    const int length = std::vsnprintf(text_ + size_, kLineSize - size_, format, arguments);
    if (length > 0) size_ = std::min(size_ + static_cast<size_t>(length), kLineSize - 1);
  }

  const char* Finish() {
    while (size_ > 0 && text_[size_ - 1] == '\n') --size_;
    text_[size_] = '\0';
    return text_;
  }

  // The finished line with its line end, for the file.
  std::string_view FinishForFile() {
    Finish();
    text_[size_] = '\n';
    return {text_, size_ + 1};
  }

 private:
  [[gnu::format(printf, 2, 3)]] void Append(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    AppendList(format, arguments);
    va_end(arguments);
  }

  char text_[kLineSize + 1] = {};
  size_t size_ = 0;
};

[[gnu::format(printf, 1, 0)]] void WriteToFile(const char* format, va_list arguments) {
  Line line;
  line.AppendPrefix();
  line.AppendList(format, arguments);
  platform::AppendFile(GetLogFilePath().c_str()).Write(line.FinishForFile());
}

void WriteWithoutCr(platform::AppendFile& file, std::string_view data) {
  constexpr size_t kPiece = 65536;
  std::string piece;
  for (; !data.empty(); data.remove_prefix(std::min(kPiece, data.size()))) {
    piece.assign(data.substr(0, kPiece));
    std::erase(piece, '\r');
    file.Write(piece);
  }
}

}  // namespace

std::string LogFilePathFor(std::string_view key20) {
  size_t field = 0;
  for (int separators = 0; separators < 3; ++separators) {
    const size_t at = key20.find(';', field);
    // A value that has no directory field is the path of the file itself.
    if (at == std::string_view::npos) return std::string(key20);
    field = at + 1;
  }
  if (field == key20.size()) return std::string(key20);
  std::string path(key20.substr(field));
  if (path.back() != '/') path += '/';
  return path.append(kLogFileName);
}

const std::string& GetLogFilePath() {
  static const std::string path = [] {
    const auto key20 = platform::ReadSetting("Key20");
    if (!key20 || key20->size() >= kLongestSetting) return std::string(kDefaultLogFile);
    return LogFilePathFor(*key20);
  }();
  return path;
}

const std::string& GetLogSwitchFilePath() {
  static const std::string path = [] {
    const std::string& log = GetLogFilePath();
    const size_t slash = log.rfind('/');
    std::string file = slash == std::string::npos ? "" : log.substr(0, slash + 1);
    return file.append(kSwitchFileName);
  }();
  return path;
}

void LogTrace(const char* format, ...) {
  if (!TraceHeard()) return;
  va_list arguments;
  va_start(arguments, format);
  Quietly([&] {
    if (const TraceCallback callback = trace_callback.load(std::memory_order_relaxed)) {
      Line line;
      line.AppendList(format, arguments);
      return callback(line.Finish());
    }
    if (trace_state.load(std::memory_order_relaxed) == kUndecided) {
      const bool on = LogFileExists() && SwitchFileExists();
      if (on) error_state.store(kOn, std::memory_order_relaxed);
      DecideTrace(on);
    }
    if (trace_state.load(std::memory_order_relaxed) == kOn) WriteToFile(format, arguments);
  });
  va_end(arguments);
}

bool log_internal::ErrorHeard() {
  Quietly([] {
    if (error_state.load(std::memory_order_relaxed) != kUndecided) return;
    error_state.store(LogFileExists() ? kOn : kOff, std::memory_order_relaxed);
  });
  return error_state.load(std::memory_order_relaxed) == kOn;
}

void LogError(const char* format, ...) {
  if (!log_internal::ErrorHeard()) return;
  va_list arguments;
  va_start(arguments, format);
  Quietly([&] { WriteToFile(format, arguments); });
  va_end(arguments);
}

void LogTraceWithData(const void* data, int64_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Quietly([&] {
    if (trace_state.load(std::memory_order_relaxed) == kUndecided) DecideTrace(LogFileExists());
    if (trace_state.load(std::memory_order_relaxed) != kOn) return;
    Line line;
    line.AppendPrefix();
    line.AppendList(format, arguments);
    platform::AppendFile file(GetLogFilePath().c_str());
    file.Write(line.FinishForFile());
    char start[64];
    std::snprintf(start, sizeof start, "BINARY DATA START size = %d\n", static_cast<int>(size));
    file.Write(start);
    if (data != nullptr && size > 0) {
      WriteWithoutCr(file, {static_cast<const char*>(data), static_cast<size_t>(size)});
    }
    file.Write("\nBINARY DATA END\n");
  });
  va_end(arguments);
}

std::string OneLine(std::string_view text) {
  std::string line(text);
  std::replace_if(line.begin(), line.end(), IsControl, '.');
  return line;
}

void LogUserText(std::string_view text) {
  if (!TraceHeard()) return;
  Quietly([text] {
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
      plain += text[i];
    }
    LogTrace("%s", plain.c_str());
  });
}

void SetTraceCallback(TraceCallback callback) {
  trace_callback.store(callback);
  UpdateTraceGate();
}

}  // namespace mimora

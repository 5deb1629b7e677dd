// Copyright (c) 2026 the mimora developers.
//
// The diagnostic log. Three writers share one file and decide differently whether to write; each
// decision is made once per process. All functions may be called from any thread. None throws
// a standard exception: a line that cannot be written is lost.
#ifndef MIMORA_DIAG_LOG_H_
#define MIMORA_DIAG_LOG_H_

#include <atomic>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>

namespace mimora {

using TraceCallback = void (*)(const char* line);

// Entry and exit lines, handle checks. Goes to the callback when there is one, else to the log
// file when both the log file and the switch file exist.
[[gnu::format(printf, 1, 2)]] void LogTrace(const char* format, ...);

// Failures. Goes to the log file when it exists, never to the callback.
[[gnu::format(printf, 1, 2)]] void LogError(const char* format, ...);

// A line with a dump of data (without its CRs). Goes to the log file when it exists. The state it
// decides is the one of LogTrace: a process whose first trace is a dump traces everything.
[[gnu::format(printf, 3, 4)]] void LogTraceWithData(const void* data, int64_t size,
                                                    const char* format, ...);

// A number for the exception that is being handled, for the log.
inline int32_t ExceptionCode() {
  constexpr int32_t kOutOfMemory = 12;
  constexpr int32_t kOther = 1;
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (...) {
    return kOther;
  }
}

// A sender's text as it may stand in a line: control characters, which could forge lines or steer
// the terminal of who reads the log, are dots.
std::string OneLine(std::string_view text);

// Null switches back to the file.
void SetTraceCallback(TraceCallback callback);

// A line as a user gives it to the trace: "%%" is a percent sign, other percent signs stand for
// themselves.
void LogUserText(std::string_view text);

const std::string& GetLogFilePath();
const std::string& GetLogSwitchFilePath();

// The log file's path for a value of the setting Key20, a list of fields separated by ";".
std::string LogFilePathFor(std::string_view key20);

namespace log_internal {
// False only when it is decided that neither the trace file nor a callback takes trace lines.
extern std::atomic<bool> trace_gate;
bool ErrorHeard();
}  // namespace log_internal

inline bool TraceHeard() { return log_internal::trace_gate.load(std::memory_order_relaxed); }

// Whether anybody would see what a handle check has to say.
inline bool LogHeard() { return TraceHeard() || log_internal::ErrorHeard(); }

}  // namespace mimora

#endif  // MIMORA_DIAG_LOG_H_

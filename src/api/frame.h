// Copyright (c) 2026 the mimora developers.
//
// What all exports share: their passage through the log, the casts between handles and objects, and
// the ways in which texts are handed out.
#ifndef MIMORA_API_FRAME_H_
#define MIMORA_API_FRAME_H_

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>

#include "diag/checks.h"
#include "diag/log.h"
#include "mime/bodypart.h"
#include "mimora/mimora.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// ---- Handles ----------------------------------------------------------------------------------

inline Bodypart* ToBodypart(M_Bodypart* handle) { return reinterpret_cast<Bodypart*>(handle); }
inline M_Bodypart* ToHandle(Bodypart* part) { return reinterpret_cast<M_Bodypart*>(part); }
inline Minstream* ToInstream(S_InStream* handle) { return reinterpret_cast<Minstream*>(handle); }
inline S_InStream* ToHandle(Minstream* in) { return reinterpret_cast<S_InStream*>(in); }
inline Moutstream* ToOutstream(S_OutStream* handle) {
  return reinterpret_cast<Moutstream*>(handle);
}
inline S_OutStream* ToHandle(Moutstream* out) { return reinterpret_cast<S_OutStream*>(out); }

// ---- Passage ----------------------------------------------------------------------------------

// An "in" or "out" line.
inline void TracePassage(const char* name, const char* direction) {
  // Asked here, too: a call with variable arguments saves all registers first.
  if (TraceHeard()) LogTrace("%s %s", name, direction);
}

// Runs an export's work between its "in" and "out" lines. An exception is logged with the progress
// number that the work keeps, and goes on to the caller; the "out" line is then left out, so the
// log shows where a call ended. LOG_EXCEPTION(ex_pos) writes the line.
template <typename Work, typename LogException>
auto RunExport(const char* name, Work work, LogException log_exception)
    -> std::invoke_result_t<Work, int&> {
  TracePassage(name, "in");
  int ex_pos = 0;
  try {
    if constexpr (std::is_void_v<std::invoke_result_t<Work, int&>>) {
      work(ex_pos);
      TracePassage(name, "out");
    } else {
      auto result = work(ex_pos);
      TracePassage(name, "out");
      return result;
    }
  } catch (...) {
    log_exception(ex_pos);
    throw;
  }
}

template <typename Work>
auto RunExport(const char* name, Work work) {
  return RunExport(name, work, [name](int ex_pos) { LogError("<E> %s ex_pos=%d", name, ex_pos); });
}

// The usual export on a part: the check, then the work, or the answer for a null handle.
template <typename Work, typename Result>
Result RunOnBodypart(const char* name, M_Bodypart* handle, Result for_null, Work work) {
  return RunExport(name, [&](int& ex_pos) -> Result {
    NoteBodypart(handle);
    ex_pos = 1;
    return handle == nullptr ? for_null : work(*ToBodypart(handle));
  });
}

// ---- Texts ------------------------------------------------------------------------------------

// The sized copy: 0 copied; 1 no buffer or too small a one, the size needed is stored; -1 nothing
// to copy.
inline int32_t CopyOut(std::optional<std::string_view> text, char* buffer, uint32_t* size) {
  if (!text) return -1;
  if (size == nullptr) return 1;
  if (buffer == nullptr || *size <= text->size()) {
    *size = static_cast<uint32_t>(text->size() + 1);
    return 1;
  }
  std::copy(text->begin(), text->end(), buffer);
  buffer[text->size()] = '\0';
  return 0;
}

// The copy that is cut to fit: 0 whole, 1 cut. The last byte of the buffer is always zero.
inline int32_t CopyCut(std::string_view text, char* buffer, uint32_t size) {
  if (buffer == nullptr || size == 0) return 1;
  const size_t count = std::min<size_t>(text.size(), size - 1);
  std::copy_n(text.begin(), count, buffer);
  buffer[count] = buffer[size - 1] = '\0';
  return text.size() < size ? 0 : 1;
}

// The copy that fits, or leaves nothing but zeros: 0 copied, 1 it does not fit.
inline int32_t CopyWhole(std::string_view text, char* buffer, uint32_t size) {
  if (buffer != nullptr) std::fill_n(buffer, size, '\0');
  if (text.empty()) return 0;
  if (buffer == nullptr || text.size() >= size) return 1;
  std::copy(text.begin(), text.end(), buffer);
  return 0;
}

// An argument that may be null.
inline std::string_view TextOrEmpty(const char* text) { return text != nullptr ? text : ""; }

}  // namespace mimora

#endif  // MIMORA_API_FRAME_H_

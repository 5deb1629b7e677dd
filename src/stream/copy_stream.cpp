// Copyright (c) 2026 the mimora developers.
#include "stream/copy_stream.h"

#include <algorithm>

#include "diag/result.h"
#include "stream/stream_window.h"

namespace mimora {

int32_t CopyStream(Minstream& in, Moutstream& out, int64_t length) {
  while (length > 0) {
    const std::string_view run = in.NextRun();
    if (in.GetError() != 0) return kReadFailed;
    if (run.empty()) break;
    const int64_t count = std::min(static_cast<int64_t>(run.size()), length);
    if (!out.WriteBlock(run.data(), count)) return kWriteFailed;
    in.Take(static_cast<size_t>(count));
    length -= count;
  }
  return out.FlushBuffer() ? kOk : kWriteFailed;
}

int32_t CopyRange(Minstream& in, Moutstream& out, int64_t start, int64_t length) {
  const int64_t before = out.WritePos();
  StreamWindow window(in, start, length);
  const int32_t result = CopyStream(window.Stream(), out, kWholeStream);
  return result == kOk && out.WritePos() - before < length ? kReadFailed : result;
}

}  // namespace mimora

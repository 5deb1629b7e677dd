// Copyright (c) 2026 the mimora developers.
#include "stream/stream_window.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace mimora {

StreamWindow::StreamWindow(Minstream& in, int64_t start, int64_t length)
    : in_(in), former_limit_(in.ReadLimit()) {
  if (start < 0) length = 0;
  start = std::max<int64_t>(start, 0);
  length = std::clamp<int64_t>(length, 0, kWholeStream - start);
  if (const auto bytes = in.Memory()) {
    start = std::min(start, std::ssize(*bytes));
    const int64_t count = std::min(length, std::ssize(*bytes) - start);
    memory_.emplace(MemorySource{bytes->data() + start, count});
    return;
  }
  in.SetBoundary({});
  in.Seek(start);
  const int64_t position = in.Position();
  const int64_t end = position == start ? start + length : position;
  in.SetReadLimit(former_limit_ == kNoReadLimit ? end : std::min(end, former_limit_));
}

StreamWindow::~StreamWindow() {
  if (!memory_) in_.SetReadLimit(former_limit_);
}

}  // namespace mimora

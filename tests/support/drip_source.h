// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TESTS_SUPPORT_DRIP_SOURCE_H_
#define MIMORA_TESTS_SUPPORT_DRIP_SOURCE_H_

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "stream/minstream.h"

namespace mimora::testing {

// A text behind callbacks, handed out in pieces of at most STEP bytes; from byte FAIL_AT on every
// read answers -1 with errno EIO.
class DripSource {
 public:
  static constexpr int64_t kNever = INT64_MAX;

  explicit DripSource(std::string_view text, int64_t step = kNever, int64_t fail_at = kNever)
      : text_(text), step_(step), fail_at_(fail_at) {}

  void FailAt(int64_t position) { fail_at_ = position; }

  CallbackSource Reading() {
    return {.context = Context(), .read = Read, .seek = Seek, .tell = Tell};
  }
  CallbackSource Pointing() {
    return {.context = Context(), .readptr = Point, .seek = Seek, .tell = Tell};
  }

 private:
  intptr_t Context() { return reinterpret_cast<intptr_t>(this); }
  static DripSource& From(intptr_t context) { return *reinterpret_cast<DripSource*>(context); }

  int64_t Next(int64_t length) {
    if (position_ >= fail_at_) return errno = EIO, -1;
    return std::max<int64_t>(
        std::min({length, step_, std::ssize(text_) - position_, fail_at_ - position_}), 0);
  }
  static int64_t Read(intptr_t context, void* destination, int64_t length) {
    const void* bytes = nullptr;
    const int64_t count = Point(context, &bytes, length);
    if (count > 0) std::memcpy(destination, bytes, static_cast<size_t>(count));
    return count;
  }
  static int64_t Point(intptr_t context, const void** bytes, int64_t length) {
    DripSource& source = From(context);
    const int64_t count = source.Next(length);
    if (count > 0) {
      *bytes = source.text_.data() + source.position_;
      source.position_ += count;
    }
    return count;
  }
  static void Seek(intptr_t context, int64_t position) { From(context).position_ = position; }
  static int64_t Tell(intptr_t context) { return From(context).position_; }

  std::string_view text_;
  int64_t step_;
  int64_t fail_at_;
  int64_t position_ = 0;
};

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_DRIP_SOURCE_H_

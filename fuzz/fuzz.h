// Copyright (c) 2026 the mimora developers.
//
// What all fuzz targets share. A target asks for more than to stay alive: what it is promised it
// checks with FUZZ_CHECK.
#ifndef MIMORA_FUZZ_FUZZ_H_
#define MIMORA_FUZZ_FUZZ_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "platform/cpu.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora::fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const char* promise) {
  std::fprintf(stderr, "%s:%d: not true: %s\n", file, line, promise);
  std::abort();
}

#define FUZZ_CHECK(promise) \
  ((promise) ? void() : ::mimora::fuzz::Fail(__FILE__, __LINE__, #promise))

// Takes an input apart. Choices come from its end, so that any message or text is a seed as it is.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  // 0 when nothing is left.
  uint8_t Byte() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<uint8_t>(rest_.back());
    rest_.remove_suffix(1);
    return byte;
  }
  bool Flag() { return (Byte() & 1) != 0; }
  uint32_t Number() {
    uint32_t number = 0;
    for (int i = 0; i < 4; ++i) number = number << 8 | Byte();
    return number;
  }

  template <typename Choices>
  const auto& Choose(const Choices& choices) {
    return choices[Byte() % std::size(choices)];
  }

  std::string_view Rest() const { return rest_; }

 private:
  std::string_view rest_;
};

// What each target defines.
void CheckInput(Input input);

// A copy in a block of just that size: reading past its end is found out.
class ExactCopy {
 public:
  explicit ExactCopy(std::string_view text) : size_(text.size()), bytes_(new char[text.size()]) {
    std::copy(text.begin(), text.end(), bytes_.get());
  }
  std::string_view Text() const { return {bytes_.get(), size_}; }

 private:
  size_t size_;
  std::unique_ptr<char[]> bytes_;
};

// Sizes of pieces that follow from a number: the same ones for every coder that is to agree.
class Cuts {
 public:
  Cuts(uint32_t seed, size_t longest) : state_(seed | 1), longest_(longest) {}

  // 1 to the longest, at most what is LEFT.
  size_t Next(size_t left) {
    state_ = state_ * 1664525 + 1013904223;
    return std::min(left, 1 + (state_ >> 8) % longest_);
  }

 private:
  uint32_t state_;
  size_t longest_;
};

template <typename Feed>
void InPieces(std::string_view text, Cuts cuts, Feed feed) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, cuts.Next(text.size()));
    // A piece ends where its memory does.
    feed(ExactCopy(piece).Text());
    text.remove_prefix(piece.size());
  }
}

// Runs the work with all vector instructions that are allowed, with fewer, and with none.
template <typename Work>
void ForEveryCpuLevel(Work work) {
  using platform::CpuLevel;
  static const CpuLevel most = platform::GetCpuLevel();
  for (const CpuLevel level : {CpuLevel::kPortable, CpuLevel::kSse, CpuLevel::kAvx2}) {
    if (level > most) break;
    platform::SetCpuLevel(level);
    work(level);
  }
  platform::SetCpuLevel(most);
}

inline MemorySource SourceOf(std::string_view text) {
  return {.data = text.data(), .length = std::ssize(text)};
}

// What a step writes into memory, or would: STEP(out).
template <typename Step>
std::string WrittenBy(Step step) {
  Moutstream out(MemorySink{});
  step(out);
  FUZZ_CHECK(out.GetError() == 0);
  return std::string(out.GetBuffer());
}

// A sized copy: COPY(buffer, size) first tells the size that it needs, and then keeps to it.
template <typename Copy>
std::string Copied(Copy copy, int told, int copied) {
  uint32_t size = 0;
  const int answer = copy(nullptr, &size);
  if (answer != told) return {};
  const std::unique_ptr<char[]> room(new char[size]);
  uint32_t less = size - 1;
  FUZZ_CHECK(copy(room.get(), &less) == told && less == size);
  FUZZ_CHECK(copy(room.get(), &size) == copied);
  FUZZ_CHECK(room[size - 1] == '\0');
  return std::string(room.get(), size - 1);
}

}  // namespace mimora::fuzz

#endif  // MIMORA_FUZZ_FUZZ_H_

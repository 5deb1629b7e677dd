// Copyright (c) 2026 the mimora developers.
//
// Runs of ASCII between bytes and UTF-16, which are most of what mail consists of. The loops have a
// fixed length: the compiler makes a few vector instructions of each.
#ifndef MIMORA_CODEC_CHARSET_ASCII_RUN_H_
#define MIMORA_CODEC_CHARSET_ASCII_RUN_H_

#include <cstddef>
#include <cstdint>

namespace mimora {

constexpr ptrdiff_t kAsciiBlock = 16;

inline bool IsAsciiBlock(const char* p) {
  uint8_t all = 0;
  for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) all |= static_cast<uint8_t>(p[i]);
  return all < 0x80;
}

inline bool IsAsciiBlock(const char16_t* p) {
  uint16_t all = 0;
  for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) all |= p[i];
  return all < 0x80;
}

// Copies the whole blocks of ASCII in front of [p, end) and moves P and OUT behind them.
template <typename From, typename To>
void CopyAsciiBlocks(const From*& p, const From* end, To*& out) {
  while (end - p >= kAsciiBlock && IsAsciiBlock(p)) {
    for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) out[i] = static_cast<To>(p[i]);
    p += kAsciiBlock;
    out += kAsciiBlock;
  }
}

// The same for all of the ASCII there.
template <typename From, typename To>
void CopyAscii(const From*& p, const From* end, To*& out) {
  constexpr From kHighest = 0x7F;
  CopyAsciiBlocks(p, end, out);
  for (; p != end && (*p & ~kHighest) == 0; ++p) *out++ = static_cast<To>(*p);
}

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_ASCII_RUN_H_

// Copyright (c) 2026 the mimora developers.
//
// Uuencoded lines in blocks, as wide as the machine's vectors.
#ifndef MIMORA_CODEC_UUENCODE_BLOCKS_H_
#define MIMORA_CODEC_UUENCODE_BLOCKS_H_

#include <cstdint>

#include "platform/cpu.h"

namespace mimora {

// How far the decoder has come, in what it reads and in what it writes.
struct UuProgress {
  const char* in;
  char* out;
};

// Decodes data lines that have all their characters and nothing behind them, up to the first line
// that is different, or that is too near to one of the ends. Between the returned place and OUT_END
// there may be rubbish. Without vectors it takes nothing.
UuProgress DecodeUuLines(platform::CpuLevel level, UuProgress at, const char* end,
                         const char* out_end);

struct UuCount {
  const char* in;
  int64_t bytes;
};

// Passes over such lines, all of whose characters are of the alphabet, and counts their bytes.
UuCount CountUuLines(platform::CpuLevel level, const char* p, const char* end);

}  // namespace mimora

#endif  // MIMORA_CODEC_UUENCODE_BLOCKS_H_

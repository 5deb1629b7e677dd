// Copyright (c) 2026 the mimora developers.
//
// Uuencoded lines in blocks, as wide as the machine's vectors.
#ifndef MIMORA_CODEC_UUENCODE_BLOCKS_H_
#define MIMORA_CODEC_UUENCODE_BLOCKS_H_

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

}  // namespace mimora

#endif  // MIMORA_CODEC_UUENCODE_BLOCKS_H_

// Copyright (c) 2026 the mimora developers.
//
// A small compressor for blocks in memory: LZ77 with an escape byte, the marker, and numbers of
// variable length. A block is the marker and then tokens up to its end: a byte that is not the
// marker stands for itself; the marker and a zero stand for the marker; the marker, a length and an
// offset stand for so many bytes from so far back.
#ifndef MIMORA_UTIL_LZ_H_
#define MIMORA_UTIL_LZ_H_

#include <string_view>

#include "util/lz_memory.h"

namespace mimora {

// A number has seven bits in each byte, the highest first; all but the last have this bit.
constexpr uint8_t kLzMore = 0x80;

// Compresses at most 4 GiB into OUT, which has room for 1 + size + size / 256 bytes. Answers the
// number of bytes written. The output depends on the input alone: not on whether there is memory to
// work quickly.
uint32_t LzCompress(std::string_view in, uint8_t* out, LzAllocate allocate = std::malloc);

// Uncompresses a block into OUT, which is large enough; with OUT null only counts. Answers the
// number of bytes. It stops where the block ends, in the middle of a token or not, at a match that
// begins in front of the output, and in front of what the number could not hold.
uint32_t LzUncompress(std::string_view block, uint8_t* out);

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_H_

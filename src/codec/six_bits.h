// Copyright (c) 2026 the mimora developers.
//
// Vectors of six-bit values, four of which make three bytes: base64 and uuencode have them in
// common.
#ifndef MIMORA_CODEC_SIX_BITS_H_
#define MIMORA_CODEC_SIX_BITS_H_

#include "platform/cpu.h"

#if MIMORA_HAS_VECTORS

#include <immintrin.h>

namespace mimora {

// Where in each group of four the bytes 0x00, high, middle and low stand after the packing.
MIMORA_FOR_SSE MIMORA_INLINE __m128i PackedOrder() {
  return _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
}

// Writes 16 bytes, of which the first 12 count.
MIMORA_FOR_SSE MIMORA_INLINE void StorePacked(__m128i values, char* out) {
  const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi16(0x0140));
  const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(groups, PackedOrder()));
}

// Writes 32 bytes, of which the first 24 count.
MIMORA_FOR_AVX2 MIMORA_INLINE void StorePacked(__m256i values, char* out) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i halves = _mm256_shuffle_epi8(groups, _mm256_broadcastsi128_si256(PackedOrder()));
  const __m256i joined =
      _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), joined);
}

}  // namespace mimora

#endif  // MIMORA_HAS_VECTORS

#endif  // MIMORA_CODEC_SIX_BITS_H_

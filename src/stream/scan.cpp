// Copyright (c) 2026 the mimora developers.
#include "stream/scan.h"

#include <cstdint>

#if MIMORA_HAS_VECTORS

#include <immintrin.h>

namespace mimora::scan_vectors {
namespace {

// All ones where A stands directly in front of B.
MIMORA_FOR_AVX2 MIMORA_INLINE __m256i Pairs(const char* p, __m256i a, __m256i b) {
  const __m256i here = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 1));
  return _mm256_and_si256(_mm256_cmpeq_epi8(here, a), _mm256_cmpeq_epi8(next, b));
}

MIMORA_FOR_AVX2 MIMORA_INLINE uint64_t Bits(__m256i bytes) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

}  // namespace

MIMORA_FOR_AVX2 const char* FindPairAvx2(const char* p, const char* end, char a, char b) {
  const __m256i first = _mm256_set1_epi8(a);
  const __m256i second = _mm256_set1_epi8(b);
  for (; end - p >= 65; p += 64) {
    const __m256i low = Pairs(p, first, second);
    const __m256i high = Pairs(p + 32, first, second);
    const __m256i any = _mm256_or_si256(low, high);
    if (_mm256_testz_si256(any, any) != 0) continue;
    return p + std::countr_zero(Bits(low) | Bits(high) << 32);
  }
  return FindPairSse(p, end, a, b);
}

}  // namespace mimora::scan_vectors

#endif  // MIMORA_HAS_VECTORS

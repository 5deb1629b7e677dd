// Copyright (c) 2026 the mimora developers.
//
// Searches over runs of bytes. Each looks at sixteen bytes or more at a time where the machine can
// and at single bytes otherwise, with the same answers.
#ifndef MIMORA_STREAM_SCAN_H_
#define MIMORA_STREAM_SCAN_H_

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <bit>

#include "platform/cpu.h"

namespace mimora {

// The searches byte by byte: the definition of the fast ones, and what does the work where less
// than a block is to be searched.
namespace scan_plain {

// The first place in [p, end - 1) where A stands directly in front of B; end when there is none.
inline const char* FindPair(const char* p, const char* end, char a, char b) {
  for (; end - p >= 2; ++p) {
    if (p[0] == a && p[1] == b) return p;
  }
  return end;
}

// The first of some characters in [p, end); end when there is none.
template <char... kWanted>
const char* FindAnyOf(const char* p, const char* end) {
  while (p < end && ((*p != kWanted) && ...)) ++p;
  return p;
}

// The same, and any character up to the space counts, too.
template <char... kWanted>
const char* FindSpaceOr(const char* p, const char* end) {
  const auto is_wanted = [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || ((c == kWanted) || ...);
  };
  while (p < end && !is_wanted(*p)) ++p;
  return p;
}

}  // namespace scan_plain

#if defined(__SSE2__)

namespace scan_vectors {

constexpr int kBlock = 16;

inline const char* FindPairSse(const char* p, const char* end, char a, char b) {
  const __m128i first = _mm_set1_epi8(a);
  const __m128i second = _mm_set1_epi8(b);
  // The second load looks one byte further than the first.
  constexpr int kLooked = kBlock + 1;
  if (end - p < kLooked) return scan_plain::FindPair(p, end, a, b);
  for (;; p += kBlock) {
    // The last block reaches back into what is known to have none.
    if (end - p < kLooked) p = end - kLooked;
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i next = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 1));
    const __m128i hit = _mm_and_si128(_mm_cmpeq_epi8(here, first), _mm_cmpeq_epi8(next, second));
    if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hit))) {
      return p + std::countr_zero(mask);
    }
    if (end - p == kLooked) return end;
  }
}

const char* FindPairAvx2(const char* p, const char* end, char a, char b);

}  // namespace scan_vectors

inline const char* FindPair(const char* p, const char* end, char a, char b) {
#if MIMORA_HAS_VECTORS
  constexpr int kWorthACall = 128;
  if (end - p >= kWorthACall && platform::GetCpuLevel() == platform::CpuLevel::kAvx2) {
    return scan_vectors::FindPairAvx2(p, end, a, b);
  }
#endif
  return scan_vectors::FindPairSse(p, end, a, b);
}

namespace scan_vectors {

// The first byte that HITS marks in [p, end), which is a block at least; end when there is none.
template <typename Hits>
const char* FindInBlocks(const char* p, const char* end, Hits hits) {
  for (;; p += kBlock) {
    // The last block reaches back into what is known to have none.
    if (end - p < kBlock) p = end - kBlock;
    const __m128i here = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits(here)))) {
      return p + std::countr_zero(mask);
    }
    if (end - p == kBlock) return end;
  }
}

template <char... kWanted>
__m128i AnyOf(__m128i here) {
  __m128i hits = _mm_setzero_si128();
  ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(here, _mm_set1_epi8(kWanted)))), ...);
  return hits;
}

template <char... kWanted>
__m128i SpaceOr(__m128i here) {
  const __m128i spaces = _mm_cmpeq_epi8(_mm_min_epu8(here, _mm_set1_epi8(' ')), here);
  return _mm_or_si128(spaces, AnyOf<kWanted...>(here));
}

}  // namespace scan_vectors

template <char... kWanted>
const char* FindAnyOf(const char* p, const char* end) {
  if (end - p < scan_vectors::kBlock) return scan_plain::FindAnyOf<kWanted...>(p, end);
  return scan_vectors::FindInBlocks(p, end, scan_vectors::AnyOf<kWanted...>);
}

template <char... kWanted>
const char* FindSpaceOr(const char* p, const char* end) {
  if (end - p < scan_vectors::kBlock) return scan_plain::FindSpaceOr<kWanted...>(p, end);
  return scan_vectors::FindInBlocks(p, end, scan_vectors::SpaceOr<kWanted...>);
}

#else

using scan_plain::FindAnyOf;
using scan_plain::FindPair;
using scan_plain::FindSpaceOr;

#endif

// The size of the line end at P: CR LF or LF, 0 when it is neither. The byte behind a CR is in
// view.
MIMORA_INLINE int LineEndSize(const char* p) {
  if (p[0] == '\r' && p[1] == '\n') return 2;
  return p[0] == '\n' ? 1 : 0;
}

// The first CR or LF in [p, end); end when there is none.
inline const char* FindLineEnd(const char* p, const char* end) {
  return FindAnyOf<'\r', '\n'>(p, end);
}

}  // namespace mimora

#endif  // MIMORA_STREAM_SCAN_H_

// Copyright (c) 2026 the mimora developers.
//
// Runs of ASCII between bytes and UTF-16, which are most of what mail consists of: sixteen
// characters at a time where the machine can.
#ifndef MIMORA_CODEC_CHARSET_ASCII_RUN_H_
#define MIMORA_CODEC_CHARSET_ASCII_RUN_H_

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cstddef>

namespace mimora {

constexpr ptrdiff_t kAsciiBlock = 16;

#if defined(__SSE2__)

// Copies a block if it is all ASCII.
inline bool CopyAsciiBlock(const char* p, char16_t* out) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  if (_mm_movemask_epi8(block) != 0) return false;
  const __m128i zero = _mm_setzero_si128();
  auto* const to = reinterpret_cast<__m128i*>(out);
  _mm_storeu_si128(to, _mm_unpacklo_epi8(block, zero));
  _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(block, zero));
  return true;
}

inline bool CopyAsciiBlock(const char16_t* p, char* out) {
  const auto* const from = reinterpret_cast<const __m128i*>(p);
  const __m128i low = _mm_loadu_si128(from);
  const __m128i high = _mm_loadu_si128(from + 1);
  const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i bits = _mm_and_si128(_mm_or_si128(low, high), beyond);
  if (_mm_movemask_epi8(_mm_cmpeq_epi16(bits, _mm_setzero_si128())) != 0xFFFF) return false;
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
  return true;
}

#else

template <typename From, typename To>
bool CopyAsciiBlock(const From* p, To* out) {
  constexpr From kHighest = 0x7F;
  if (std::any_of(p, p + kAsciiBlock, [](From c) { return (c & ~kHighest) != 0; })) return false;
  for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) out[i] = static_cast<To>(p[i]);
  return true;
}

#endif

// Copies the whole blocks of ASCII in front of [p, end) and moves P and OUT behind them.
template <typename From, typename To>
void CopyAsciiBlocks(const From*& p, const From* end, To*& out) {
  while (end - p >= kAsciiBlock && CopyAsciiBlock(p, out)) {
    p += kAsciiBlock;
    out += kAsciiBlock;
  }
}

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_ASCII_RUN_H_

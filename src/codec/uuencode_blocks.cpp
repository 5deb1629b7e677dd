// Copyright (c) 2026 the mimora developers.
#include "codec/uuencode_blocks.h"

#include <bit>
#include <cstdint>

#include "codec/six_bits.h"
#include "codec/uuencode_alphabet.h"

namespace mimora {

using platform::CpuLevel;

#if MIMORA_HAS_VECTORS

namespace {

// ---- One line -----------------------------------------------------------------------------------

struct Sse {
  static constexpr int kSize = 16;

  // Writes a block and tells how many characters stand in front of a line end.
  MIMORA_FOR_SSE static int Decode(const char* p, char* out) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i line_end = _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\r')),
                                          _mm_cmpeq_epi8(text, _mm_set1_epi8('\n')));
    StorePacked(
        _mm_and_si128(_mm_sub_epi8(text, _mm_set1_epi8(kLowestUuCharacter)), _mm_set1_epi8(0x3F)),
        out);
    return std::countr_zero(static_cast<uint32_t>(_mm_movemask_epi8(line_end)) | 1U << kSize);
  }
};

struct Avx2 {
  static constexpr int kSize = 32;

  MIMORA_FOR_AVX2 static int Decode(const char* p, char* out) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i line_end = _mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('\r')),
                                             _mm256_cmpeq_epi8(text, _mm256_set1_epi8('\n')));
    StorePacked(_mm256_and_si256(_mm256_sub_epi8(text, _mm256_set1_epi8(kLowestUuCharacter)),
                                 _mm256_set1_epi8(0x3F)),
                out);
    return std::countr_zero(static_cast<uint32_t>(_mm256_movemask_epi8(line_end)));
  }
};

// Answers whether the line really has that many characters.
template <typename Vector>
MIMORA_INLINE bool DecodeLine(UuProgress at, int characters) {
  for (; characters >= Vector::kSize; characters -= Vector::kSize) {
    if (Vector::Decode(at.in, at.out) != Vector::kSize) return false;
    at.in += Vector::kSize;
    at.out += Vector::kSize / 4 * 3;
  }
  return Vector::Decode(at.in, at.out) >= characters;
}

// ---- Lines --------------------------------------------------------------------------------------

// What is read and written at most for one line: the longest one, its end, and a block too many.
constexpr int64_t kMostCharacters = 1 + 84 + 2 + Avx2::kSize;
constexpr int64_t kMostDecoded = 63 + Avx2::kSize;

MIMORA_INLINE int LineEndSize(const char* p) {
  if (p[0] == '\r' && p[1] == '\n') return 2;
  return p[0] == '\n' ? 1 : 0;
}

template <typename Vector>
MIMORA_INLINE UuProgress DecodeLines(UuProgress at, const char* end, const char* out_end) {
  while (end - at.in >= kMostCharacters && out_end - at.out >= kMostDecoded) {
    // Neither a line of blanks nor the end line begins like this.
    if (*at.in <= kLowestUuCharacter || *at.in > kHighestUuCharacter) break;
    const int bytes = UuValueOf(*at.in);
    const int characters = UuCharactersFor(bytes);
    const char* behind = at.in + 1 + characters;
    const int line_end = LineEndSize(behind);
    if (line_end == 0 || !DecodeLine<Vector>({at.in + 1, at.out}, characters)) break;
    at = {behind + line_end, at.out + bytes};
  }
  return at;
}

MIMORA_FOR_SSE MIMORA_FLAT UuProgress DecodeSse(UuProgress at, const char* end,
                                                const char* out_end) {
  return DecodeLines<Sse>(at, end, out_end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT UuProgress DecodeAvx2(UuProgress at, const char* end,
                                                  const char* out_end) {
  return DecodeLines<Avx2>(at, end, out_end);
}

}  // namespace

UuProgress DecodeUuLines(CpuLevel level, UuProgress at, const char* end, const char* out_end) {
  if (level == CpuLevel::kSse) return DecodeSse(at, end, out_end);
  return level == CpuLevel::kAvx2 ? DecodeAvx2(at, end, out_end) : at;
}

#else

UuProgress DecodeUuLines(CpuLevel, UuProgress at, const char*, const char*) { return at; }

#endif

}  // namespace mimora

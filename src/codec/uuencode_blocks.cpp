// Copyright (c) 2026 the mimora developers.
#include "codec/uuencode_blocks.h"

#include <array>
#include <bit>
#include <cstdint>

#include "codec/six_bits.h"
#include "codec/uuencode_alphabet.h"
#include "stream/scan.h"

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

  // Writes nothing and tells how many characters in front are of the alphabet.
  MIMORA_FOR_SSE static int Check(const char* p, char*) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i value = _mm_sub_epi8(text, _mm_set1_epi8(kLowestUuCharacter));
    const __m128i most = _mm_set1_epi8(kHighestUuCharacter - kLowestUuCharacter);
    const __m128i known = _mm_cmpeq_epi8(_mm_min_epu8(value, most), value);
    return std::countr_one(static_cast<uint32_t>(_mm_movemask_epi8(known)));
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

  MIMORA_FOR_AVX2 static int Check(const char* p, char*) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i value = _mm256_sub_epi8(text, _mm256_set1_epi8(kLowestUuCharacter));
    const __m256i most = _mm256_set1_epi8(kHighestUuCharacter - kLowestUuCharacter);
    const __m256i known = _mm256_cmpeq_epi8(_mm256_min_epu8(value, most), value);
    return std::countr_one(static_cast<uint32_t>(_mm256_movemask_epi8(known)));
  }
};

// Answers whether the line really has that many characters, all of the right kind.
template <typename Vector, auto kBlock>
MIMORA_INLINE bool TakeLine(const char* p, char* out, int characters) {
  for (; characters >= Vector::kSize; characters -= Vector::kSize) {
    if (kBlock(p, out) != Vector::kSize) return false;
    p += Vector::kSize;
    out += Vector::kSize / 4 * 3;
  }
  return kBlock(p, out) >= characters;
}

// ---- Lines --------------------------------------------------------------------------------------

// What is read and written at most for one line: the longest one, its end, and a block too many.
constexpr int64_t kMostCharacters = 1 + 84 + 2 + Avx2::kSize;
constexpr int64_t kMostDecoded = 63 + Avx2::kSize;

// The next line, as far as it goes in blocks.
struct Line {
  int bytes;
  int characters;
  int line_end;  // 0: it does not
};

MIMORA_INLINE Line LookAtLine(const char* p) {
  // Neither a line of blanks nor the end line begins like this.
  if (*p <= kLowestUuCharacter || *p > kHighestUuCharacter) return {};
  const int bytes = UuValueOf(*p);
  const int characters = UuCharactersFor(bytes);
  return {bytes, characters, LineEndSize(p + 1 + characters)};
}

template <typename Vector>
MIMORA_INLINE UuProgress DecodeLines(UuProgress at, const char* end, const char* out_end) {
  while (end - at.in >= kMostCharacters && out_end - at.out >= kMostDecoded) {
    const Line line = LookAtLine(at.in);
    if (line.line_end == 0) break;
    if (!TakeLine<Vector, Vector::Decode>(at.in + 1, at.out, line.characters)) break;
    at = {at.in + 1 + line.characters + line.line_end, at.out + line.bytes};
  }
  return at;
}

template <typename Vector>
MIMORA_INLINE UuCount CountLines(UuCount at, const char* end) {
  std::array<char, kMostDecoded> unused;
  while (end - at.in >= kMostCharacters) {
    const Line line = LookAtLine(at.in);
    if (line.line_end == 0) break;
    if (!TakeLine<Vector, Vector::Check>(at.in + 1, unused.data(), line.characters)) break;
    at = {at.in + 1 + line.characters + line.line_end, at.bytes + line.bytes};
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

MIMORA_FOR_SSE MIMORA_FLAT UuCount CountSse(UuCount at, const char* end) {
  return CountLines<Sse>(at, end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT UuCount CountAvx2(UuCount at, const char* end) {
  return CountLines<Avx2>(at, end);
}

}  // namespace

UuProgress DecodeUuLines(CpuLevel level, UuProgress at, const char* end, const char* out_end) {
  if (level == CpuLevel::kSse) return DecodeSse(at, end, out_end);
  return level == CpuLevel::kAvx2 ? DecodeAvx2(at, end, out_end) : at;
}

UuCount CountUuLines(CpuLevel level, const char* p, const char* end) {
  if (level == CpuLevel::kSse) return CountSse({p, 0}, end);
  return level == CpuLevel::kAvx2 ? CountAvx2({p, 0}, end) : UuCount{p, 0};
}

#else

UuProgress DecodeUuLines(CpuLevel, UuProgress at, const char*, const char*) { return at; }

UuCount CountUuLines(CpuLevel, const char* p, const char*) { return {p, 0}; }

#endif

}  // namespace mimora

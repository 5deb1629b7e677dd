// Copyright (c) 2026 the mimora developers.
//
// What the coders of quoted-printable do with one block: portably, and with vectors.
#ifndef MIMORA_CODEC_QUOTED_PRINTABLE_VECTORS_H_
#define MIMORA_CODEC_QUOTED_PRINTABLE_VECTORS_H_

#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/cpu.h"
#include "platform/load.h"

#if MIMORA_HAS_VECTORS
#include <immintrin.h>
#endif

namespace mimora::quoted_printable {

// Eight bytes in a word; the marks are the highest bits of the bytes.
struct Word {
  static constexpr int kSize = 8;

  static constexpr uint64_t All(uint64_t byte) { return 0x0101010101010101 * byte; }

  static constexpr uint64_t AtLeast(uint64_t word, uint64_t limit) {
    return ((word & All(0x7F)) + All(0x80 - limit)) | word;
  }

  static constexpr uint64_t Is(uint64_t word, char c) {
    return ~AtLeast(word ^ All(static_cast<uint8_t>(c)), 1) & All(0x80);
  }

  static int BytesBefore(uint64_t marks) {
    constexpr bool kFirstIsLowest = std::endian::native == std::endian::little;
    return (kFirstIsLowest ? std::countr_zero(marks) : std::countl_zero(marks)) / 8;
  }

  static uint64_t CopyWord(const char* p, char* out) {
    const auto word = Load<uint64_t>(p);
    std::memcpy(out, &word, kSize);
    return word;
  }

  // Copies a block and tells how many bytes in front are text: no equals signs or line ends.
  static int Copy(const char* p, char* out) {
    const uint64_t word = CopyWord(p, out);
    return BytesBefore(Is(word, '=') | Is(word, '\r') | Is(word, '\n'));
  }

  // Copies a block and tells how many bytes in front need not be encoded, whatever dots need.
  static int CopyPlain(const char* p, char* out) {
    const uint64_t word = CopyWord(p, out);
    const uint64_t control = (word | ~AtLeast(word, ' ')) & ~Is(word, '\t') & All(0x80);
    return BytesBefore(control | Is(word, '='));
  }
};

#if MIMORA_HAS_VECTORS

// One bit for every byte of a block of 64.
struct Marks {
  uint64_t equals = 0, cr = 0, lf = 0, blanks = 0, digits = 0;
};

constexpr int kBlock = 64;

struct Sse {
  static constexpr int kSize = 16;

  MIMORA_FOR_SSE static MIMORA_INLINE uint64_t Bits(__m128i bytes) {
    return static_cast<uint32_t>(_mm_movemask_epi8(bytes));
  }

  // In front of the first byte that is all ones.
  MIMORA_FOR_SSE static MIMORA_INLINE int BytesBefore(__m128i marks) {
    return std::countr_zero(Bits(marks) | uint64_t{1} << kSize);
  }

  // Copies a block and tells how many bytes in front are text: no equals signs or line ends.
  MIMORA_FOR_SSE static int Copy(const char* p, char* out) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
    const __m128i line_end = _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\r')),
                                          _mm_cmpeq_epi8(text, _mm_set1_epi8('\n')));
    const __m128i equals = _mm_cmpeq_epi8(text, _mm_set1_epi8('='));
    return BytesBefore(_mm_or_si128(line_end, equals));
  }

  // Copies a block and tells how many bytes in front need not be encoded, whatever dots need.
  MIMORA_FOR_SSE static int CopyPlain(const char* p, char* out) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
    // Bytes above 0x7F are negative.
    const __m128i control = _mm_andnot_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\t')),
                                             _mm_cmplt_epi8(text, _mm_set1_epi8(' ')));
    const __m128i equals = _mm_cmpeq_epi8(text, _mm_set1_epi8('='));
    return BytesBefore(_mm_or_si128(control, equals));
  }

  MIMORA_FOR_SSE static MIMORA_INLINE __m128i IsIn(__m128i text, char first, char last) {
    const __m128i distance = _mm_sub_epi8(text, _mm_set1_epi8(first));
    const __m128i most = _mm_set1_epi8(static_cast<char>(last - first));
    return _mm_cmpeq_epi8(_mm_min_epu8(distance, most), distance);
  }

  MIMORA_FOR_SSE static Marks Find(const char* p) {
    Marks marks;
    for (int i = 0; i < kBlock; i += kSize) {
      const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
      const __m128i lower = _mm_or_si128(text, _mm_set1_epi8(0x20));
      const auto is = [&](char c) MIMORA_FOR_SSE { return _mm_cmpeq_epi8(text, _mm_set1_epi8(c)); };
      marks.equals |= Bits(is('=')) << i;
      marks.cr |= Bits(is('\r')) << i;
      marks.lf |= Bits(is('\n')) << i;
      marks.blanks |= Bits(_mm_or_si128(is(' '), is('\t'))) << i;
      marks.digits |= Bits(_mm_or_si128(IsIn(lower, 'a', 'z'), IsIn(text, '0', '9'))) << i;
    }
    return marks;
  }
};

struct Avx2 {
  static constexpr int kSize = 32;

  MIMORA_FOR_AVX2 static MIMORA_INLINE uint64_t Bits(__m256i bytes) {
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
  }

  MIMORA_FOR_AVX2 static MIMORA_INLINE int BytesBefore(__m256i marks) {
    return std::countr_zero(Bits(marks) | uint64_t{1} << kSize);
  }

  MIMORA_FOR_AVX2 static int Copy(const char* p, char* out) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
    const __m256i line_end = _mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('\r')),
                                             _mm256_cmpeq_epi8(text, _mm256_set1_epi8('\n')));
    const __m256i equals = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('='));
    return BytesBefore(_mm256_or_si256(line_end, equals));
  }

  MIMORA_FOR_AVX2 static int CopyPlain(const char* p, char* out) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
    const __m256i control = _mm256_andnot_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('\t')),
                                                _mm256_cmpgt_epi8(_mm256_set1_epi8(' '), text));
    const __m256i equals = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('='));
    return BytesBefore(_mm256_or_si256(control, equals));
  }

  MIMORA_FOR_AVX2 static MIMORA_INLINE __m256i IsIn(__m256i text, char first, char last) {
    const __m256i distance = _mm256_sub_epi8(text, _mm256_set1_epi8(first));
    const __m256i most = _mm256_set1_epi8(static_cast<char>(last - first));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(distance, most), distance);
  }

  MIMORA_FOR_AVX2 static Marks Find(const char* p) {
    Marks marks;
    for (int i = 0; i < kBlock; i += kSize) {
      const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
      const __m256i lower = _mm256_or_si256(text, _mm256_set1_epi8(0x20));
      const auto is = [&](char c)
                          MIMORA_FOR_AVX2 { return _mm256_cmpeq_epi8(text, _mm256_set1_epi8(c)); };
      marks.equals |= Bits(is('=')) << i;
      marks.cr |= Bits(is('\r')) << i;
      marks.lf |= Bits(is('\n')) << i;
      marks.blanks |= Bits(_mm256_or_si256(is(' '), is('\t'))) << i;
      marks.digits |= Bits(_mm256_or_si256(IsIn(lower, 'a', 'z'), IsIn(text, '0', '9'))) << i;
    }
    return marks;
  }
};

#endif  // MIMORA_HAS_VECTORS

}  // namespace mimora::quoted_printable

#endif  // MIMORA_CODEC_QUOTED_PRINTABLE_VECTORS_H_

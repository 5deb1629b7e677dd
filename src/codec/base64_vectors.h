// Copyright (c) 2026 the mimora developers.
//
// What the base64 coders do with one vector of characters.
#ifndef MIMORA_CODEC_BASE64_VECTORS_H_
#define MIMORA_CODEC_BASE64_VECTORS_H_

#include "platform/cpu.h"

#if MIMORA_HAS_VECTORS

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

#include "codec/base64_alphabet.h"
#include "codec/six_bits.h"

namespace mimora::base64 {

// What has to be added to a value to get its character: for 26 to 51 stands at 0, for all up to 63
// behind it, and for those below 26 at 13.
consteval std::array<char, 16> MakeCharacterShifts() {
  std::array<char, 16> shifts{};
  shifts[13] = kBase64Alphabet[0];
  for (size_t i = 51; i < 64; ++i)
    shifts[i - 51] = static_cast<char>(kBase64Alphabet[i] - static_cast<int>(i));
  return shifts;
}

constexpr std::array<char, 16> kCharacterShifts = MakeCharacterShifts();

// ---- By halves of characters --------------------------------------------------------------------
//
// A character is foreign when the bit of its high half is set for its low half. The value is the
// character plus what its high half says, '/' alone being different from its neighbours.

using Halves = std::array<char, 16>;

constexpr int HighHalfBit(int high) { return high < 2 || high > 7 ? 1 : 1 << (high - 1); }

consteval Halves MakeHighHalves() {
  Halves bits{};
  for (int high = 0; high < 16; ++high) {
    bits[static_cast<size_t>(high)] = static_cast<char>(HighHalfBit(high));
  }
  return bits;
}

consteval Halves MakeLowHalves() {
  Halves foreign{};
  for (int low = 0; low < 16; ++low) {
    int bits = 0;
    for (int high = 0; high < 16; ++high) {
      const bool is_foreign = Base64Value(static_cast<char>(high << 4 | low)) == kForeignToBase64;
      if (is_foreign) bits |= HighHalfBit(high);
    }
    foreign[static_cast<size_t>(low)] = static_cast<char>(bits);
  }
  return foreign;
}

// Behind the high halves; the place of '/' is one in front of the others with its high half.
consteval Halves MakeShifts() {
  Halves shifts{};
  for (const char c : std::string_view("/+0AQaq")) {
    const auto high = static_cast<size_t>(c >> 4);
    shifts[c == '/' ? high - 1 : high] = static_cast<char>(Base64Value(c) - c);
  }
  return shifts;
}

constexpr Halves kHighHalves = MakeHighHalves();
constexpr Halves kLowHalves = MakeLowHalves();
constexpr Halves kShifts = MakeShifts();

MIMORA_FOR_SSE MIMORA_INLINE __m128i Load(const char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

struct Sse {
  static constexpr int kSize = 16;
  static constexpr int kSpare = kSize;

  struct Characters {
    __m128i text, high;
  };

  MIMORA_FOR_SSE static MIMORA_INLINE Characters Take(const char* p) {
    const __m128i text = Load(p);
    return {text, _mm_and_si128(_mm_srli_epi32(text, 4), _mm_set1_epi8(0x0F))};
  }

  // All ones for characters of the alphabet.
  MIMORA_FOR_SSE static MIMORA_INLINE __m128i InAlphabet(Characters c) {
    const __m128i low = _mm_and_si128(c.text, _mm_set1_epi8(0x0F));
    const __m128i bits = _mm_and_si128(_mm_shuffle_epi8(Load(kHighHalves.data()), c.high),
                                       _mm_shuffle_epi8(Load(kLowHalves.data()), low));
    return _mm_cmpeq_epi8(bits, _mm_setzero_si128());
  }

  // Writes a block and tells how many characters in front are of the alphabet.
  MIMORA_FOR_SSE static int Decode(const char* p, char* out) {
    const Characters c = Take(p);
    const __m128i slash = _mm_cmpeq_epi8(c.text, _mm_set1_epi8('/'));
    const __m128i shift = _mm_shuffle_epi8(Load(kShifts.data()), _mm_add_epi8(c.high, slash));
    StorePacked(_mm_add_epi8(c.text, shift), out);
    return std::countr_one(static_cast<uint32_t>(_mm_movemask_epi8(InAlphabet(c))));
  }

  // Out of 12 bytes; reads 16.
  MIMORA_FOR_SSE static void Encode(const char* p, char* out) {
    const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m128i bytes = _mm_shuffle_epi8(Load(p), order);
    // Multiplications shift each value to its place, by another distance than its neighbour.
    const __m128i even = _mm_mulhi_epu16(_mm_and_si128(bytes, _mm_set1_epi32(0x0FC0FC00)),
                                         _mm_set1_epi32(0x04000040));
    const __m128i odd = _mm_mullo_epi16(_mm_and_si128(bytes, _mm_set1_epi32(0x003F03F0)),
                                        _mm_set1_epi32(0x01000010));
    const __m128i values = _mm_or_si128(even, odd);
    const __m128i letters = _mm_cmpgt_epi8(_mm_set1_epi8(26), values);
    const __m128i places = _mm_or_si128(_mm_subs_epu8(values, _mm_set1_epi8(51)),
                                        _mm_and_si128(letters, _mm_set1_epi8(13)));
    const __m128i shifts = _mm_shuffle_epi8(Load(kCharacterShifts.data()), places);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_add_epi8(values, shifts));
  }

  MIMORA_FOR_SSE static MIMORA_INLINE int64_t Sum(__m128i bytes) {
    const __m128i sums = _mm_sad_epu8(bytes, _mm_setzero_si128());
    return _mm_cvtsi128_si64(sums) + _mm_extract_epi64(sums, 1);
  }

  MIMORA_FOR_SSE static int64_t CountBlocks(const char* p, int64_t blocks) {
    __m128i counts = _mm_setzero_si128();
    for (; blocks > 0; --blocks, p += kSize) counts = _mm_sub_epi8(counts, InAlphabet(Take(p)));
    return Sum(counts);
  }
};

struct Avx2 {
  static constexpr int kSize = 32;
  static constexpr int kSpare = kSize;

  struct Characters {
    __m256i text, high;
  };

  MIMORA_FOR_AVX2 static MIMORA_INLINE __m256i LoadTwice(const Halves& table) {
    return _mm256_broadcastsi128_si256(Load(table.data()));
  }

  MIMORA_FOR_AVX2 static MIMORA_INLINE Characters Take(const char* p) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    return {text, _mm256_and_si256(_mm256_srli_epi32(text, 4), _mm256_set1_epi8(0x0F))};
  }

  MIMORA_FOR_AVX2 static MIMORA_INLINE __m256i InAlphabet(Characters c) {
    const __m256i low = _mm256_and_si256(c.text, _mm256_set1_epi8(0x0F));
    const __m256i bits = _mm256_and_si256(_mm256_shuffle_epi8(LoadTwice(kHighHalves), c.high),
                                          _mm256_shuffle_epi8(LoadTwice(kLowHalves), low));
    return _mm256_cmpeq_epi8(bits, _mm256_setzero_si256());
  }

  MIMORA_FOR_AVX2 static int Decode(const char* p, char* out) {
    const Characters c = Take(p);
    const __m256i slash = _mm256_cmpeq_epi8(c.text, _mm256_set1_epi8('/'));
    const __m256i shift = _mm256_shuffle_epi8(LoadTwice(kShifts), _mm256_add_epi8(c.high, slash));
    StorePacked(_mm256_add_epi8(c.text, shift), out);
    return std::countr_one(static_cast<uint32_t>(_mm256_movemask_epi8(InAlphabet(c))));
  }

  // Out of 24 bytes; reads 28.
  MIMORA_FOR_AVX2 static void Encode(const char* p, char* out) {
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i both = _mm256_inserti128_si256(_mm256_castsi128_si256(Load(p)), Load(p + 12), 1);
    const __m256i bytes = _mm256_shuffle_epi8(both, order);
    const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(bytes, _mm256_set1_epi32(0x0FC0FC00)),
                                            _mm256_set1_epi32(0x04000040));
    const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(bytes, _mm256_set1_epi32(0x003F03F0)),
                                           _mm256_set1_epi32(0x01000010));
    const __m256i values = _mm256_or_si256(even, odd);
    const __m256i letters = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    const __m256i places = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                           _mm256_and_si256(letters, _mm256_set1_epi8(13)));
    const __m256i shifts = _mm256_shuffle_epi8(LoadTwice(kCharacterShifts), places);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_add_epi8(values, shifts));
  }

  MIMORA_FOR_AVX2 static int64_t CountBlocks(const char* p, int64_t blocks) {
    __m256i counts = _mm256_setzero_si256();
    for (; blocks > 0; --blocks, p += kSize) counts = _mm256_sub_epi8(counts, InAlphabet(Take(p)));
    return Sse::Sum(_mm256_castsi256_si128(counts)) + Sse::Sum(_mm256_extracti128_si256(counts, 1));
  }
};

}  // namespace mimora::base64

#endif  // MIMORA_HAS_VECTORS

#endif  // MIMORA_CODEC_BASE64_VECTORS_H_

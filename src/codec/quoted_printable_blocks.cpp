// Copyright (c) 2026 the mimora developers.
#include "codec/quoted_printable_blocks.h"

#include <array>
#include <bit>

#include "codec/quoted_printable_digits.h"
#include "diag/limits.h"
#include "platform/ascii.h"
#include "platform/cpu.h"

#if MIMORA_HAS_VECTORS
#include <immintrin.h>
#endif

namespace mimora {

using Progress = QuotedPrintableProgress;
using Count = QuotedPrintableCount;

#if MIMORA_HAS_VECTORS

namespace {

using platform::CpuLevel;

// One bit for every byte of a block of 64.
struct Marks {
  uint64_t equals = 0, cr = 0, lf = 0, blanks = 0, digits = 0;
};

constexpr int kBlock = 64;

struct Sse {
  static constexpr int kSize = 16;

  // Copies a block and tells which bytes are no plain text: equals signs and line ends.
  MIMORA_FOR_SSE static uint32_t Copy(const char* p, char* out) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
    const __m128i line_end = _mm_or_si128(_mm_cmpeq_epi8(text, _mm_set1_epi8('\r')),
                                          _mm_cmpeq_epi8(text, _mm_set1_epi8('\n')));
    const __m128i equals = _mm_cmpeq_epi8(text, _mm_set1_epi8('='));
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_or_si128(line_end, equals)));
  }

  MIMORA_FOR_SSE static MIMORA_INLINE uint64_t Bits(__m128i bytes) {
    return static_cast<uint32_t>(_mm_movemask_epi8(bytes));
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

  MIMORA_FOR_AVX2 static uint32_t Copy(const char* p, char* out) {
    const __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
    const __m256i line_end = _mm256_or_si256(_mm256_cmpeq_epi8(text, _mm256_set1_epi8('\r')),
                                             _mm256_cmpeq_epi8(text, _mm256_set1_epi8('\n')));
    const __m256i equals = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('='));
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_or_si256(line_end, equals)));
  }

  MIMORA_FOR_AVX2 static MIMORA_INLINE uint64_t Bits(__m256i bytes) {
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
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

// What may stand in front of a block's last byte and behind it: an escape, a line end.
constexpr int64_t kLongestMark = 3;

// The size of the line end at P: CR LF or LF, 0 when it is neither.
MIMORA_INLINE int LineEndSize(const char* p) {
  if (p[0] == '\r' && p[1] == '\n') return 2;
  return p[0] == '\n' ? 1 : 0;
}

MIMORA_INLINE Progress DecodeEscape(Progress at) {
  const int value = QuotedPrintableValue(at.in[1], at.in[2]);
  if (value >= 0) {
    *at.out = static_cast<char>(value);
    return {at.in + 3, at.out + 1};
  }
  const int line_end = LineEndSize(at.in + 1);
  return line_end == 0 ? at : Progress{at.in + 1 + line_end, at.out};
}

// How many blanks stand in front of P.
MIMORA_INLINE int64_t BlanksBefore(const char* p, const char* begin) {
  const char* blanks = p;
  while (blanks > begin && IsBlank(blanks[-1])) --blanks;
  return p - blanks;
}

MIMORA_INLINE Progress DecodeLineEnd(Progress at, const char* begin) {
  const int line_end = LineEndSize(at.in);
  const int64_t blanks = BlanksBefore(at.in, begin);
  if (line_end == 0 || blanks >= static_cast<int64_t>(kLongestHeldBlanks)) return at;
  char* out = at.out - blanks;
  out[0] = '\r';
  out[1] = '\n';
  return {at.in + line_end, out + 2};
}

template <typename Vector>
MIMORA_INLINE Progress DecodeBlocks(Progress at, const char* end, const char* out_end) {
  constexpr int64_t kNeeded = Vector::kSize + kLongestMark;
  const char* begin = at.in;
  while (end - at.in >= kNeeded && out_end - at.out >= kNeeded) {
    const uint32_t marks = Vector::Copy(at.in, at.out);
    if (marks == 0) {
      at.in += Vector::kSize;
      at.out += Vector::kSize;
      continue;
    }
    const int plain = std::countr_zero(marks);
    at.in += plain;
    at.out += plain;
    const char* mark = at.in;
    at = *mark == '=' ? DecodeEscape(at) : DecodeLineEnd(at, begin);
    if (at.in == mark) break;
  }
  const int64_t blanks = BlanksBefore(at.in, begin);
  return {at.in - blanks, at.out - blanks};
}

// ---- Counting -----------------------------------------------------------------------------------
//
// Every byte counts on its own, as one, except that the "=" of an escape counts less than nothing,
// so that its digits or line end can count as if they were text. Of a line end it is the LF that
// counts.

constexpr int64_t kEscapeCount = -1;
constexpr int64_t kSoftBreakCount = -2;

// Of a block all bytes but the last two count: what they are, one has to look further to know.
constexpr int kCounted = kBlock - 2;
constexpr uint64_t kCountedBits = ~uint64_t{0} >> 2;

// Goes back in front of what is cut by the end of what has been counted.
MIMORA_INLINE Count Uncut(Count at, const char* begin) {
  const auto before = [&](int n) { return at.in - begin >= n ? at.in[-n] : 'x'; };
  const bool escape = before(2) == '=';
  if (before(1) == '=') {
    return {at.in - 1, at.bytes - (IsLineEnd(*at.in) ? kSoftBreakCount : kEscapeCount)};
  }
  if (before(1) == '\r') {
    return escape ? Count{at.in - 2, at.bytes - kSoftBreakCount} : Count{at.in - 1, at.bytes};
  }
  if (escape && before(1) != '\n') return {at.in - 2, at.bytes - kEscapeCount - 1};
  const int64_t blanks = BlanksBefore(at.in, begin);
  return {at.in - blanks, at.bytes - blanks};
}

// The marks that the bytes of a block stand for, and those that are out of order.
struct Meaning {
  uint64_t escapes, soft_breaks, odd;
};

MIMORA_INLINE Meaning Understand(const Marks& m) {
  const uint64_t escapes = m.equals & m.digits >> 1 & m.digits >> 2;
  const uint64_t soft_breaks = m.equals & (m.lf >> 1 | (m.cr >> 1 & m.lf >> 2));
  const uint64_t odd_equals = m.equals & ~escapes & ~soft_breaks;
  const uint64_t lone_cr = m.cr & ~(m.lf >> 1);
  const uint64_t last_blanks = m.blanks & (m.cr | m.lf) >> 1;
  return {escapes, soft_breaks, (odd_equals | lone_cr | last_blanks) & kCountedBits};
}

// What the first COUNT bytes stand for.
MIMORA_INLINE int64_t DecodedSize(const Marks& marks, const Meaning& meaning, int count) {
  const uint64_t counted = (uint64_t{1} << count) - 1;
  const auto number = [counted](uint64_t bits) { return std::popcount(bits & counted); };
  return count + number(marks.lf) - number(marks.cr) +
         (kEscapeCount - 1) * number(meaning.escapes) +
         (kSoftBreakCount - 1) * number(meaning.soft_breaks);
}

template <typename Vector>
MIMORA_INLINE Count CountBlocks(const char* p, const char* end) {
  Count at = {p, 0};
  while (end - at.in >= kBlock) {
    const Marks marks = Vector::Find(at.in);
    const Meaning meaning = Understand(marks);
    if (meaning.odd != 0) {
      const int count = std::countr_zero(meaning.odd);
      at.bytes += DecodedSize(marks, meaning, count);
      at.in += count;
      break;
    }
    at.bytes += DecodedSize(marks, meaning, kCounted);
    at.in += kCounted;
  }
  return Uncut(at, p);
}

MIMORA_FOR_SSE MIMORA_FLAT Count CountSse(const char* p, const char* end) {
  return CountBlocks<Sse>(p, end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Count CountAvx2(const char* p, const char* end) {
  return CountBlocks<Avx2>(p, end);
}

MIMORA_FOR_SSE MIMORA_FLAT Progress DecodeSse(Progress at, const char* end, const char* out_end) {
  return DecodeBlocks<Sse>(at, end, out_end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Progress DecodeAvx2(Progress at, const char* end, const char* out_end) {
  return DecodeBlocks<Avx2>(at, end, out_end);
}

}  // namespace

Progress DecodeQuotedPrintableBlocks(Progress at, const char* end, const char* out_end) {
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return DecodeSse(at, end, out_end);
  return level == CpuLevel::kAvx2 ? DecodeAvx2(at, end, out_end) : at;
}

Count CountQuotedPrintableBlocks(const char* p, const char* end) {
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return CountSse(p, end);
  return level == CpuLevel::kAvx2 ? CountAvx2(p, end) : Count{p, 0};
}

#else

Progress DecodeQuotedPrintableBlocks(Progress at, const char*, const char*) { return at; }

Count CountQuotedPrintableBlocks(const char* p, const char*) { return {p, 0}; }

#endif

}  // namespace mimora

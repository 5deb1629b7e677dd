// Copyright (c) 2026 the mimora developers.
#include "codec/quoted_printable_blocks.h"

#include <algorithm>
#include <array>
#include <bit>

#include "codec/quoted_printable_digits.h"
#include "codec/quoted_printable_vectors.h"
#include "diag/limits.h"
#include "platform/ascii.h"
#include "platform/cpu.h"
#include "stream/scan.h"

namespace mimora {

using Progress = QuotedPrintableProgress;
using Count = QuotedPrintableCount;
using Lines = QuotedPrintableLines;

namespace {

using namespace quoted_printable;
using platform::CpuLevel;

// ---- Decoding -----------------------------------------------------------------------------------

// What may stand in front of a block's last byte and behind it: an escape, a line end.
constexpr int64_t kLongestMark = 3;

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
    const int plain = Vector::Copy(at.in, at.out);
    if (plain == Vector::kSize) {  // a jump that is foreseen, so that the next block need not wait
      at.in += Vector::kSize;
      at.out += Vector::kSize;
      continue;
    }
    at.in += plain;
    at.out += plain;
    const char* mark = at.in;
    at = *mark == '=' ? DecodeEscape(at) : DecodeLineEnd(at, begin);
    if (at.in == mark) break;
  }
  const int64_t blanks = BlanksBefore(at.in, begin);
  return {at.in - blanks, at.out - blanks};
}

// ---- Encoding -----------------------------------------------------------------------------------

// What is written at most for one byte: an escape and a soft break.
constexpr int64_t kMostForMark = 6;

constexpr bool IsHigh(char c) { return static_cast<uint8_t>(c) > 0x7F; }

// Takes the byte at the front, which a line cannot hold as it stands.
MIMORA_INLINE Lines EncodeMark(Lines at) {
  const int line_end = LineEndSize(at.in);
  if (line_end > 0) {
    at.EndLine();
    at.in += line_end;
    return at;
  }
  at.AddEscape(*at.in++);
  at.BreakLongLine();
  return at;
}

template <typename Vector>
MIMORA_INLINE Lines EncodeBlocks(Lines at, const char* end, const char* out_end) {
  // A byte more is read, which may be the LF of a CR LF; an escape and a soft break are written.
  while (end - at.in > Vector::kSize && out_end - at.out >= Vector::kSize + kMostForMark) {
    if (at.out == at.line && *at.in == '.') {
      at.AddEscape(*at.in++);
      continue;
    }
    const int64_t room = Lines::kLongestPlainLine + 1 - (at.out - at.line);
    const int plain = Vector::CopyPlain(at.in, at.out);
    const int64_t taken = std::min<int64_t>(plain, room);
    at.in += taken;
    at.out += taken;
    if (at.BreakLongLine() || plain == Vector::kSize) continue;
    do {  // most letters of most scripts come in companies of such bytes
      at = EncodeMark(at);
    } while (end - at.in > 1 && out_end - at.out >= kMostForMark && IsHigh(*at.in));
  }
  return at;
}

#if MIMORA_HAS_VECTORS

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
  if (IsBlank(before(1)) && IsLineEnd(*at.in)) return {at.in - 1, at.bytes};
  const int64_t blanks = BlanksBefore(at.in, begin);
  return {at.in - blanks, at.bytes - blanks};
}

// The marks that the bytes of a block stand for, and those that are out of order.
struct Meaning {
  uint64_t escapes, soft_breaks, dropped_blanks, odd;
};

// BEHIND_BLANK: 1 when a blank stands in front of the block, else 0.
MIMORA_INLINE Meaning Understand(const Marks& m, uint64_t behind_blank) {
  const uint64_t escapes = m.equals & m.digits >> 1 & m.digits >> 2;
  const uint64_t soft_breaks = m.equals & (m.lf >> 1 | (m.cr >> 1 & m.lf >> 2));
  const uint64_t odd_equals = m.equals & ~escapes & ~soft_breaks;
  const uint64_t lone_cr = m.cr & ~(m.lf >> 1);
  // The portable code takes care of several blanks.
  const uint64_t last_blanks = m.blanks & (m.cr | m.lf) >> 1;
  const uint64_t dropped_blanks = last_blanks & ~(m.blanks << 1 | behind_blank);
  const uint64_t odd_blanks = last_blanks & ~dropped_blanks;
  return {escapes, soft_breaks, dropped_blanks, (odd_equals | lone_cr | odd_blanks) & kCountedBits};
}

// What the first COUNT bytes stand for.
MIMORA_INLINE int64_t DecodedSize(const Marks& marks, const Meaning& meaning, int count) {
  const uint64_t counted = (uint64_t{1} << count) - 1;
  const auto number = [counted](uint64_t bits) { return std::popcount(bits & counted); };
  return count + number(marks.lf) - number(marks.cr) - number(meaning.dropped_blanks) +
         (kEscapeCount - 1) * number(meaning.escapes) +
         (kSoftBreakCount - 1) * number(meaning.soft_breaks);
}

template <typename Vector>
MIMORA_INLINE Count CountBlocks(const char* p, const char* end) {
  Count at = {p, 0};
  uint64_t behind_blank = 0;
  while (end - at.in >= kBlock) {
    const Marks marks = Vector::Find(at.in);
    const Meaning meaning = Understand(marks, behind_blank);
    if (meaning.odd != 0) {
      const int count = std::countr_zero(meaning.odd);
      at.bytes += DecodedSize(marks, meaning, count);
      at.in += count;
      break;
    }
    at.bytes += DecodedSize(marks, meaning, kCounted);
    at.in += kCounted;
    behind_blank = marks.blanks >> (kCounted - 1) & 1;
  }
  return Uncut(at, p);
}

// ---- Levels -------------------------------------------------------------------------------------

MIMORA_FOR_SSE MIMORA_FLAT Progress DecodeSse(Progress at, const char* end, const char* out_end) {
  return DecodeBlocks<Sse>(at, end, out_end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Progress DecodeAvx2(Progress at, const char* end, const char* out_end) {
  return DecodeBlocks<Avx2>(at, end, out_end);
}

MIMORA_FOR_SSE MIMORA_FLAT Lines EncodeSse(Lines at, const char* end, const char* out_end) {
  return EncodeBlocks<Sse>(at, end, out_end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Lines EncodeAvx2(Lines at, const char* end, const char* out_end) {
  return EncodeBlocks<Avx2>(at, end, out_end);
}

MIMORA_FOR_SSE MIMORA_FLAT Count CountSse(const char* p, const char* end) {
  return CountBlocks<Sse>(p, end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Count CountAvx2(const char* p, const char* end) {
  return CountBlocks<Avx2>(p, end);
}

#endif  // MIMORA_HAS_VECTORS

Count CountPortable(const char* p, const char* end) {
  std::array<char, 4096> bytes;
  const Progress at = DecodeBlocks<Word>({p, bytes.data()}, end, bytes.data() + bytes.size());
  return {at.in, at.out - bytes.data()};
}

}  // namespace

Progress DecodeQuotedPrintableBlocks(Progress at, const char* end, const char* out_end) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return DecodeSse(at, end, out_end);
  if (level == CpuLevel::kAvx2) return DecodeAvx2(at, end, out_end);
#endif
  return DecodeBlocks<Word>(at, end, out_end);
}

Count CountQuotedPrintableBlocks(const char* p, const char* end) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return CountSse(p, end);
  if (level == CpuLevel::kAvx2) return CountAvx2(p, end);
#endif
  return CountPortable(p, end);
}

Lines EncodeQuotedPrintableBlocks(Lines at, const char* end, const char* out_end) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return EncodeSse(at, end, out_end);
  if (level == CpuLevel::kAvx2) return EncodeAvx2(at, end, out_end);
#endif
  return EncodeBlocks<Word>(at, end, out_end);
}

}  // namespace mimora

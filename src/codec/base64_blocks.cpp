// Copyright (c) 2026 the mimora developers.
#include "codec/base64_blocks.h"

#include <algorithm>

#include "codec/base64_alphabet.h"
#include "codec/base64_vectors.h"
#include "platform/cpu.h"
#include "stream/scan.h"

namespace mimora {
namespace {

using platform::CpuLevel;

// ---- Counting -----------------------------------------------------------------------------------

constexpr uint8_t IsBetween(char c, char low, char high) {
  return static_cast<uint8_t>(c - low) <= static_cast<uint8_t>(high - low) ? 1 : 0;
}

// By comparisons instead of the table, one range at most being true: the compiler does as many
// characters at a time as fit into a vector.
constexpr uint8_t IsInAlphabet(char c) {
  return static_cast<uint8_t>(IsBetween(c, 'A', 'Z') | IsBetween(c, 'a', 'z') |
                              IsBetween(c, '0', '9') | IsBetween(c, '+', '+') |
                              IsBetween(c, '/', '/'));
}

int64_t CountPortable(const char* p, const char* end) {
  // Few enough for a counter of one byte, and a multiple of all vector sizes.
  constexpr int64_t kPiece = 192;
  int64_t count = 0;
  for (; end - p >= kPiece; p += kPiece) {
    uint8_t piece = 0;
    for (int64_t i = 0; i < kPiece; ++i) piece = static_cast<uint8_t>(piece + IsInAlphabet(p[i]));
    count += piece;
  }
  for (; p < end; ++p) count += IsInAlphabet(*p);
  return count;
}

// ---- Decoding -----------------------------------------------------------------------------------

Base64Progress DecodePortable(Base64Progress at, const char* end, const char* out_end) {
  while (end - at.in >= 4 && out_end - at.out >= 3) {
    const uint8_t a = Base64Value(at.in[0]), b = Base64Value(at.in[1]), c = Base64Value(at.in[2]),
                  d = Base64Value(at.in[3]);
    if ((a | b | c | d) & kForeignToBase64) break;
    at.out[0] = static_cast<char>(a << 2 | b >> 4);
    at.out[1] = static_cast<char>(b << 4 | c >> 2);
    at.out[2] = static_cast<char>(c << 6 | d);
    at.out += 3;
    at.in += 4;
  }
  return at;
}

// ---- Encoding -----------------------------------------------------------------------------------

MIMORA_INLINE void EndLine(char* out) {
  out[0] = '\r';
  out[1] = '\n';
}

// Whether a line can be coded with that much to spare, for vectors that reach beyond it.
MIMORA_INLINE bool HasLine(Base64Progress at, const char* end, const char* out_end,
                           Base64Lines lines, int spare) {
  return end - at.in >= lines.length / 4 * 3 + spare &&
         out_end - at.out >= lines.length + 2 + spare;
}

template <typename Coder>
MIMORA_INLINE Base64Progress EncodeLines(Base64Progress at, const char* end, const char* out_end,
                                         Base64Lines lines) {
  while (HasLine(at, end, out_end, lines, Coder::kSpare)) {
    for (int i = 0; i < lines.length; i += Coder::kSize) {
      Coder::Encode(at.in + i / 4 * 3, at.out + i);
    }
    EndLine(at.out + lines.length);
    at.in += lines.length / 4 * 3;
    at.out += lines.length + lines.line_end;
  }
  return at;
}

struct Portable {
  static constexpr int kSize = 4;
  static constexpr int kSpare = 0;

  static void Encode(const char* p, char* out) { EncodeBase64Group(p, out); }
};

#if MIMORA_HAS_VECTORS

using namespace base64;

// ---- Runs of blocks -----------------------------------------------------------------------------

template <typename Vector>
MIMORA_INLINE int64_t CountCharacters(const char* p, const char* end) {
  constexpr int64_t kMostBlocks = 255;  // counted in single bytes
  int64_t count = 0;
  while (end - p >= Vector::kSize) {
    const int64_t blocks = std::min<int64_t>((end - p) / Vector::kSize, kMostBlocks);
    count += Vector::CountBlocks(p, blocks);
    p += blocks * Vector::kSize;
  }
  return count + CountPortable(p, end);
}

// A line of that many characters, whole groups; answers whether that is what it is.
template <typename Vector>
MIMORA_INLINE bool DecodeLine(Base64Progress at, int64_t length) {
  for (; length >= Vector::kSize; length -= Vector::kSize) {
    if (Vector::Decode(at.in, at.out) != Vector::kSize) return false;
    at.in += Vector::kSize;
    at.out += Vector::kSize / 4 * 3;
  }
  return Vector::Decode(at.in, at.out) >= length;
}

// Further lines like the one that has just ended in front of AT. Where a line ends is known in
// advance here, so that the processor can be busy with several lines at a time.
template <typename Vector>
MIMORA_INLINE Base64Progress DecodeLinesAlike(Base64Progress at, const char* end,
                                              const char* out_end, int64_t length, int line_end) {
  const int64_t in_size = length + line_end;
  const int64_t out_size = length / 4 * 3;
  const char last = at.in[-line_end];
  while (end - at.in >= in_size + Vector::kSize && out_end - at.out >= out_size + Vector::kSize &&
         at.in[length] == last && at.in[in_size - 1] == '\n' && DecodeLine<Vector>(at, length)) {
    at.in += in_size;
    at.out += out_size;
  }
  return at;
}

template <typename Vector>
MIMORA_INLINE Base64Progress DecodeBlocks(Base64Progress at, const char* end, const char* out_end) {
  const char* line = at.in;
  while (end - at.in >= Vector::kSize && out_end - at.out >= Vector::kSize) {
    const int good = Vector::Decode(at.in, at.out);
    at.in += good & ~3;
    at.out += (good >> 2) * 3;
    if (good == Vector::kSize) continue;
    const int line_end = end - at.in >= 2 ? LineEndSize(at.in) : 0;
    if (line_end == 0) break;
    const int64_t length = at.in - line;
    at.in += line_end;
    at = DecodeLinesAlike<Vector>(at, end, out_end, length, line_end);
    line = at.in;
  }
  return at;
}

MIMORA_FOR_SSE MIMORA_FLAT Base64Progress DecodeSse(Base64Progress at, const char* end,
                                                    const char* out_end) {
  return DecodeBlocks<Sse>(at, end, out_end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Base64Progress DecodeAvx2(Base64Progress at, const char* end,
                                                      const char* out_end) {
  return DecodeBlocks<Avx2>(at, end, out_end);
}

MIMORA_FOR_SSE MIMORA_FLAT Base64Progress EncodeSse(Base64Progress at, const char* end,
                                                    const char* out_end, Base64Lines lines) {
  return EncodeLines<Sse>(at, end, out_end, lines);
}

MIMORA_FOR_AVX2 MIMORA_FLAT Base64Progress EncodeAvx2(Base64Progress at, const char* end,
                                                      const char* out_end, Base64Lines lines) {
  return EncodeLines<Avx2>(at, end, out_end, lines);
}

MIMORA_FOR_SSE MIMORA_FLAT int64_t CountSse(const char* p, const char* end) {
  return CountCharacters<Sse>(p, end);
}

MIMORA_FOR_AVX2 MIMORA_FLAT int64_t CountAvx2(const char* p, const char* end) {
  return CountCharacters<Avx2>(p, end);
}

#endif  // MIMORA_HAS_VECTORS

}  // namespace

Base64Progress DecodeBase64Groups(Base64Progress at, const char* end, const char* out_end) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) at = DecodeSse(at, end, out_end);
  if (level == CpuLevel::kAvx2) at = DecodeAvx2(at, end, out_end);
#endif
  return DecodePortable(at, end, out_end);
}

Base64Progress EncodeBase64Lines(Base64Progress at, const char* end, const char* out_end,
                                 Base64Lines lines) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) at = EncodeSse(at, end, out_end, lines);
  if (level == CpuLevel::kAvx2) at = EncodeAvx2(at, end, out_end, lines);
#endif
  return EncodeLines<Portable>(at, end, out_end, lines);
}

int64_t CountBase64Characters(const char* p, const char* end) {
#if MIMORA_HAS_VECTORS
  const CpuLevel level = platform::GetCpuLevel();
  if (level == CpuLevel::kSse) return CountSse(p, end);
  if (level == CpuLevel::kAvx2) return CountAvx2(p, end);
#endif
  return CountPortable(p, end);
}

}  // namespace mimora

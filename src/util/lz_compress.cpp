// Copyright (c) 2026 the mimora developers.
#include <algorithm>
#include <array>

#include "diag/log.h"
#include "util/lz.h"
#include "util/lz_match_finder.h"

namespace mimora {
namespace {

uint8_t* WriteNumber(uint32_t number, uint8_t* out) {
  int shift = 0;
  while (number >> shift >= kLzMore) shift += 7;
  for (; shift > 0; shift -= 7) *out++ = static_cast<uint8_t>(number >> shift | kLzMore);
  *out++ = number & 0x7F;
  return out;
}

// Whether the token is shorter than what it stands for.
bool SavesSpace(const LzMatch& match) {
  constexpr std::array<uint32_t, 4> kLargestOffsets = {0x7F, 0x3FFF, 0x1FFFFF, 0xFFFFFFF};
  if (match.length <= kLzTooShort) return false;
  const size_t row = match.length - kLzTooShort - 1;
  return row >= kLargestOffsets.size() || match.offset <= kLargestOffsets[row];
}

// The lowest of the bytes that occur least.
uint8_t ChooseMarker(const uint8_t* in, uint32_t size) {
  std::array<uint32_t, 256> counts = {};
  for (uint32_t i = 0; i < size; ++i) ++counts[in[i]];
  const auto unused = std::find(counts.begin(), counts.end(), 0u);
  const auto least = unused != counts.end() ? unused : std::min_element(counts.begin(), unused);
  return static_cast<uint8_t>(least - counts.begin());
}

class Compressor {
 public:
  Compressor(const uint8_t* in, uint32_t size, uint8_t* out, LzAllocate allocate)
      : in_(in), size_(size), out_(out), finder_(in, size, allocate) {}

  uint8_t* Run() {
    step_ = kChoosing;
    *out_++ = marker_ = ChooseMarker(in_, size_);
    while (size_ - position_ > kLzTooShort) {
      step_ = kSearching;
      match_ = finder_.Find(position_);
      SavesSpace(match_) ? WriteMatch() : WriteLiteral(kLiteral);
    }
    while (position_ < size_) WriteLiteral(kTail);
    return out_;
  }

  void LogException() const {
    LogError(
        "<E>: LZ_Compress 0x%x, ex_pos=%d,  insize=%d, offset=%d, maxoffset=%d, inpos=%d, "
        "bestlength=%d\n",
        static_cast<unsigned>(ExceptionCode()), step_, static_cast<int>(size_),
        static_cast<int>(match_.offset), static_cast<int>(std::min(position_, kLzWindow)),
        static_cast<int>(position_), static_cast<int>(match_.length));
  }

 private:
  // As they are known in the log.
  enum Step { kChoosing = 1, kSearching = 4, kMatch = 8, kLiteral = 9, kTail = 11 };

  void WriteMatch() {
    step_ = kMatch;
    *out_++ = marker_;
    out_ = WriteNumber(match_.offset, WriteNumber(match_.length, out_));
    position_ += match_.length;
  }

  void WriteLiteral(Step step) {
    step_ = step;
    const uint8_t byte = in_[position_++];
    *out_++ = byte;
    if (byte == marker_) *out_++ = 0;
  }

  const uint8_t* const in_;
  const uint32_t size_;
  uint8_t* out_;
  LzMatchFinder finder_;
  uint8_t marker_ = 0;
  uint32_t position_ = 0;
  LzMatch match_;
  Step step_ = kChoosing;
};

}  // namespace

uint32_t LzCompress(std::string_view in, uint8_t* out, LzAllocate allocate) {
  if (in.empty()) return 0;
  Compressor compressor(reinterpret_cast<const uint8_t*>(in.data()),
                        static_cast<uint32_t>(in.size()), out, allocate);
  try {
    return static_cast<uint32_t>(compressor.Run() - out);
  } catch (...) {
    compressor.LogException();
    throw;
  }
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include <algorithm>
#include <cstring>
#include <optional>

#include "util/lz.h"

namespace mimora {
namespace {

// Nothing when the block ends inside the number. Bits that do not fit are lost.
std::optional<uint32_t> ReadNumber(const uint8_t*& p, const uint8_t* end) {
  uint32_t number = 0;
  while (p < end) {
    const uint8_t byte = *p++;
    number = number << 7 | (byte & 0x7F);
    if (byte < kLzMore) return number;
  }
  return std::nullopt;
}

constexpr uint32_t kLargestOutput = UINT32_MAX;

// Takes the output and forgets it.
class CountedOutput {
 public:
  uint32_t Size() const { return size_; }
  void Append(const uint8_t*, uint32_t length) { size_ += length; }
  void Repeat(uint32_t, uint32_t length) { size_ += length; }

 private:
  uint32_t size_ = 0;
};

// Copies a run that is mostly short, without a call. Nothing behind it is touched.
void CopyRun(uint8_t* to, const uint8_t* from, uint32_t length) {
  const auto copy_ends = [=](auto word) {
    auto last = word;
    std::memcpy(&word, from, sizeof word);
    std::memcpy(&last, from + length - sizeof last, sizeof last);
    std::memcpy(to, &word, sizeof word);
    std::memcpy(to + length - sizeof last, &last, sizeof last);
  };
  if (length > 16) {
    std::memcpy(to, from, length);
  } else if (length >= 8) {
    copy_ends(uint64_t{});
  } else if (length >= 4) {
    copy_ends(uint32_t{});
  } else {
    for (uint32_t i = 0; i < length; ++i) to[i] = from[i];
  }
}

// memchr, which is not worth calling for what stands near.
const uint8_t* FindByte(const uint8_t* p, const uint8_t* end, uint8_t byte) {
  for (int i = 0; i < 8; ++i, ++p) {
    if (p == end || *p == byte) return p;
  }
  const void* const found = std::memchr(p, byte, static_cast<size_t>(end - p));
  return found != nullptr ? static_cast<const uint8_t*>(found) : end;
}

class WrittenOutput {
 public:
  explicit WrittenOutput(uint8_t* out) : out_(out) {}

  uint32_t Size() const { return size_; }

  void Append(const uint8_t* bytes, uint32_t length) {
    CopyRun(out_ + size_, bytes, length);
    size_ += length;
  }

  // Each byte is that of OFFSET before, be it one of those that are being written. With offset 0
  // they stay what they are.
  void Repeat(uint32_t offset, uint32_t length) {
    uint8_t* const to = out_ + size_;
    const uint8_t* const from = to - offset;
    size_ += length;
    if (offset == 0) return;
    // What is there doubles with each copy and is always a multiple of the offset.
    for (uint32_t done = 0; done < length;) {
      const uint32_t count = std::min(length - done, offset + done);
      CopyRun(to + done, from, count);
      done += count;
    }
  }

 private:
  uint8_t* const out_;
  uint32_t size_ = 0;
};

// Behind the marker. False when that is the end.
template <typename Output>
bool ReadToken(const uint8_t* marker, const uint8_t*& p, const uint8_t* end, Output& out) {
  if (p == end || out.Size() == kLargestOutput) return false;
  if (*p == 0) {
    ++p;
    out.Append(marker, 1);
    return true;
  }
  const auto length = ReadNumber(p, end);
  const auto offset = ReadNumber(p, end);
  if (!length || !offset || *offset > out.Size()) return false;
  if (*length > kLargestOutput - out.Size()) return false;
  out.Repeat(*offset, *length);
  return true;
}

template <typename Output>
uint32_t ReadBlock(std::string_view block, Output out) {
  const auto* const marker = reinterpret_cast<const uint8_t*>(block.data());
  const uint8_t* const end = marker + block.size();
  for (const uint8_t* p = marker + 1; p < end;) {
    const uint8_t* const stop = FindByte(p, end, *marker);
    const auto length = static_cast<uint32_t>(stop - p);
    out.Append(p, std::min(length, kLargestOutput - out.Size()));
    if (stop == end) break;
    p = stop + 1;
    if (!ReadToken(marker, p, end, out)) break;
  }
  return out.Size();
}

}  // namespace

uint32_t LzUncompress(std::string_view block, uint8_t* out) {
  if (block.empty()) return 0;
  return out != nullptr ? ReadBlock(block, WrittenOutput(out)) : ReadBlock(block, CountedOutput());
}

}  // namespace mimora

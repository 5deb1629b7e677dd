// Copyright (c) 2026 the mimora developers.
#include "util/lz_search.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>

#include "platform/load.h"

namespace mimora {
namespace {

using Word = uint64_t;

// How many bytes of a word that are first, or last, in memory are zero.
uint32_t FirstZeros(Word word) {
  const int bits =
      std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
  return static_cast<uint32_t>(bits) / 8;
}

uint32_t LastZeros(Word word) {
  const int bits =
      std::endian::native == std::endian::little ? std::countl_zero(word) : std::countr_zero(word);
  return static_cast<uint32_t>(bits) / 8;
}

// One search: the best match up to now, and how it gets better.
class OffsetScan {
 public:
  OffsetScan(const uint8_t* here, uint32_t left, int64_t& effort)
      : here_(here), left_(left), effort_(effort) {}

  // No match can be longer than what is left.
  bool Done() const { return best_.length >= left_ || effort_ < 0; }

  // False when it is done. It may not be done before.
  bool Try(uint32_t offset) {
    if (!MayBeBetter(offset)) return true;
    const uint32_t length = CommonLength(here_ - offset, here_, std::min(left_, offset));
    effort_ -= length;
    if (length > best_.length) best_ = {length, offset};
    return !Done();
  }

#if defined(__SSE2__)
  // The sixteen offsets from FIRST on. What is read ends where the best match ends, at the latest.
  bool TrySixteen(uint32_t first) {
    const uint8_t* const there = here_ - first - 15;
    const __m128i begins = Compare(there, here_[0]);
    const __m128i goes_on = Compare(there + best_.length, here_[best_.length]);
    auto hits = static_cast<uint32_t>(_mm_movemask_epi8(_mm_and_si128(begins, goes_on)));
    while (hits != 0) {
      const int nearest = 31 - std::countl_zero(hits);
      if (!Try(first + 15 - static_cast<uint32_t>(nearest))) return false;
      hits ^= 1u << nearest;
    }
    return true;
  }
#endif

  const LzMatch& Best() const { return best_; }

 private:
  // A better match begins and, where the best one ends, goes on like the text.
  bool MayBeBetter(uint32_t offset) const {
    const uint8_t* const there = here_ - offset;
    return there[0] == here_[0] && there[best_.length] == here_[best_.length];
  }

#if defined(__SSE2__)
  static __m128i Compare(const uint8_t* p, uint8_t byte) {
    return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
                          _mm_set1_epi8(static_cast<char>(byte)));
  }
#endif

  const uint8_t* const here_;
  const uint32_t left_;
  int64_t& effort_;
  LzMatch best_;
};

}  // namespace

uint32_t CommonLength(const uint8_t* a, const uint8_t* b, uint32_t limit) {
  uint32_t length = 0;
  for (; limit - length >= sizeof(Word); length += sizeof(Word)) {
    const Word difference = Load<Word>(a + length) ^ Load<Word>(b + length);
    if (difference != 0) return length + FirstZeros(difference);
  }
  while (length < limit && a[length] == b[length]) ++length;
  return length;
}

uint32_t CommonLengthBefore(const uint8_t* a, const uint8_t* b, uint32_t limit) {
  uint32_t length = 0;
  for (; limit - length >= sizeof(Word); length += sizeof(Word)) {
    const Word difference =
        Load<Word>(a - length - sizeof(Word)) ^ Load<Word>(b - length - sizeof(Word));
    if (difference != 0) return length + LastZeros(difference);
  }
  while (length < limit && *(a - length - 1) == *(b - length - 1)) ++length;
  return length;
}

bool SearchOffsets(const uint8_t* text, uint32_t size, uint32_t position, uint32_t farthest,
                   int64_t& effort, LzMatch& match) {
  OffsetScan scan(text + position, size - position, effort);
  bool searching = !scan.Done();
  uint32_t offset = kLzSmallestOffset;
#if defined(__SSE2__)
  for (; searching && offset + 15 <= farthest; offset += 16) searching = scan.TrySixteen(offset);
#endif
  for (; searching && offset <= farthest; ++offset) searching = scan.Try(offset);
  match = scan.Best();
  return effort >= 0;
}

}  // namespace mimora

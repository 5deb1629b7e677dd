// Copyright (c) 2026 the mimora developers.
//
// Finds the matches of a stretch of text by its sorted suffixes, quickly whatever the text.
#ifndef MIMORA_UTIL_LZ_SUFFIX_INDEX_H_
#define MIMORA_UTIL_LZ_SUFFIX_INDEX_H_

#include <array>

#include "util/lz_memory.h"
#include "util/lz_search.h"

namespace mimora {

// Is asked about positions in increasing order.
class LzSuffixIndex {
 public:
  // What is indexed at once, the window in front of it included: more than two windows.
  static constexpr uint32_t kLongestStretch = 400000;

  // How much text an index that is built for POSITION goes over.
  static uint32_t StretchLength(uint32_t size, uint32_t position);

  // Indexes the stretch that begins a window in front of POSITION. False when there is no memory:
  // the index then covers nothing.
  bool Build(const uint8_t* text, uint32_t size, uint32_t position, LzAllocate allocate);

  bool Covers(uint32_t position) const { return position - start_ < size_; }

  // Stores the match for the text from POSITION on. False when it may go on behind the stretch:
  // never at the position that the index was built for.
  bool Find(uint32_t position, LzMatch& match);

 private:
  static constexpr uint32_t kBlock = 32;
  static constexpr size_t kLevels = 2;
  // For each block of ranks, and for each block of such blocks.
  using Blocks = std::array<uint32_t*, kLevels>;

  bool Reserve(LzAllocate allocate);
  void RankSuffixes();
  void MeasureCommon();
  void AddUpTo(uint32_t position);

  template <int kStep>
  uint32_t Lengthen(uint32_t best) const;
  uint32_t LongestSquare(uint32_t period) const;
  uint32_t Nearest(uint32_t length) const;

  template <int kStep, typename Skip, typename Stop>
  uint32_t Walk(uint32_t rank, uint32_t end, Skip skip, Stop stop) const;
  template <int kStep>
  uint32_t NextInWindow(uint32_t rank) const;
  template <int kStep>
  uint32_t NextBelow(uint32_t rank, uint32_t length) const;

  LzMemory memory_;
  uint32_t* order_ = nullptr;   // positions by rank
  uint32_t* rank_ = nullptr;    // ranks by position
  uint32_t* common_ = nullptr;  // by rank: how many bytes the suffix shares with the one before
  Blocks least_common_ = {};    // the smallest of these
  Blocks latest_ = {};          // one more than the last position that was added; 0 for none

  // Positions are counted from the start of the stretch.
  const uint8_t* text_ = nullptr;
  uint32_t start_ = 0;      // of the stretch
  uint32_t size_ = 0;       // of the stretch
  uint32_t padded_ = 0;     // size_ up to whole blocks of blocks, at least one more
  bool ends_text_ = false;  // there is nothing behind the stretch
  uint32_t added_ = 0;      // how many positions are
  uint32_t here_ = 0;       // the position that is asked about
  uint32_t oldest_ = 0;     // the first one in its window
};

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_SUFFIX_INDEX_H_

// Copyright (c) 2026 the mimora developers.
//
// Finds matches through chains of the positions that begin alike: quick in usual texts.
#ifndef MIMORA_UTIL_LZ_CHAINS_H_
#define MIMORA_UTIL_LZ_CHAINS_H_

#include "util/lz_memory.h"
#include "util/lz_search.h"

namespace mimora {

// Is asked about positions in increasing order.
class LzChains {
 public:
  // A position that can be asked about has so many bytes left.
  static constexpr uint32_t kLeastLeft = 8;

  LzChains(const uint8_t* text, uint32_t size);

  // False when there is no memory.
  bool Prepare(LzAllocate allocate);

  // How many entries Prepare and the next answer have to make.
  uint32_t Backlog(uint32_t position) const;

  // Stores the match for the text from POSITION on; one that would not save space may be left out.
  // EFFORT shrinks with each look at a candidate; when it is used up the answer is false, and the
  // match not known.
  bool Find(uint32_t position, int64_t& effort, LzMatch& match);

 private:
  static constexpr uint32_t kTables = 4;

  // Of the text at a position the first bytes count, its key. Positions are kept plus one; 0 stands
  // for none.
  struct Chain {
    uint64_t Key(const uint8_t* p) const;

    uint32_t key_bytes = 0;
    uint32_t* heads = nullptr;  // by hash value of the key: the last position that has it
    uint32_t* links = nullptr;  // by position, as far as there are places: the one before
  };

  // More than a window, or than the text.
  uint32_t TableSize() const { return 1u << bits_; }
  uint32_t& Last(const Chain& chain, uint32_t position) const;
  void AddUpTo(uint32_t position);
  template <typename Visit>
  void ForEach(const Chain& chain, Visit visit) const;
  bool FindLongest(int64_t& effort, LzMatch& match) const;
  bool FindFive(int64_t& effort, LzMatch& match) const;

  const uint8_t* const text_;
  const uint32_t size_;
  const int bits_;
  LzMemory memory_;
  Chain five_, six_;
  uint32_t added_ = 0;   // positions in front of it are in the chains
  uint32_t here_ = 0;    // the position that is asked about
  uint32_t oldest_ = 0;  // the first one in its window
};

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_CHAINS_H_

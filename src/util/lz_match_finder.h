// Copyright (c) 2026 the mimora developers.
//
// Finds the matches of a text for the compressor, and decides how.
#ifndef MIMORA_UTIL_LZ_MATCH_FINDER_H_
#define MIMORA_UTIL_LZ_MATCH_FINDER_H_

#include "util/lz_chains.h"
#include "util/lz_suffix_index.h"

namespace mimora {

// Is asked about positions in increasing order, each with at least one byte left.
//
// Three ways lead to the same match. Chains are the quickest for usual texts, but there are texts
// in which they are endless; so their looks are counted, and where they are too many the sorted
// suffixes of the next stretch of text take over, for which all texts are alike. Both have to be
// prepared, which only pays when there is something to find: an account is kept of what the plain
// search would have taken up to now, and they are prepared when that is more. Until then, and when
// there is no memory, the plain search finds the match.
class LzMatchFinder {
 public:
  LzMatchFinder(const uint8_t* text, uint32_t size, LzAllocate allocate);

  // A match that would not save space may be left out.
  LzMatch Find(uint32_t position);

 private:
  bool AskChains(uint32_t position, LzMatch& match);
  bool AskIndex(uint32_t position, LzMatch& match);
  bool Search(uint32_t position, LzMatch& match);
  int64_t IndexPrice(uint32_t position) const;

  const uint8_t* const text_;
  const uint32_t size_;
  const LzAllocate allocate_;
  LzChains chains_;
  LzSuffixIndex index_;
  bool may_prepare_;      // there is memory, and text for which it pays
  int64_t account_ = 0;   // in looks of the plain search at one offset
  int64_t patience_ = 0;  // with the chains, in their looks
  uint32_t last_ = 0;     // the position that the chains were asked about
};

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_MATCH_FINDER_H_

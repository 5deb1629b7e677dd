// Copyright (c) 2026 the mimora developers.
//
// Sorts the suffixes of a text in linear time, whatever the text.
#ifndef MIMORA_UTIL_SUFFIX_ARRAY_H_
#define MIMORA_UTIL_SUFFIX_ARRAY_H_

#include <algorithm>
#include <cstdint>

namespace mimora {

// Entries that SortSuffixes needs to work.
constexpr uint32_t SuffixScratchSize(uint32_t size) { return std::max<uint32_t>(size, 2 * 256); }

// Stores in ORDER the positions of all suffixes of the text, the smallest suffix first. One that
// another begins with is smaller than that one. SCRATCH has SuffixScratchSize(size) entries.
void SortSuffixes(const uint8_t* text, uint32_t size, uint32_t* order, uint32_t* scratch);

}  // namespace mimora

#endif  // MIMORA_UTIL_SUFFIX_ARRAY_H_

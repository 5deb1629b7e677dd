// Copyright (c) 2026 the mimora developers.
//
// What the ways to find a match have in common, and the plain one, which looks at every offset.
#ifndef MIMORA_UTIL_LZ_SEARCH_H_
#define MIMORA_UTIL_LZ_SEARCH_H_

#include <cstdint>

namespace mimora {

constexpr uint32_t kLzWindow = 100000;     // the largest offset
constexpr uint32_t kLzSmallestOffset = 3;  // the smallest that is looked at
constexpr uint32_t kLzTooShort = 3;        // the longest match that is none

// A match of four bytes from further away takes as much space as they do.
constexpr uint32_t kLzLargestOffsetOfFour = 0x7F;

// The longest match, and among equally long ones the nearest. It is never longer than its offset.
struct LzMatch {
  uint32_t length = kLzTooShort;
  uint32_t offset = 0;  // 0: there is no match

  bool operator==(const LzMatch&) const = default;
};

// How many bytes are alike from A and from B on, up to LIMIT.
uint32_t CommonLength(const uint8_t* a, const uint8_t* b, uint32_t limit);

// The same in front of A and of B, backwards.
uint32_t CommonLengthBefore(const uint8_t* a, const uint8_t* b, uint32_t limit);

// Finds the match for the text from POSITION on, of which at least one byte is left, among the
// offsets up to FARTHEST. EFFORT shrinks by the bytes that are compared; when it is used up the
// answer is false, and the match not known.
bool SearchOffsets(const uint8_t* text, uint32_t size, uint32_t position, uint32_t farthest,
                   int64_t& effort, LzMatch& match);

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_SEARCH_H_

// Copyright (c) 2026 the mimora developers.
#include "util/lz_suffix_index.h"

#include <algorithm>

#include "util/suffix_array.h"

namespace mimora {
namespace {

constexpr uint32_t kNone = UINT32_MAX;

}  // namespace

uint32_t LzSuffixIndex::StretchLength(uint32_t size, uint32_t position) {
  return std::min(size - position + std::min(position, kLzWindow), kLongestStretch);
}

bool LzSuffixIndex::Build(const uint8_t* text, uint32_t size, uint32_t position,
                          LzAllocate allocate) {
  static_assert(kLongestStretch > 2 * kLzWindow);
  start_ = position - std::min(position, kLzWindow);
  text_ = text + start_;
  size_ = StretchLength(size, position);
  ends_text_ = size - start_ == size_;
  added_ = 0;
  if (!Reserve(allocate)) {
    size_ = 0;
    return false;
  }
  RankSuffixes();
  MeasureCommon();
  return true;
}

bool LzSuffixIndex::Reserve(LzAllocate allocate) {
  constexpr uint32_t kBlockOfBlocks = kBlock * kBlock;
  padded_ = (size_ / kBlockOfBlocks + 1) * kBlockOfBlocks;
  const uint32_t blocks = padded_ / kBlock, blocks_of_blocks = padded_ / kBlockOfBlocks;
  if (!memory_.Reserve(3 * padded_ + 2 * (blocks + blocks_of_blocks), allocate)) return false;
  order_ = memory_.Entries();
  rank_ = order_ + padded_;
  common_ = rank_ + padded_;
  least_common_ = {common_ + padded_, common_ + padded_ + blocks};
  latest_ = {least_common_[1] + blocks_of_blocks, least_common_[1] + blocks_of_blocks + blocks};
  std::fill_n(latest_[0], blocks + blocks_of_blocks, 0u);
  return true;
}

void LzSuffixIndex::RankSuffixes() {
  static_assert(kBlock * kBlock >= SuffixScratchSize(0), "the ranks' place is the scratch");
  SortSuffixes(text_, size_, order_, rank_);
  for (uint32_t r = 0; r < size_; ++r) rank_[order_[r]] = r;
}

// In the order of the text, since a suffix shares at most one byte less with its neighbour than
// the one that begins a byte earlier.
void LzSuffixIndex::MeasureCommon() {
  uint32_t common = 0;
  for (uint32_t i = 0; i < size_; ++i) {
    const uint32_t rank = rank_[i];
    if (rank == 0) {
      common_[rank] = common = 0;
      continue;
    }
    const uint32_t neighbour = order_[rank - 1];
    const uint32_t limit = size_ - std::max(i, neighbour) - common;
    common += CommonLength(text_ + i + common, text_ + neighbour + common, limit);
    common_[rank] = common;
    if (common > 0) --common;
  }
  std::fill(common_ + size_, common_ + padded_, 0u);
  const uint32_t* below = common_;
  uint32_t count = padded_;
  for (uint32_t* const level : least_common_) {
    count /= kBlock;
    for (uint32_t b = 0; b < count; ++b, below += kBlock)
      level[b] = *std::min_element(below, below + kBlock);
    below = level;
  }
}

void LzSuffixIndex::AddUpTo(uint32_t position) {
  for (; added_ < position; ++added_) {
    const uint32_t rank = rank_[added_];
    latest_[0][rank / kBlock] = latest_[1][rank / kBlock / kBlock] = added_ + 1;
  }
}

// Goes from RANK up, or down, to the first one that STOP tells to stop at, and passes the blocks
// that SKIP tells to. SKIP is given the level, the block, and the rank behind it.
template <int kStep, typename Skip, typename Stop>
uint32_t LzSuffixIndex::Walk(uint32_t rank, uint32_t end, Skip skip, Stop stop) const {
  const auto pass = [&](size_t level, uint32_t block_size) {
    if (rank % block_size != (kStep > 0 ? 0 : block_size - 1)) return false;
    if (!skip(level, rank / block_size, rank + block_size)) return false;
    rank += static_cast<uint32_t>(kStep) * block_size;
    return true;
  };
  while (rank < end) {  // from 0 down it is the largest number
    if (pass(1, kBlock * kBlock) || pass(0, kBlock)) continue;
    if (stop(rank)) return rank;
    rank += static_cast<uint32_t>(kStep);
  }
  return kNone;
}

// The next rank of a position that lies in the window.
template <int kStep>
uint32_t LzSuffixIndex::NextInWindow(uint32_t rank) const {
  return Walk<kStep>(
      rank + static_cast<uint32_t>(kStep), size_,
      [this](size_t level, uint32_t block, uint32_t) { return latest_[level][block] <= oldest_; },
      [this](uint32_t r) { return order_[r] - oldest_ < here_ - oldest_; });
}

// The next rank, this one included, that shares less than LENGTH with the one before.
template <int kStep>
uint32_t LzSuffixIndex::NextBelow(uint32_t rank, uint32_t length) const {
  return Walk<kStep>(
      rank, padded_,
      [&](size_t level, uint32_t block, uint32_t) { return least_common_[level][block] >= length; },
      [&](uint32_t r) { return common_[r] < length; });
}

// An answer takes time in proportion to the length of the match, which the next question lies
// behind, and a few walks over ranks besides. A walk passes on each level at most the ends of two
// blocks, and all blocks of blocks.
bool LzSuffixIndex::Find(uint32_t position, LzMatch& match) {
  here_ = position - start_;
  oldest_ = here_ - std::min(here_, kLzWindow);
  AddUpTo(here_);
  match = {};
  const uint32_t length = Lengthen<1>(Lengthen<-1>(match.length));
  if (length >= size_ - here_ && !ends_text_) return false;
  if (length > match.length) match = {length, here_ - Nearest(length)};
  return true;
}

// Goes through the positions in the window whose suffixes are greater, or smaller, than the one
// here, the most alike first: what they share with the text here never grows on the way. So it is
// over with the first that shares no more than the best match is long, and with the first whose
// match ends at a difference, which none behind it can surpass.
//
// All others share more than they are far away, and a match must not be longer than its offset. So
// the text here is periodic with their offsets. The smallest of these is met first, since the
// suffixes that begin one, two, three periods before are in this order, and the others are its
// multiples, since the text here would else have a smaller period still. LongestSquare tells at
// once how far the multiples lead, and then they are passed without comparing. They are no more
// than the match is long, and each comparison is at most as long as the match.
template <int kStep>
uint32_t LzSuffixIndex::Lengthen(uint32_t best) const {
  const uint32_t left = size_ - here_;
  uint32_t period = 1, settled = 0;
  uint32_t rank = rank_[here_];
  if (common_[kStep > 0 ? rank + 1 : rank] <= best) return best;
  while ((rank = NextInWindow<kStep>(rank)) != kNone) {
    const uint32_t there = order_[rank];
    const uint32_t distance = here_ - there;
    if (distance <= settled && distance % period == 0) continue;
    const uint32_t limit = std::min(left, std::max(distance, best + 1));
    const uint32_t common = CommonLength(text_ + there, text_ + here_, limit);
    if (common <= best) break;
    if (common < distance) return common;
    period = distance;
    settled = LongestSquare(period);
    best = std::max(best, settled);
  }
  return best;
}

// How long a match can be that ends where it meets the text here, and is a multiple of a period:
// the same text twice, in front of this position and from it on.
uint32_t LzSuffixIndex::LongestSquare(uint32_t period) const {
  const uint8_t* const here = text_ + here_;
  const uint32_t behind = CommonLength(here - period, here, std::min(size_ - here_, kLzWindow));
  const uint32_t room = here_ - oldest_ - period;
  const uint32_t before = CommonLengthBefore(here - period, here, std::min(room, behind));
  const uint32_t length = std::min(behind, before + period);
  return length - length % period;
}

// The last position that shares LENGTH bytes, at least as far away as that.
uint32_t LzSuffixIndex::Nearest(uint32_t length) const {
  const uint32_t rank = rank_[here_];
  const uint32_t end = NextBelow<1>(rank + 1, length);
  const uint32_t last = here_ - length;
  uint32_t best = oldest_;  // one more than the position
  const auto settle = [&best, last](uint32_t latest) {
    if (latest > best && latest <= last + 1) best = latest;
    return latest <= best;
  };
  Walk<1>(
      NextBelow<-1>(rank, length), end,
      [&](size_t level, uint32_t block, uint32_t behind) {
        return behind <= end && settle(latest_[level][block]);
      },
      [&](uint32_t r) {
        settle(order_[r] + 1);
        return false;
      });
  return best - 1;
}

}  // namespace mimora

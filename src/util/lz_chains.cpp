// Copyright (c) 2026 the mimora developers.
#include "util/lz_chains.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/load.h"

namespace mimora {

uint64_t LzChains::Chain::Key(const uint8_t* p) const {
  const uint32_t others = 64 - 8 * key_bytes;
  const uint64_t word = Load<uint64_t>(p);
  return std::endian::native == std::endian::little ? word << others : word >> others;
}

uint32_t& LzChains::Last(const Chain& chain, uint32_t position) const {
  constexpr uint64_t kSpread = 0x9E3779B97F4A7C15;
  return chain.heads[chain.Key(text_ + position) * kSpread >> (64 - bits_)];
}

LzChains::LzChains(const uint8_t* text, uint32_t size)
    : text_(text), size_(size), bits_(static_cast<int>(std::bit_width(std::min(size, kLzWindow)))) {
  five_.key_bytes = 5;
  six_.key_bytes = 6;
}

bool LzChains::Prepare(LzAllocate allocate) {
  if (six_.links != nullptr) return true;
  if (!memory_.Reserve(kTables * TableSize(), allocate)) return false;
  uint32_t* next = memory_.Entries();
  for (uint32_t** const table : {&five_.heads, &six_.heads, &five_.links, &six_.links}) {
    *table = next;
    next += TableSize();
  }
  std::fill(five_.heads, five_.links, 0u);
  return true;
}

uint32_t LzChains::Backlog(uint32_t position) const {
  const uint32_t tables = six_.links != nullptr ? 0 : kTables;
  return tables * TableSize() + std::min(position - added_, kLzWindow);
}

void LzChains::AddUpTo(uint32_t position) {
  for (added_ = std::max(added_, oldest_); added_ < position; ++added_) {
    for (const Chain* const chain : {&five_, &six_}) {
      uint32_t& last = Last(*chain, added_);
      chain->links[added_ % TableSize()] = last;
      last = added_ + 1;
    }
  }
}

// The nearest first, as far as the window goes, while VISIT answers true.
template <typename Visit>
void LzChains::ForEach(const Chain& chain, Visit visit) const {
  uint32_t next = Last(chain, here_);
  while (next > oldest_ && visit(next - 1)) next = chain.links[(next - 1) % TableSize()];
}

bool LzChains::Find(uint32_t position, int64_t& effort, LzMatch& match) {
  here_ = position;
  oldest_ = position - std::min(position, kLzWindow);
  AddUpTo(position);
  match = {};
  if (!FindFive(effort, match)) return false;
  if (match.offset != 0) return FindLongest(effort, match);
  return SearchOffsets(text_, size_, position, std::min(position, kLzLargestOffsetOfFour), effort,
                       match);
}

// From six bytes on.
bool LzChains::FindLongest(int64_t& effort, LzMatch& match) const {
  constexpr uint32_t kBytesPerLook = 16;
  const uint8_t* const here = text_ + here_;
  const uint32_t left = size_ - here_;
  uint32_t best = six_.key_bytes - 1;
  ForEach(six_, [&](uint32_t there) {
    if (--effort < 0) return false;
    const uint32_t offset = here_ - there;
    // The last four bytes that a better match has tell most candidates apart.
    if (offset <= best) return true;
    if (std::memcmp(text_ + there + best - 3, here + best - 3, 4) != 0) return true;
    const uint32_t length = CommonLength(text_ + there, here, std::min(left, offset));
    effort -= length / kBytesPerLook;
    if (length > best) {
      best = length;
      match = {length, offset};
    }
    return best < left;
  });
  return effort >= 0;
}

bool LzChains::FindFive(int64_t& effort, LzMatch& match) const {
  const uint64_t key = five_.Key(text_ + here_);
  ForEach(five_, [&](uint32_t there) {
    if (--effort < 0) return false;
    const uint32_t offset = here_ - there;
    if (offset < five_.key_bytes || five_.Key(text_ + there) != key) return true;
    match = {five_.key_bytes, offset};
    return false;
  });
  return effort >= 0;
}

}  // namespace mimora

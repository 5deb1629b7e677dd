// Copyright (c) 2026 the mimora developers.
#include "util/lz_match_finder.h"

#include <algorithm>

namespace mimora {
namespace {

// What things cost, in looks of a plain search that takes one byte at a time. Ours takes sixteen.
constexpr int64_t kLooksPerEntry = 16;  // of the chains
constexpr int64_t kLooksPerLink = 8;
constexpr int64_t kLooksPerIndexedByte = 128;
constexpr int64_t kBytesPerLook = 2;

// A text that is searched before its chains would pay.
constexpr uint32_t kShortText = 128;

// The chains may take about as long as the index would.
constexpr int64_t kPatiencePerByte = 16;
constexpr int64_t kPatienceInAdvance = 5;

int64_t MostPatience(uint32_t size) {
  return kPatienceInAdvance * std::min(size, LzSuffixIndex::kLongestStretch);
}

}  // namespace

LzMatchFinder::LzMatchFinder(const uint8_t* text, uint32_t size, LzAllocate allocate)
    : text_(text),
      size_(size),
      allocate_(allocate),
      chains_(text, size),
      may_prepare_(size > kShortText),
      patience_(MostPatience(size)) {}

LzMatch LzMatchFinder::Find(uint32_t position) {
  LzMatch match;
  account_ += std::min(position, kLzWindow);
  if (index_.Covers(position) && index_.Find(position, match)) return match;
  // For so few bytes nothing is prepared as fast as the plain search is over.
  if (size_ - position < LzChains::kLeastLeft) may_prepare_ = false;
  if (may_prepare_ && (AskChains(position, match) || AskIndex(position, match))) return match;
  while (!Search(position, match)) {
    if (AskIndex(position, match)) break;
  }
  return match;
}

bool LzMatchFinder::AskChains(uint32_t position, LzMatch& match) {
  const int64_t price = kLooksPerEntry * chains_.Backlog(position);
  if (account_ < price) return false;
  may_prepare_ = chains_.Prepare(allocate_);
  if (!may_prepare_) return false;
  patience_ = std::min(patience_ + kPatiencePerByte * (position - last_), MostPatience(size_));
  last_ = position;
  const int64_t before = patience_;
  const bool found = chains_.Find(position, patience_, match);
  account_ -= price + kLooksPerLink * (before - patience_);
  return found;
}

bool LzMatchFinder::AskIndex(uint32_t position, LzMatch& match) {
  const int64_t price = IndexPrice(position);
  if (account_ < price) return false;
  may_prepare_ = index_.Build(text_, size_, position, allocate_);
  account_ -= price;
  return may_prepare_ && index_.Find(position, match);
}

// False when it would take longer than an index.
bool LzMatchFinder::Search(uint32_t position, LzMatch& match) {
  const int64_t most = may_prepare_ ? kBytesPerLook * (IndexPrice(position) - account_) : INT64_MAX;
  int64_t left = most;
  const bool found =
      SearchOffsets(text_, size_, position, std::min(position, kLzWindow), left, match);
  account_ += (most - left) / kBytesPerLook + 1;
  return found;
}

int64_t LzMatchFinder::IndexPrice(uint32_t position) const {
  return kLooksPerIndexedByte * LzSuffixIndex::StretchLength(size_, position);
}

}  // namespace mimora

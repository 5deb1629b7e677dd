// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_MIME_BODYPART_ARENA_H_
#define MIMORA_MIME_BODYPART_ARENA_H_

#include <cstddef>
#include <forward_list>
#include <new>

#include "mime/bodypart.h"

namespace mimora {

// Room for the parts of a parsed tree, which come one by one and mostly go together. It must live
// longer than they do.
class BodypartArena {
 public:
  BodypartPtr Make(Bodypart* parent) {
    if (free_ == 0) {
      blocks_.emplace_front();
      free_ = kPartsInBlock;
    }
    return BodypartPtr(new (blocks_.front().slots[--free_]) Bodypart(parent, true));
  }

  // Takes the blocks of the other, with the parts in them.
  void TakeOver(BodypartArena& other) {
    other.free_ = 0;
    blocks_.splice_after(blocks_.before_begin(), other.blocks_);
  }

 private:
  static constexpr size_t kPartsInBlock = 8;

  struct Block {
    Block() {}  // leaves the room as it is
    alignas(Bodypart) std::byte slots[kPartsInBlock][sizeof(Bodypart)];
  };

  std::forward_list<Block> blocks_;
  size_t free_ = 0;  // slots of the first block
};

}  // namespace mimora

#endif  // MIMORA_MIME_BODYPART_ARENA_H_

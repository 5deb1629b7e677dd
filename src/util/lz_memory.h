// Copyright (c) 2026 the mimora developers.
//
// Working memory that need not be had.
#ifndef MIMORA_UTIL_LZ_MEMORY_H_
#define MIMORA_UTIL_LZ_MEMORY_H_

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace mimora {

// Like malloc, also in what it answers when there is no memory. free takes it back.
using LzAllocate = void* (*)(size_t);

// A block that grows when it has to; what was in it is then lost.
class LzMemory {
 public:
  bool Reserve(size_t entries, LzAllocate allocate) {
    if (entries <= entries_) return true;
    block_.reset();
    block_.reset(static_cast<uint32_t*>(allocate(entries * sizeof(uint32_t))));
    entries_ = block_ != nullptr ? entries : 0;
    return block_ != nullptr;
  }

  uint32_t* Entries() const { return block_.get(); }

 private:
  struct Free {
    void operator()(uint32_t* block) const { std::free(block); }
  };

  std::unique_ptr<uint32_t[], Free> block_;
  size_t entries_ = 0;
};

}  // namespace mimora

#endif  // MIMORA_UTIL_LZ_MEMORY_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_PLATFORM_LOAD_H_
#define MIMORA_PLATFORM_LOAD_H_

#include <cstring>

namespace mimora {

// The bytes at P, which need not be aligned, as one number in the order of the memory.
template <typename Word>
Word Load(const void* p) {
  Word word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

}  // namespace mimora

#endif  // MIMORA_PLATFORM_LOAD_H_

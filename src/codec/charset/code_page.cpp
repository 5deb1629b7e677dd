// Copyright (c) 2026 the mimora developers.
#include "codec/charset/code_page.h"

#include <algorithm>

namespace mimora {
namespace {

// Other numbers of the same tables.
uint32_t NumberOfTables(uint32_t number) {
  switch (number) {
    case 38598:
      return 28598;
    case 51936:
      return 936;
    default:
      return number;
  }
}

}  // namespace

const CodePage* FindCodePage(uint32_t number) {
  number = NumberOfTables(number);
  const CodePage* const end = kCodePages + kCodePageCount;
  const CodePage* const page =
      std::lower_bound(kCodePages, end, number,
                       [](const CodePage& at, uint32_t wanted) { return at.number < wanted; });
  return page != end && page->number == number ? page : nullptr;
}

}  // namespace mimora

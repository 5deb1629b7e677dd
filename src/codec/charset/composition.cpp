// Copyright (c) 2026 the mimora developers.
#include "codec/charset/composition.h"

#include <algorithm>
#include <span>

namespace mimora {
namespace {

constexpr char16_t kFirstMark = 0x0300;
constexpr char16_t kFirstComposed = 0x00C0;

std::span<const Composition> ByMarkRows() { return {kCompositionsByMark, kCompositionCount}; }

}  // namespace

bool IsMark(char16_t unit) {
  if (unit < kFirstMark) return false;
  const auto row = std::ranges::lower_bound(ByMarkRows(), unit, {}, &Composition::mark);
  return row != ByMarkRows().end() && row->mark == unit;
}

char16_t Compose(char16_t letter, char16_t mark) {
  const std::tuple wanted(mark, letter);
  const auto row = std::ranges::lower_bound(ByMarkRows(), wanted, {}, ByMark);
  return row != ByMarkRows().end() && ByMark(*row) == wanted ? row->composed : char16_t{0};
}

char16_t* Decompose(char16_t unit, char16_t* wide) {
  const std::span rows(kCompositionsByComposed, kCompositionCount);
  char16_t marks[kLongestDecomposition];
  size_t count = 0;
  while (unit >= kFirstComposed && count + 1 < kLongestDecomposition) {
    const auto row = std::ranges::lower_bound(rows, unit, {}, &Composition::composed);
    if (row == rows.end() || row->composed != unit) break;
    marks[count++] = row->mark;
    unit = row->letter;
  }
  *wide++ = unit;
  while (count > 0) *wide++ = marks[--count];
  return wide;
}

}  // namespace mimora

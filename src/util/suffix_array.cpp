// Copyright (c) 2026 the mimora developers.
#include "util/suffix_array.h"

#include <utility>

namespace mimora {
namespace {

constexpr uint32_t kNone = UINT32_MAX;

// Induced sorting. A suffix is of type S when it is smaller than the one that begins a symbol
// later, else of type L, and it is a "valley" when it is S behind an L. Once the valleys are in
// order, one pass up and one pass down put all others into place. The order of the valleys comes
// from the order of the pieces of text between them: where that leaves ties, from the suffixes of
// the text that has these pieces as its symbols. It is at most half as long, so the recursion is
// never deeper than a size has bits, and all levels together are linear.
template <typename Symbol>
class SuffixSorter {
 public:
  // Symbols are smaller than ALPHABET. SCRATCH has room for twice as many entries.
  SuffixSorter(const Symbol* text, uint32_t size, uint32_t alphabet, uint32_t* order,
               uint32_t* scratch)
      : text_(text),
        size_(size),
        alphabet_(alphabet),
        order_(order),
        counts_(scratch),
        heads_(scratch + alphabet) {}

  void Sort() {
    if (size_ == 0) return;
    CountSymbols();
    PlaceValleys();
    Induce();
    const uint32_t valleys = GatherValleys();
    const uint32_t names = NameValleys(valleys);
    SortValleys(valleys, names);
    CountSymbols();
    SpreadValleys(valleys);
    Induce();
  }

 private:
  void CountSymbols() {
    std::fill_n(counts_, alphabet_, 0u);
    for (uint32_t i = 0; i < size_; ++i) ++counts_[text_[i]];
  }

  // Where the suffixes of each first symbol begin.
  void SetHeadsToStarts() {
    uint32_t sum = 0;
    for (uint32_t c = 0; c < alphabet_; ++c) {
      heads_[c] = sum;
      sum += counts_[c];
    }
  }

  void SetHeadsToEnds() {
    uint32_t sum = 0;
    for (uint32_t c = 0; c < alphabet_; ++c) heads_[c] = sum += counts_[c];
  }

  // From the last valley to the first.
  template <typename Visit>
  void ForEachValley(Visit visit) const {
    bool behind_is_s = false;
    for (uint32_t i = size_ - 1; i-- > 0;) {
      const bool is_s = text_[i] < text_[i + 1] || (text_[i] == text_[i + 1] && behind_is_s);
      if (behind_is_s && !is_s) visit(i + 1);
      behind_is_s = is_s;
    }
  }

  void PlaceValleys() {
    std::fill_n(order_, size_, kNone);
    SetHeadsToEnds();
    ForEachValley([this](uint32_t at) { order_[--heads_[text_[at]]] = at; });
  }

  // Puts all suffixes into place, given the valleys at the ends of their symbols' ranges. What is
  // behind an empty place or position 0 is none of the text's, which one comparison tells.
  void Induce() {
    SetHeadsToStarts();
    order_[heads_[text_[size_ - 1]]++] = size_ - 1;
    for (uint32_t i = 0; i < size_; ++i) {
      const uint32_t before = order_[i] - 1;
      if (before >= size_ - 1) continue;
      const Symbol c = text_[before];
      if (c >= text_[before + 1]) order_[heads_[c]++] = before;
    }
    SetHeadsToEnds();
    for (uint32_t i = size_; i-- > 0;) {
      const uint32_t before = order_[i] - 1;
      if (before >= size_ - 1) continue;
      const Symbol c = text_[before], next = text_[before + 1];
      // Of two equal symbols the first is S when the second is: when that is in the S part.
      if (c < next || (c == next && i >= heads_[c])) order_[--heads_[c]] = before;
    }
  }

  // Moves the valleys to the front, in their order; the heads are the starts of the S parts.
  uint32_t GatherValleys() {
    uint32_t count = 0;
    for (uint32_t i = 0; i < size_; ++i) {
      const uint32_t at = order_[i];
      const Symbol c = text_[at];
      if (i >= heads_[c] && at > 0 && text_[at - 1] > c) order_[count++] = at;
    }
    return count;
  }

  // Leaves behind the valleys the names of their pieces, in the order of the text. A piece includes
  // the first symbol of the next; the last one equals no other.
  uint32_t NameValleys(uint32_t count) {
    uint32_t* const names = order_ + count;  // of the valley at i in names[i / 2]: never two
    std::fill(names, order_ + size_, kNone);
    uint32_t next = kNone;
    ForEachValley([&](uint32_t at) {
      names[at / 2] = next == kNone ? 0 : next - at + 1;
      next = at;
    });
    uint32_t used = 0, last = 0, last_length = 0;
    for (uint32_t i = 0; i < count; ++i) {
      const uint32_t at = order_[i];
      const uint32_t length = std::exchange(names[at / 2], 0u);
      const bool same = length != 0 && length == last_length &&
                        std::equal(text_ + at, text_ + at + length, text_ + last);
      if (!same) ++used;
      names[at / 2] = used - 1;
      last = at;
      last_length = length;
    }
    return used;
  }

  void SortValleys(uint32_t count, uint32_t names) {
    uint32_t* const pieces = order_ + size_ - count;
    for (uint32_t i = size_, to = size_; i-- > count;) {
      if (order_[i] != kNone) order_[--to] = order_[i];
    }
    if (names < count) {
      SuffixSorter<uint32_t>(pieces, count, names, order_, counts_).Sort();
    } else {
      for (uint32_t i = 0; i < count; ++i) order_[pieces[i]] = i;
    }
    uint32_t* to = order_ + size_;
    ForEachValley([&to](uint32_t at) { *--to = at; });
    for (uint32_t i = 0; i < count; ++i) order_[i] = pieces[order_[i]];
  }

  void SpreadValleys(uint32_t count) {
    std::fill(order_ + count, order_ + size_, kNone);
    SetHeadsToEnds();
    for (uint32_t i = count; i-- > 0;) {
      const uint32_t at = std::exchange(order_[i], kNone);
      order_[--heads_[text_[at]]] = at;
    }
  }

  const Symbol* const text_;
  const uint32_t size_;
  const uint32_t alphabet_;
  uint32_t* const order_;
  uint32_t* const counts_;  // of each symbol
  uint32_t* const heads_;   // where the next suffix with this first symbol goes
};

}  // namespace

void SortSuffixes(const uint8_t* text, uint32_t size, uint32_t* order, uint32_t* scratch) {
  SuffixSorter<uint8_t>(text, size, 256, order, scratch).Sort();
}

}  // namespace mimora

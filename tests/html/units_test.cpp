// Copyright (c) 2026 the mimora developers.
#include "html/units.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace mimora::testing {
namespace {

// Units that share a byte with those that are wanted, at every alignment and length, in buffers of
// their own, so that the sanitizer sees a read beyond the end.
TEST(FindEither, AnswersAsASimpleSearch) {
  constexpr char16_t kUnits[] = {'<', '&', 0x3C00, 0x2626, 0x263C, 'x', 'x', 'x', 'x', 'x', 'x'};
  std::mt19937 random(1);
  for (int round = 0; round < 20000; ++round) {
    std::vector<char16_t> text(random() % 40);
    for (char16_t& unit : text) unit = kUnits[random() % std::size(kUnits)];
    const char16_t* const end = text.data() + text.size();
    for (const char16_t other : {u'<', u'&'}) {
      const auto want = std::find_if(text.begin(), text.end(),
                                     [=](char16_t c) { return c == '<' || c == other; });
      ASSERT_EQ(FindEither(text.data(), end, '<', other) - text.data(), want - text.begin());
    }
  }
}

}  // namespace
}  // namespace mimora::testing

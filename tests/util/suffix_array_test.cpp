// Copyright (c) 2026 the mimora developers.
#include "util/suffix_array.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace mimora::testing {
namespace {

TEST(SortSuffixes, AgreesWithComparingThem) {
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    std::string text(random() % 40, '\0');
    const unsigned kinds = 1 + random() % 4;
    for (char& c : text) c = static_cast<char>(random() % kinds * 80);
    if (random() % 3 == 0) text += text + text;
    const auto size = static_cast<uint32_t>(text.size());
    std::vector<uint32_t> order(size), scratch(SuffixScratchSize(size)), want(size);
    SortSuffixes(reinterpret_cast<const uint8_t*>(text.data()), size, order.data(), scratch.data());
    std::iota(want.begin(), want.end(), 0);
    std::sort(want.begin(), want.end(), [&text](uint32_t a, uint32_t b) {
      return text.compare(a, std::string::npos, text, b, std::string::npos) < 0;
    });
    ASSERT_EQ(order, want) << "text " << i;
  }
}

}  // namespace
}  // namespace mimora::testing

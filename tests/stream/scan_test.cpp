// Copyright (c) 2026 the mimora developers.
#include "stream/scan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/cpu_levels.h"

namespace mimora::testing {
namespace {

// Few different characters, so that pairs and near misses are frequent, at every alignment and
// length: the fast searches must answer as the plain ones and read nothing beyond the end.
TEST(Scan, FastSearchesAnswerAsThePlainOnes) {
  std::mt19937 random(1);
  constexpr char kCharacters[] = "ab-\r\n \xFFxxxxxxxxxxxx";
  for (int round = 0; round < 20000; ++round) {
    // A string of its own, so that the sanitizer sees a read beyond its end.
    std::string text(random() % (round % 4 == 0 ? 400 : 70), 'x');
    for (char& c : text) c = kCharacters[random() % (sizeof kCharacters - 1)];
    const std::vector<char> bytes(text.begin(), text.end());
    const char* begin = bytes.data();
    const char* end = begin + bytes.size();
    ForEveryCpuLevel([&] {
      const char* pair = scan_plain::FindPair(begin, end, '\n', '-');
      ASSERT_EQ(FindPair(begin, end, '\n', '-'), pair) << text;
      ASSERT_EQ(FindPair(begin, end, 'a', 'a'), scan_plain::FindPair(begin, end, 'a', 'a')) << text;
    });
    const char* stop = scan_plain::FindAnyOf<'\r', '\n', '-'>(begin, end);
    ASSERT_EQ((FindAnyOf<'\r', '\n', '-'>(begin, end)), stop) << text;
    ASSERT_EQ((FindSpaceOr<'x', '-'>(begin, end)), (scan_plain::FindSpaceOr<'x', '-'>(begin, end)))
        << text;
  }
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
#include "stream/delimiters.h"

#include <gtest/gtest.h>

#include <string>

#include "diag/limits.h"

namespace mimora {
namespace {

// The blanks of a closing delimiter are followed up to the limit, then it is one whatever follows.
TEST(Delimiters, BlanksOfAClosingOneHaveALimit) {
  Delimiters delimiters;
  delimiters.Push("--b");
  const auto limit = static_cast<size_t>(kLongestDelimiterPadding);
  for (const size_t blanks : {limit - 1, limit, limit + 1}) {
    SCOPED_TRACE(blanks);
    const std::string line = "--b--" + std::string(blanks, ' ') + "x";
    const DelimiterMatch match =
        delimiters.Match(line.data(), std::ssize(line), false, delimiters.Count());
    EXPECT_EQ(match.verdict, blanks < limit ? DelimiterMatch::kNo : DelimiterMatch::kYes);
    EXPECT_EQ(match.closes, blanks >= limit);
  }
}

TEST(Delimiters, OfSeveralTheLongestWinsAndAmongEqualsTheInnermost) {
  const struct {
    const char* name;
    std::vector<const char*> stack;
    std::string line;
    size_t level;
    bool closes;
  } cases[] = {
      {"outer", {"--b", "--c"}, "--b\n", 0, false},
      {"outer begins with inner", {"--b-2", "--b"}, "--b-2\n", 0, false},
      {"inner begins with outer", {"--b", "--b-2"}, "--b-2\n", 1, false},
      {"inner is outer closed", {"--b", "--b--"}, "--b--\n", 1, false},
      {"inner is outer and a word", {"--b", "--b x"}, "--b x\n", 1, false},
      {"outer is inner closed", {"--b--", "--b"}, "--b--\n", 0, false},
      {"outer is inner and a word", {"--b x", "--b"}, "--b x\n", 0, false},
      {"outer of two long ones", {"--boundary-1", "--different-2"}, "--boundary-1\n", 0, false},
      {"equal", {"--b", "--b"}, "--b--\n", 1, true},
      {"outermost of three", {"--a", "--b", "--c"}, "--a--\n", 0, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Delimiters delimiters;
    for (const char* delimiter : c.stack) delimiters.Push(delimiter);
    const DelimiterMatch match =
        delimiters.Match(c.line.data(), std::ssize(c.line), false, delimiters.Count());
    EXPECT_EQ(match.verdict, DelimiterMatch::kYes);
    EXPECT_EQ(match.level, c.level);
    EXPECT_EQ(match.closes, c.closes);
  }
}

}  // namespace
}  // namespace mimora

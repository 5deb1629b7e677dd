// Copyright (c) 2026 the mimora developers.
#include "stream/delimiters.h"

#include <gtest/gtest.h>

#include <string>

#include "diag/limits.h"

namespace mimora {
namespace {

constexpr auto kNo = DelimiterMatch::kNo;
constexpr auto kYes = DelimiterMatch::kYes;
constexpr auto kMore = DelimiterMatch::kMore;

struct LineCase {
  const char* name;
  std::string line;
  bool at_end;
  DelimiterMatch::Verdict verdict;
  bool closes;
};

TEST(Delimiters, TellADelimiterLineByWhatFollowsItsText) {
  const std::string padding(static_cast<size_t>(kLongestDelimiterPadding), ' ');
  const LineCase cases[] = {
      {"bare", "--b\r\n", false, kYes, false},
      {"bare with a lone LF", "--b\n", false, kYes, false},
      {"at the end of the data", "--b", true, kYes, false},
      {"at the end of what is in view", "--b", false, kMore, false},
      {"cut text", "--", false, kMore, false},
      {"cut text at the end of the data", "--", true, kNo, false},
      {"space and words", "--b words\r\n", false, kYes, false},
      {"letter", "--bx\r\n", false, kNo, false},
      {"other text", "--c\r\n", false, kNo, false},
      {"closing", "--b--\r\n", false, kYes, true},
      {"closing at the end of the data", "--b--", true, kYes, true},
      {"closing with blanks", "--b-- \t \r\n", false, kYes, true},
      {"closing with blanks at the end of the data", "--b-- ", true, kYes, true},
      {"closing with blanks that may go on", "--b-- ", false, kMore, false},
      {"closing with words", "--b-- words\r\n", false, kNo, false},
      {"one hyphen", "--b-\r\n", false, kNo, false},
      {"one hyphen at the end of the data", "--b-", true, kNo, false},
      {"one hyphen that may go on", "--b-", false, kMore, false},
      {"hyphen and text", "--b-2\r\n", false, kNo, false},
      {"three hyphens", "--b---\r\n", false, kNo, false},
      {"padding one below the limit", "--b--" + padding.substr(1) + "x", false, kNo, false},
      {"padding at the limit", "--b--" + padding + "x", false, kYes, true},
      {"padding one above the limit", "--b--" + padding + " x", false, kYes, true},
  };
  Delimiters delimiters;
  delimiters.Push("--b");
  for (const LineCase& c : cases) {
    SCOPED_TRACE(c.name);
    const DelimiterMatch match = delimiters.Match(c.line.data(), std::ssize(c.line), c.at_end);
    EXPECT_EQ(match.verdict, c.verdict);
    EXPECT_EQ(match.closes, c.closes);
    if (match.verdict == kMore) {
      EXPECT_GT(match.needed, std::ssize(c.line));
    }
  }
}

TEST(Delimiters, OfSeveralTheLongestWinsAndAmongEqualsTheInnermost) {
  struct {
    const char* name;
    std::vector<const char*> stack;
    const char* line;
    size_t level;
    bool closes;
  } const cases[] = {
      {"outer", {"--b", "--c"}, "--b\n", 0, false},
      {"outer begins with inner", {"--b-2", "--b"}, "--b-2\n", 0, false},
      {"inner begins with outer", {"--b", "--b-2"}, "--b-2\n", 1, false},
      {"inner is outer closed", {"--b", "--b--"}, "--b--\n", 1, false},
      {"inner is outer and a word", {"--b", "--b x"}, "--b x\n", 1, false},
      {"equal", {"--b", "--b"}, "--b--\n", 1, true},
      {"outermost of three", {"--a", "--b", "--c"}, "--a--\n", 0, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Delimiters delimiters;
    for (const char* delimiter : c.stack) delimiters.Push(delimiter);
    const std::string line = c.line;
    const DelimiterMatch match = delimiters.Match(line.data(), std::ssize(line), false);
    EXPECT_EQ(match.verdict, kYes);
    EXPECT_EQ(match.level, c.level);
    EXPECT_EQ(match.closes, c.closes);
  }
}

}  // namespace
}  // namespace mimora

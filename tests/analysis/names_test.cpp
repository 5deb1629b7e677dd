// Copyright (c) 2026 the mimora developers.
#include "analysis/names.h"

#include <gtest/gtest.h>

#include <string>

namespace mimora::testing {
namespace {

TEST(BodypartName, IsDecodedIntoTheTargetCharset) {
  const struct {
    const char* name;
    const char* type;
    const char* disposition;
    const char* target;
    const char* want;
  } cases[] = {
      {"none", "text/plain", "attachment", "", ""},
      {"the type's name", "a/b; name=x", "attachment; filename=y", "", "x"},
      {"an empty one", "a/b; name=\"\"", "attachment; filename=y", "", "y"},
      {"encoded words", "a/b; name=\"=?iso-8859-2?Q?=B9?=.txt\"", "", "", "\xC5\xA1.txt"},
      {"in another charset", "a/b; name=\"=?iso-8859-2?Q?=B9?=\"", "", "windows-1250", "\x9A"},
      {"a declared charset", "a/b; name*=iso-8859-2''%B9", "", "", "\xC5\xA1"},
      {"a declared one in another", "a/b; name*=utf-8''%C5%A1", "", "windows-1250", "\x9A"},
      {"no UTF-16", "a/b; name*=utf-8''%C5%A1", "", "utf-16", "\xC5\xA1"},
      {"bytes as they stand", "a/b; name=\"\xB9\"", "", "windows-1250", "\xB9"},
  };
  for (const auto& c : cases) {
    Bodypart part;
    part.Header.Append("Content-Type", c.type);
    part.Header.Append("Content-Disposition", c.disposition);
    EXPECT_EQ(BodypartName(part, c.target), c.want) << c.name;
  }
}

TEST(AddHeaderField, LetsNoOtherFieldIn) {
  Bodypart part;
  EXPECT_TRUE(AddHeaderField(part, "Subject", "a\r\n b\r\nBcc: x\n\xC5\xA1"));
  EXPECT_EQ(part.Header.At(0).value, "a b  Bcc: x =?utf-8?B?xaE=?=");
  for (const char* name : {"", "a b", "a:", "a\r\nb", "\xC5\xA1"}) {
    EXPECT_FALSE(AddHeaderField(part, name, "x")) << name;
  }
  EXPECT_EQ(part.Header.Count(), 1u);
  EXPECT_TRUE(AddHeaderField(part, "X", "a\r\n \r\n b\r\n "));
  EXPECT_EQ(part.Header.At(1).value, "a   \r\n b   ");
}

TEST(AddHeaderField, TakesTheNameOfAnotherFieldInTheHeader) {
  Bodypart part;
  part.Header.Append("X", "");
  for (size_t i = 1; i < 200; ++i) {
    EXPECT_TRUE(AddHeaderField(part, part.Header.At(0).name, ""));
    EXPECT_EQ(part.Header.At(i).name, "X");
  }
}

}  // namespace
}  // namespace mimora::testing

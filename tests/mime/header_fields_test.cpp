// Copyright (c) 2026 the mimora developers.
#include "mime/header_fields.h"

#include <gtest/gtest.h>

namespace mimora {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

TEST(AppendLine, SplitsFieldsAndKeepsFolding) {
  const struct {
    const char* name;
    std::vector<const char*> lines;
    Fields want;
  } cases[] = {
      {"plain", {"To: a", "From:b"}, {{"To", "a"}, {"From", "b"}}},
      {"one space goes, no more", {"To:  a ", "Cc:\ta"}, {{"To", " a "}, {"Cc", "\ta"}}},
      {"blanks before the colon", {"To \t: a"}, {{"To", "a"}}},
      {"empty value", {"To:"}, {{"To", ""}}},
      {"colons in the value", {"A: b: c"}, {{"A", "b: c"}}},
      {"8-bit name", {"\xC4\x8D: a"}, {{"\xC4\x8D", "a"}}},
      {"folded", {"To: a,", "  b", "\tc"}, {{"To", "a,\r\n  b\r\n\tc"}}},
      {"no colon", {"To: a", "nonsense", "From a b: c", "Cc: d"}, {{"To", "a"}, {"Cc", "d"}}},
      {"begins with a continuation",
       {" a", "To: b"},
       {{"X-Dummy", "Dummy header field to account for the following continuation line:\r\n a"},
        {"To", "b"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    HeaderFields fields;
    for (const char* line : c.lines) fields.AppendLine(line);
    Fields got;
    for (size_t i = 0; i < fields.Count(); ++i) {
      const HeaderField field = fields.At(i);
      got.emplace_back(field.name, field.value);
      EXPECT_EQ(field.name.data()[field.name.size()], '\0');
      EXPECT_EQ(field.value.data()[field.value.size()], '\0');
    }
    EXPECT_EQ(got, c.want);
  }
}

TEST(Find, CountsFieldsOfOneNameWithoutRegardToCase) {
  HeaderFields fields;
  for (const char* line : {"Received: 1", "RECEIVED: 2", "Received-By: x", "received: 3"})
    fields.AppendLine(line);
  EXPECT_EQ(fields.Find("Received"), "1");
  EXPECT_EQ(fields.Find("reCeived", 2), "2");
  EXPECT_EQ(fields.Find("received", 3), "3");
  for (const int n : {4, 0, -1}) EXPECT_EQ(fields.Find("received", n), std::nullopt);
  EXPECT_EQ(fields.Find("Receive"), std::nullopt);
  fields.Delete(1);
  EXPECT_EQ(fields.Find("received", 2), "3");
  EXPECT_EQ(fields.Count(), 3u);
}

TEST(Delete, LeavesTheOtherFieldsAsTheyAre) {
  HeaderFields fields;
  for (int i = 0; i < 100; ++i) fields.Append(std::to_string(i), std::string(i, 'v'));
  // Those in front, those at the end, and every other one of the rest.
  for (int i = 0; i < 20; ++i) fields.Delete(0);
  for (int i = 0; i < 20; ++i) fields.Delete(fields.Count() - 1);
  for (size_t i = 0; i < 30; ++i) fields.Delete(i);
  fields.Append("x", "y");
  ASSERT_EQ(fields.Count(), 31u);
  for (int i = 0; i < 30; ++i) {
    const int number = 21 + 2 * i;
    const HeaderField field = fields.At(i);
    EXPECT_EQ(field.name, std::to_string(number));
    EXPECT_EQ(field.value, std::string(number, 'v'));
    EXPECT_EQ(field.value.data()[number], '\0');
  }
  EXPECT_EQ(fields.Find("x"), "y");
}

}  // namespace
}  // namespace mimora

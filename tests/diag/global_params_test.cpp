// Copyright (c) 2026 the mimora developers.
#include "diag/global_params.h"

#include <gtest/gtest.h>

#include "mimora/mimora.h"

namespace mimora::testing {
namespace {

TEST(GlobalParams, TakeTheKeysTheyKnowAndIgnoreTheRest) {
  // Each list ends with the empty text that the zero of the literal makes.
  constexpr struct {
    const char *name, *list, *attachment, *message;
  } kCases[] = {
      {"no list", nullptr, "att", "message"},
      {"an empty list", "", "att", "message"},
      {"any case", "namePrefixForMessage=Mail\0nameprefixforattachment=File\0", "File", "Mail"},
      {"an unknown key", "NOSUCHKEY=x\0NAMEPREFIXFORMESSAGE=mail\0", "att", "mail"},
      {"no equals sign", "NAMEPREFIXFORMESSAGE\0NAMEPREFIXFORATTACHMENT=x\0", "x", "message"},
      {"longer, shorter and no keys",
       "NAMEPREFIXFORMESSAGES=a\0NAMEPREFIXFORMESSAG=b\0=c\0 NAMEPREFIXFORMESSAGE=d\0", "att",
       "message"},
      {"blanks count", "NAMEPREFIXFORMESSAGE =a\0NAMEPREFIXFORATTACHMENT= b \0", " b ", "message"},
      {"later equals signs belong to the value", "NAMEPREFIXFORMESSAGE=a=b=\0", "att", "a=b="},
      {"the last value counts", "NAMEPREFIXFORMESSAGE=a\0NAMEPREFIXFORMESSAGE=b\0", "att", "b"},
      {"an empty value is one", "NAMEPREFIXFORMESSAGE=\0", "att", ""},
      {"nothing behind the empty text", "A=b\0\0NAMEPREFIXFORMESSAGE=mail\0", "att", "message"},
  };
  for (const auto& c : kCases) {
    GlobalParams params;
    params.Set(c.list);
    EXPECT_EQ(params.attachment_prefix, c.attachment) << c.name;
    EXPECT_EQ(params.message_prefix, c.message) << c.name;
  }
}

TEST(GlobalParams, KeepTheirValuesFromCallToCall) {
  P_SetGlobalParams("NAMEPREFIXFORMESSAGE=mail\0");
  P_SetGlobalParams("NAMEPREFIXFORATTACHMENT=file\0");
  P_SetGlobalParams(nullptr);
  EXPECT_EQ(TheGlobalParams().message_prefix, "mail");
  EXPECT_EQ(TheGlobalParams().attachment_prefix, "file");
  TheGlobalParams() = {};
}

}  // namespace
}  // namespace mimora::testing

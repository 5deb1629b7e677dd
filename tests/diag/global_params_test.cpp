// Copyright (c) 2026 the mimora developers.
#include "diag/global_params.h"

#include <gtest/gtest.h>

#include "mimora/mimora.h"

namespace mimora::testing {
namespace {

TEST(GlobalParams, TakeTheKeysTheyKnowAndIgnoreTheRest) {
  struct Case {
    const char* name;
    const char* list;
    const char* attachment;
    const char* message;
  };
  // Each list ends with the empty text that the zero of the literal makes.
  constexpr Case kCases[] = {
      {"no list", nullptr, "att", "message"},
      {"an empty list", "", "att", "message"},
      {"both keys", "namePrefixForMessage=mail\0NAMEPREFIXFORATTACHMENT=file\0", "file", "mail"},
      {"any case", "nameprefixforattachment=File\0", "File", "message"},
      {"an unknown key", "NOSUCHKEY=x\0NAMEPREFIXFORMESSAGE=mail\0", "att", "mail"},
      {"a text without an equals sign", "NAMEPREFIXFORMESSAGE\0NAMEPREFIXFORATTACHMENT=x\0", "x",
       "message"},
      {"longer, shorter and no keys",
       "NAMEPREFIXFORMESSAGES=a\0NAMEPREFIXFORMESSAG=b\0=c\0 NAMEPREFIXFORMESSAGE=d\0", "att",
       "message"},
      {"blanks are part of key and value", "NAMEPREFIXFORMESSAGE =a\0NAMEPREFIXFORATTACHMENT= b \0",
       " b ", "message"},
      {"later equals signs belong to the value", "NAMEPREFIXFORMESSAGE=a=b=\0", "att", "a=b="},
      {"the last value counts", "NAMEPREFIXFORMESSAGE=a\0NAMEPREFIXFORMESSAGE=b\0", "att", "b"},
      {"an empty value is one", "NAMEPREFIXFORMESSAGE=\0", "att", ""},
      {"nothing behind the empty text", "A=b\0\0NAMEPREFIXFORMESSAGE=mail\0", "att", "message"},
  };
  for (const Case& c : kCases) {
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

// Copyright (c) 2026 the mimora developers.
#include <gtest/gtest.h>

#include <utility>

#include "mimora/mimora.h"

namespace mimora {
namespace {

TEST(P_GetCodePage, KnowsTheNamesOfMailInAnyCase) {
  const std::pair<const char*, uint32_t> cases[] = {
      {"utf-8", 65001},
      {"ISO-8859-2", 28592},
      {"US-ASCII", 1250},
      {"iso-2022-jp", 50220},
      {"unicode", 1200},
      {"utf-16", 1200},
      {"unicodeFFFE", 1201},
      {"asmo-708", 708},
      {"WINDOWS-1252", 1252},
      {"latin-none", 0},
      {"", 0},
      {nullptr, 0},
  };
  for (const auto& [charset, want] : cases) {
    EXPECT_EQ(P_GetCodePage(charset), want) << (charset != nullptr ? charset : "null");
  }
}

}  // namespace
}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "codec/charset/code_page.h"

#include <gtest/gtest.h>

namespace mimora::testing {
namespace {

uint16_t CharacterOf(const CodePage& page, uint32_t code) {
  if (code > 0xFF && page.pairs == nullptr) return CodePage::kNone;
  return page.DecodeCode(static_cast<uint16_t>(code));
}

TEST(CodePage, EveryCodeComesBackAsOneOfTheSameCharacter) {
  for (size_t i = 0; i < kCodePageCount; ++i) {
    const CodePage& page = kCodePages[i];
    SCOPED_TRACE(page.number);
    int found = 0;
    for (uint32_t code = 0; code < 0x10000; ++code) {
      const uint16_t character = CharacterOf(page, code);
      if (character >= CodePage::kLead) continue;
      ++found;
      ASSERT_EQ(CharacterOf(page, page.EncodeUnit(character)), character) << std::hex << code;
    }
    EXPECT_GE(found, 128);
  }
}

TEST(CodePage, NoUnitIsEncodedAsACodeWithoutMeaningNorASurrogateAtAll) {
  for (size_t i = 0; i < kCodePageCount; ++i) {
    const CodePage& page = kCodePages[i];
    for (uint32_t unit = 0; unit < 0x10000; ++unit) {
      const uint16_t code = page.EncodeUnit(static_cast<char16_t>(unit));
      if (code == CodePage::kNone) continue;
      ASSERT_LT(CharacterOf(page, code), CodePage::kLead) << page.number << ' ' << unit;
      ASSERT_TRUE(unit < 0xD800 || unit > 0xDFFF) << page.number << ' ' << unit;
    }
  }
}

TEST(FindCodePage, KnowsOtherNumbersOfAPageAndNoneThatHasNoTables) {
  for (size_t i = 0; i < kCodePageCount; ++i)
    EXPECT_EQ(FindCodePage(kCodePages[i].number), &kCodePages[i]);
  EXPECT_EQ(FindCodePage(51936), FindCodePage(936));
  EXPECT_EQ(FindCodePage(38598), FindCodePage(28598));
  for (const uint32_t number : {0u, 1u, 1200u, 12345u, 50220u, 65001u, 0xFFFFFFFFu})
    EXPECT_EQ(FindCodePage(number), nullptr) << number;
}

}  // namespace
}  // namespace mimora::testing

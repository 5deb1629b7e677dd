// Copyright (c) 2026 the mimora developers.
#include "platform/platform.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace mimora::platform {
namespace {

TEST(FindSetting, TakesTheLastLineOfThatName) {
  const std::string text = "# Key20=no\nKey2=x\nKey20=a;b;c;/dir\r\nKey201=y\n Key20=z\nOther";
  EXPECT_EQ(FindSetting(text, "Key20"), "a;b;c;/dir");
  EXPECT_EQ(FindSetting(text, "Key2"), "x");
  EXPECT_EQ(FindSetting(text, "Other"), std::nullopt);
  EXPECT_EQ(FindSetting("Key20=", "Key20"), "");
  EXPECT_EQ(FindSetting("", "Key20"), std::nullopt);
}

TEST(ReadWord, AnswersForAnyAddress) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* pages = static_cast<char*>(
      mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  ASSERT_NE(pages, MAP_FAILED);
  ASSERT_EQ(mprotect(pages + page, page, PROT_NONE), 0);
  const uint32_t on_stack = 7;
  const struct {
    const char* name;
    const void* address;
    bool readable;
  } cases[] = {
      {"stack", &on_stack, true},
      {"null", nullptr, false},
      {"near null", reinterpret_cast<void*>(16), false},
      {"not canonical", reinterpret_cast<void*>(0x8000'0000'0000'0000), false},
      {"the very end", reinterpret_cast<void*>(-1), false},
      {"page never touched", pages, true},
      {"last word of a page", pages + page - 4, true},
      {"across the end of a page", pages + page - 2, false},
      {"protected page", pages + page, false},
  };
  for (const auto& c : cases) {
    uint32_t word = 0;
    EXPECT_EQ(ReadWord(c.address, word), c.readable) << c.name;
    EXPECT_EQ(word, c.address == &on_stack ? 7u : 0u) << c.name;
  }
  munmap(pages, 2 * page);
}

TEST(RecodeToUtf8, KnowsTheCharsetsOfMail) {
  const struct {
    const char *charset, *text, *want;  // null: not known
  } cases[] = {
      {"iso-8859-2", "\xB9", "\xC5\xA1"},
      {"Windows-1251", "\xEF", "\xD0\xBF"},
      {"utf-8", "a\xFF.", "a\xEF\xBF\xBD."},
      {"shift_jis", "\x83\x65", "\xE3\x83\x86"},
      {"iso-2022-jp", "\x1B$B%F\x1B(B", "\xE3\x83\x86"},
      {"us-ascii", "a", "a"},
      // A letter is held back as long as an accent may follow it.
      {"windows-1258", "aa", "aa"},
      {"windows-1258", "a\xCC", "\xC3\xA0"},
      {"utf-8//IGNORE", "a", nullptr},
      {"../../x", "a", nullptr},
      {"", "a", nullptr},
  };
  for (const auto& c : cases) {
    std::string utf8 = "untouched";
    EXPECT_EQ(RecodeToUtf8(c.charset, c.text, utf8), c.want != nullptr) << c.charset;
    EXPECT_EQ(utf8, c.want != nullptr ? c.want : "untouched") << c.charset;
  }
}

}  // namespace
}  // namespace mimora::platform

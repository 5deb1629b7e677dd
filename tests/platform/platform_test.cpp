// Copyright (c) 2026 the mimora developers.
#include "platform/platform.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/cpu.h"

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

TEST(CpuLevel, IsLoweredByTheSettingOnly) {
  const CpuLevel before = GetCpuLevel();
  SetCpuLevel(CpuLevel::kAvx2);
  const CpuLevel highest = GetCpuLevel();
  constexpr struct {
    const char* setting;
    CpuLevel want;
  } kCases[] = {{"portable", CpuLevel::kPortable},
                {"sse", CpuLevel::kSse},
                {"avx2", CpuLevel::kAvx2},
                {"", CpuLevel::kAvx2}};
  for (const auto& c : kCases) {
    setenv("MIMORA_CPU", c.setting, 1);
    EXPECT_EQ(ChooseCpuLevel(), std::min(c.want, highest)) << c.setting;
    EXPECT_EQ(GetCpuLevel(), std::min(c.want, highest)) << c.setting;
  }
  unsetenv("MIMORA_CPU");
  SetCpuLevel(before);
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

}  // namespace
}  // namespace mimora::platform

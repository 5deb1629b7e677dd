// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TESTS_SUPPORT_CPU_LEVELS_H_
#define MIMORA_TESTS_SUPPORT_CPU_LEVELS_H_

#include <gtest/gtest.h>

#include "platform/cpu.h"

namespace mimora::testing {

// Runs the test with all vector instructions that the machine has, with fewer, and with none.
template <typename Test>
void ForEveryCpuLevel(Test test) {
  using platform::CpuLevel;
  const CpuLevel before = platform::GetCpuLevel();
  for (const CpuLevel level : {CpuLevel::kPortable, CpuLevel::kSse, CpuLevel::kAvx2}) {
    platform::SetCpuLevel(level);
    if (platform::GetCpuLevel() != level) break;
    SCOPED_TRACE(::testing::Message() << "CPU level " << static_cast<int>(level));
    test();
  }
  platform::SetCpuLevel(before);
}

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_CPU_LEVELS_H_

// Copyright (c) 2026 the mimora developers.
#include "platform/cpu.h"

#include <algorithm>

#include "platform/platform.h"

namespace mimora::platform {
namespace {

CpuLevel LevelOfMachine() {
#if MIMORA_HAS_VECTORS
  __builtin_cpu_init();
  const bool sse = __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("popcnt") &&
                   __builtin_cpu_supports("pclmul");
  if (!sse) return CpuLevel::kPortable;
  const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
  return avx2 ? CpuLevel::kAvx2 : CpuLevel::kSse;
#else
  return CpuLevel::kPortable;
#endif
}

CpuLevel HighestAllowed() {
  const auto named = ReadSetting("Cpu");
  if (named == "portable") return CpuLevel::kPortable;
  return named == "sse" ? CpuLevel::kSse : CpuLevel::kAvx2;
}

}  // namespace

void SetCpuLevel(CpuLevel level) {
  internal::cpu_level.store(static_cast<int>(std::min(level, LevelOfMachine())),
                            std::memory_order_relaxed);
}

CpuLevel ChooseCpuLevel() {
  SetCpuLevel(HighestAllowed());
  return GetCpuLevel();
}

}  // namespace mimora::platform

// Copyright (c) 2026 the mimora developers.
//
// Which vector instructions the fast paths may use. Every fast path has a portable twin, which
// says what the answer is.
#ifndef MIMORA_PLATFORM_CPU_H_
#define MIMORA_PLATFORM_CPU_H_

#include <atomic>

// A function with one of these is compiled for that level, whatever the rest of its file is
// compiled for, and must be called at that level only. What it calls is inlined, so that helpers
// without vector types in their signatures can be shared between the levels.
#if defined(__x86_64__) && defined(__GNUC__)
#define MIMORA_HAS_VECTORS 1
#define MIMORA_FOR_SSE __attribute__((target("sse4.1,popcnt,pclmul")))
#define MIMORA_FOR_AVX2 __attribute__((target("avx2,bmi,popcnt,pclmul")))
#define MIMORA_FLAT __attribute__((flatten))
#define MIMORA_INLINE inline __attribute__((always_inline))
#else
#define MIMORA_HAS_VECTORS 0
#define MIMORA_INLINE inline
#endif

namespace mimora::platform {

enum class CpuLevel {
  kPortable,
  kSse,   // up to SSE 4.1, with POPCNT and PCLMUL
  kAvx2,  // with BMI
};

// What the machine has, lowered by the setting Cpu: portable, sse or avx2.
CpuLevel ChooseCpuLevel();

// Lowers the level from now on, or restores it: for tests. No more than the machine has.
void SetCpuLevel(CpuLevel level);

namespace internal {
constexpr int kNotChosen = -1;
inline std::atomic<int> cpu_level = kNotChosen;
}  // namespace internal

inline CpuLevel GetCpuLevel() {
  const int level = internal::cpu_level.load(std::memory_order_relaxed);
  return level == internal::kNotChosen ? ChooseCpuLevel() : static_cast<CpuLevel>(level);
}

}  // namespace mimora::platform

#endif  // MIMORA_PLATFORM_CPU_H_

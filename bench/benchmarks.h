// Copyright (c) 2026 the mimora developers.
//
// The benchmarks of single operations, by groups. Each group reads what it needs of the corpus.
#ifndef MIMORA_BENCH_BENCHMARKS_H_
#define MIMORA_BENCH_BENCHMARKS_H_

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

namespace mimora::bench {

void RegisterLoading(const std::string& corpus);
void RegisterCoding(const std::string& corpus);
void RegisterTexts(const std::string& corpus);
void RegisterUtilities(const std::string& corpus);

// A benchmark that runs WORK, which passes over SIZE bytes and answers something that needs all of
// them.
template <typename Work>
void Register(const std::string& name, size_t size, Work work) {
  const auto run = [size, work = std::move(work)](benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(work());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(size));
  };
  benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

}  // namespace mimora::bench

#endif  // MIMORA_BENCH_BENCHMARKS_H_

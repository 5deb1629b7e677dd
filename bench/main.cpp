// Copyright (c) 2026 the mimora developers.
//
// Usage: mimora_bench CORPUS [option of Google Benchmark]...
#include <benchmark/benchmark.h>

#include <cstdio>

#include "benchmarks.h"

int main(int argc, char** argv) {
  using namespace mimora::bench;
  benchmark::Initialize(&argc, argv);
  if (argc != 2) {
    std::fprintf(stderr, "usage: mimora_bench CORPUS [--benchmark_...]\n");
    return 2;
  }
  const std::string corpus = argv[1];
  RegisterLoading(corpus);
  RegisterCoding(corpus);
  RegisterTexts(corpus);
  RegisterUtilities(corpus);
  benchmark::RunSpecifiedBenchmarks();
}

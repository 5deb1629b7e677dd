// Copyright (c) 2026 the mimora developers.
//
// What a program of the comparison offers. Each does the same work with one library.
#ifndef MIMORA_BENCH_COMPARE_PROGRAM_H_
#define MIMORA_BENCH_COMPARE_PROGRAM_H_

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "corpus.h"

namespace mimora::bench {

// Loads a message from where its name says, and tells what was found in it.
struct Loader {
  std::string source;  // memory, file, callbacks
  Contents (*load)(const Message& message);
};

// Encodes or decodes the whole input, and tells how many bytes that makes.
using RunCoder = std::function<int64_t()>;

struct Coder {
  std::string name;  // base64-decode and so on
  RunCoder (*prepare)(std::string_view input);
};

struct Program {
  std::string name;
  std::vector<Loader> loaders;
  std::vector<Coder> coders;
};

// Each program defines its own.
Program MakeProgram();

// How many bytes coders that take pieces are given at once.
constexpr size_t kPiece = 65536;

template <typename Take>
void ForEachPiece(std::string_view input, Take take) {
  for (; !input.empty(); input.remove_prefix(std::min(kPiece, input.size()))) {
    take(input.substr(0, kPiece), input.size() <= kPiece);
  }
}

}  // namespace mimora::bench

#endif  // MIMORA_BENCH_COMPARE_PROGRAM_H_

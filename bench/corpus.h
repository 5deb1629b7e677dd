// Copyright (c) 2026 the mimora developers.
//
// The mail that the benchmarks read, made by make_corpus.
#ifndef MIMORA_BENCH_CORPUS_H_
#define MIMORA_BENCH_CORPUS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mimora::bench {

// What is counted in a message: its leaves, and their bytes when decoded.
struct Contents {
  int64_t leaves = 0;
  int64_t bytes = 0;

  bool operator==(const Contents&) const = default;
  Contents& operator+=(const Contents& other);
};

struct Message {
  std::string_view text;
  std::string file;
  Contents contents;
};

// Ends the program when the file cannot be read.
std::string ReadFile(const std::string& path);

// All messages of a case.
class Corpus {
 public:
  Corpus(const std::string& folder, const std::string& name);
  Corpus(const Corpus&) = delete;
  Corpus& operator=(const Corpus&) = delete;

  const std::vector<Message>& Messages() const { return messages_; }
  double Megabytes() const { return static_cast<double>(text_.size()) / 1e6; }

 private:
  std::string text_;
  std::vector<Message> messages_;
};

}  // namespace mimora::bench

#endif  // MIMORA_BENCH_CORPUS_H_

// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "benchmarks.h"
#include "load_message.h"

namespace mimora::bench {
namespace {

struct Source {
  const char* name;
  Contents (*load)(const Message& message);
};

constexpr Source kSources[] = {
    {"memory", LoadFromMemory}, {"file", LoadFromFile}, {"callbacks", LoadFromCallbacks}};

int64_t LoadAll(const Corpus& corpus, const Source& source) {
  int64_t bytes = 0;
  for (const Message& message : corpus.Messages()) bytes += source.load(message).bytes;
  return bytes;
}

}  // namespace

void RegisterLoading(const std::string& corpus) {
  for (const char* name : {"small", "mixed", "big", "deep", "many"}) {
    const auto mail = std::make_shared<Corpus>(corpus, name);
    for (const Source& source : kSources) {
      Register(std::string("load/") + name + "/" + source.name,
               static_cast<size_t>(mail->Megabytes() * 1e6),
               [mail, source] { return LoadAll(*mail, source); });
    }
  }
}

}  // namespace mimora::bench

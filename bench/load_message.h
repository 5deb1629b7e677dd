// Copyright (c) 2026 the mimora developers.
//
// Loading a message through the C interface: create the stream, parse, ask every leaf for its
// decoded size, destroy.
#ifndef MIMORA_BENCH_LOAD_MESSAGE_H_
#define MIMORA_BENCH_LOAD_MESSAGE_H_

#include "corpus.h"

namespace mimora::bench {

Contents LoadFromMemory(const Message& message);
Contents LoadFromFile(const Message& message);
Contents LoadFromCallbacks(const Message& message);

}  // namespace mimora::bench

#endif  // MIMORA_BENCH_LOAD_MESSAGE_H_

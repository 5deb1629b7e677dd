// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_STREAM_COPY_STREAM_H_
#define MIMORA_STREAM_COPY_STREAM_H_

#include <cstdint>

#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// Copies up to LENGTH bytes, as far as the input stream delivers, and flushes the output. Result 0,
// kReadFailed or kWriteFailed.
int32_t CopyStream(Minstream& in, Moutstream& out, int64_t length);

// Copies the whole range of LENGTH bytes from START on; kReadFailed also when there are fewer.
int32_t CopyRange(Minstream& in, Moutstream& out, int64_t start, int64_t length);

}  // namespace mimora

#endif  // MIMORA_STREAM_COPY_STREAM_H_

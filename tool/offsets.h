// Copyright (c) 2026 the mimora developers.
//
// Where a part lies in its message.
#ifndef MIMORA_TOOL_OFFSETS_H_
#define MIMORA_TOOL_OFFSETS_H_

#include <mimora/mimora.h>

#include <cstdint>

#include "tool/message.h"

namespace mimora::tool {

// The library tells how large parts are but not where they begin. It does show it, though, when
// it reads a part's text from a stream that the caller names: it moves that stream to the place
// first. So this is a stream without a byte, which only notes where it is moved to. One probe
// serves any number of parts, and the message's own stream is left alone.
class OffsetProbe {
 public:
  OffsetProbe();
  OffsetProbe(const OffsetProbe&) = delete;
  OffsetProbe& operator=(const OffsetProbe&) = delete;

  // Counted from the first byte of the message's stream. Both throw MessageError.
  int64_t HeaderOffset(M_Bodypart* part);
  int64_t BodyOffset(M_Bodypart* part);

 private:
  using ReadText = int32_t(M_Bodypart*, S_InStream*, void*, int32_t, uint32_t*);
  int64_t Ask(ReadText* read_text, M_Bodypart* part);

  int64_t position_ = 0;
  const InStreamHandle stream_;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_OFFSETS_H_

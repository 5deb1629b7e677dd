// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_CODEC_RUN_CODER_H_
#define MIMORA_CODEC_RUN_CODER_H_

#include <cstdint>
#include <string_view>

#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// Feeds the rest of IN to a coder that writes into OUT. Answers 0, -1 when reading failed, -2 when
// writing did: what every coder answers.
template <typename Coder>
int32_t RunCoder(Minstream& in, Moutstream& out, Coder& coder) {
  for (std::string_view run; out.GetError() == 0 && !(run = in.NextRun()).empty();) {
    coder.Feed(run);
    in.Take(run.size());
  }
  coder.Finish();
  if (in.GetError() != 0) return -1;
  return out.FlushBuffer() ? 0 : -2;
}

}  // namespace mimora

#endif  // MIMORA_CODEC_RUN_CODER_H_

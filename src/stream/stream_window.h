// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_STREAM_STREAM_WINDOW_H_
#define MIMORA_STREAM_STREAM_WINDOW_H_

#include <cstdint>
#include <optional>

#include "stream/minstream.h"

namespace mimora {

// A range of a stream, read as if it were all of it: delimiters are disarmed. The stream itself is
// not to be used meanwhile; afterwards it can be read as far as before. A window inside a window
// ends with the outer one.
class StreamWindow {
 public:
  // A range that runs too far ends with the stream. There is nothing in one that begins where the
  // stream cannot go.
  StreamWindow(Minstream& in, int64_t start, int64_t length);
  ~StreamWindow();
  StreamWindow(const StreamWindow&) = delete;
  StreamWindow& operator=(const StreamWindow&) = delete;

  // Stands at the start of the range.
  Minstream& Stream() { return memory_ ? *memory_ : in_; }

 private:
  Minstream& in_;
  int64_t former_limit_;
  // A memory stream takes no read limit: another one over just those bytes stands in for it.
  std::optional<Minstream> memory_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_STREAM_WINDOW_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_STREAM_TEMPORARY_FILE_H_
#define MIMORA_STREAM_TEMPORARY_FILE_H_

#include "diag/limits.h"
#include "platform/platform.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// A file that is written, then read, and gone with the object, whatever happens in between.
class TemporaryFile {
 public:
  TemporaryFile() : out_(FileSink{}, kDefaultBufferSize) {}
  ~TemporaryFile() {
    if (!out_.GetFileName().empty()) platform::Remove(out_.GetFileName().c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // For writing, until Close.
  Moutstream& Out() { return out_; }

  // Ends the writing. False when not everything could be written.
  bool Close() { return out_.FlushBuffer(); }

  // For reading, once it is closed.
  FileSource Source() const { return {.name = out_.GetFileName().c_str()}; }

 private:
  Moutstream out_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_TEMPORARY_FILE_H_

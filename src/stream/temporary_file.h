// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_STREAM_TEMPORARY_FILE_H_
#define MIMORA_STREAM_TEMPORARY_FILE_H_

#include "diag/limits.h"
#include "diag/result.h"
#include "platform/platform.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// A file that is written, then read, and gone with the object. It loses its name at once: not even
// a process that is killed leaves it behind.
class TemporaryFile {
 public:
  TemporaryFile() : out_(FileSink{}, kDefaultBufferSize) {
    if (!out_.GetFileName().empty()) platform::Remove(out_.GetFileName().c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // The name it had.
  const std::string& Name() const { return out_.GetFileName(); }

  // Has STEP write the file, which answers kOk or why it failed. Answers that, kTempNotCreated, or
  // kTempNotWritten when that is the reason.
  template <typename Step>
  int32_t Fill(Step step) {
    if (out_.GetError() != 0) return kTempNotCreated;
    const int32_t result = step(out_);
    return out_.FlushBuffer() ? result : kTempNotWritten;
  }

  // For reading, once it is filled.
  FileSource Source() const { return {.open_file = out_.GetFile()}; }

 private:
  Moutstream out_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_TEMPORARY_FILE_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_STREAM_TEMPORARY_FILE_H_
#define MIMORA_STREAM_TEMPORARY_FILE_H_

#include <memory>
#include <string>

#include "platform/platform.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// A file that is written, then read, and gone with the object, whatever happens in between.
class TemporaryFile {
 public:
  static constexpr int64_t kBufferSize = 16384;

  TemporaryFile() : out_(std::make_unique<Moutstream>(FileSink{}, kBufferSize)) {
    name_ = out_->GetFileName();
  }
  ~TemporaryFile() {
    out_ = nullptr;
    if (!name_.empty()) platform::Remove(name_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // For writing, until Close.
  Moutstream& Out() { return *out_; }

  // Ends the writing. False when not everything could be written.
  bool Close() {
    const bool good = out_->FlushBuffer();
    out_ = nullptr;
    return good;
  }

  // For reading, once it is closed.
  FileSource Source() const { return {.name = name_.c_str()}; }

 private:
  std::unique_ptr<Moutstream> out_;
  std::string name_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_TEMPORARY_FILE_H_

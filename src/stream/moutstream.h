// Copyright (c) 2026 the mimora developers.
//
// The library's one sink of bytes: growing memory, a file, the caller's write function, or a sink
// that only counts. The first error is latched; everything after it is refused.
//
// A stream belongs to one thread at a time.
#ifndef MIMORA_STREAM_MOUTSTREAM_H_
#define MIMORA_STREAM_MOUTSTREAM_H_

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "diag/checks.h"
#include "platform/platform.h"

namespace mimora {

// Bytes go into a block of memory that grows; a zero always follows them.
struct MemorySink {};

// A file that is created or emptied; without a name a temporary one, which stays behind.
struct FileSink {
  const char* name = nullptr;
  bool must_be_new = false;  // it is an error (EEXIST) when anything has that name
};

struct CallbackSink {
  intptr_t context = 0;
  int64_t (*write)(intptr_t, const void*, int64_t) = nullptr;
};

// Nothing is stored: WritePos tells how much it was.
struct CountingSink {};

class Moutstream {
 public:
  explicit Moutstream(MemorySink sink, int64_t buffer_size = 0);
  Moutstream(FileSink sink, int64_t buffer_size);
  Moutstream(CallbackSink sink, int64_t buffer_size);
  explicit Moutstream(CountingSink sink);
  // Ends the stream as FlushAtEnd does; what a callback throws is lost here.
  ~Moutstream();
  Moutstream(const Moutstream&) = delete;
  Moutstream& operator=(const Moutstream&) = delete;

  bool IsOpen() const { return ok_; }

  // The first error, an errno value; 0 for none.
  int32_t GetError() const { return error_; }

  // The writing operations answer false when the stream has an error, an old or a new one.
  bool WriteBlock(const void* data, int64_t length);
  bool WriteChar(char c) { return WriteBlock(&c, 1); }
  bool WriteText(std::string_view text) {
    return WriteBlock(text.data(), static_cast<int64_t>(text.size()));
  }
  // With CR LF behind it.
  bool WriteLine(std::string_view text) { return WriteText(text) && WriteText("\r\n"); }

  // Hands what is buffered on to the file or callback.
  bool FlushBuffer();

  // The last flush of a stream that goes: none for a callback stream whose context is 0 or -1.
  void FlushAtEnd();

  // Bytes written so far, those in the buffer included.
  int64_t WritePos() const { return written_ + filled_; }

  // Whether it only counts, so that nobody need make the bytes: Count stands for writing them.
  bool Counts() const { return mode_ == kCounting; }
  void Count(int64_t length) { written_ += length; }

  // The bytes of a memory stream; they move when more is written.
  std::string_view GetBuffer() const { return {buffer_.get(), static_cast<size_t>(filled_)}; }

  // The same of a stream that nobody asks for its error: std::bad_alloc when bytes are missing.
  std::string_view GetWholeBuffer() const;

  const std::string& GetFileName() const { return file_name_; }
  int GetFile() const { return file_; }

 private:
  enum Mode { kMemory, kBuffered, kCounting };
  struct Free {
    void operator()(char* block) const { std::free(block); }
  };

  void AllocateBuffer(int64_t size);
  bool Resize(int64_t capacity);
  bool Grow(int64_t request);
  bool WriteToMemory(const char* data, int64_t length);
  bool WriteBuffered(const char* data, int64_t length);
  void LogCreation() const;
  void LogFunctions(const char* kind) const;

  uint32_t tag_ = kOutstreamSignature;
  Mode mode_;
  bool ok_ = false;
  int32_t error_ = 0;
  int file_ = platform::kNoFile;
  CallbackSink sink_;
  int64_t capacity_ = 0;
  int64_t filled_ = 0;
  int64_t written_ = 0;  // handed on
  std::unique_ptr<char[], Free> buffer_;
  std::string file_name_;
};

}  // namespace mimora

#endif  // MIMORA_STREAM_MOUTSTREAM_H_

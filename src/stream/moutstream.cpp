// Copyright (c) 2026 the mimora developers.
#include "stream/moutstream.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <new>

#include "diag/limits.h"

namespace mimora {
namespace {

int64_t WriteFile(intptr_t context, const void* data, int64_t length) {
  return platform::Write(static_cast<int>(context), data, length);
}

}  // namespace

// ---- Life ---------------------------------------------------------------------------------

Moutstream::Moutstream(MemorySink, int64_t buffer_size) : mode_(kMemory) {
  MIMORA_CHECK_TAG_IS_FIRST(Moutstream);
  ok_ = Resize(std::max<int64_t>(buffer_size, 0));
  LogCreation();
}

Moutstream::Moutstream(FileSink sink, int64_t buffer_size) : mode_(kBuffered) {
  AllocateBuffer(buffer_size);
  if (error_ != 0) {
    // Without a buffer there is nothing to write into a file: none is made.
  } else if (sink.name != nullptr) {
    file_name_ = sink.name;
    file_ = sink.must_be_new ? platform::CreateNew(sink.name) : platform::OpenForWriting(sink.name);
  } else {
    file_ = platform::CreateTemporary(file_name_);
  }
  const int open_error = errno;
  if (sink.name == nullptr) {
    LogTrace("Temp file .0 %s", file_name_.c_str());
    if (file_ == platform::kNoFile) file_name_.clear();
  }
  if (file_ == platform::kNoFile && error_ == 0) error_ = open_error;
  ok_ = error_ == 0;
  sink_ = {.context = file_, .write = WriteFile};
  LogCreation();
}

Moutstream::Moutstream(CallbackSink sink, int64_t buffer_size) : mode_(kBuffered) {
  AllocateBuffer(buffer_size);
  LogCreation();
  sink_ = sink;
  if (sink.write == nullptr && error_ == 0) error_ = EINVAL;
  ok_ = error_ == 0;
  LogFunctions("external");
}

Moutstream::Moutstream(CountingSink) : mode_(kCounting), ok_(true) {
  LogCreation();
  LogFunctions("dummy");
}

Moutstream::~Moutstream() {
  try {
    FlushAtEnd();
  } catch (...) {
    // It is in the log.
  }
  if (file_ != platform::kNoFile) platform::Close(file_);
  // Volatile, or the compiler would drop a store into an object that ends here.
  static_cast<volatile uint32_t&>(tag_) = 0;
}

void Moutstream::FlushAtEnd() {
  // A file may well have the descriptor 0.
  const bool flushes = file_ != platform::kNoFile || (sink_.context != 0 && sink_.context != -1);
  if (!flushes) return;
  try {
    FlushBuffer();
  } catch (...) {
    LogError("<E> Moutstream");
    throw;
  }
}

void Moutstream::AllocateBuffer(int64_t size) { Resize(size < 1 ? kDefaultBufferSize : size); }

void Moutstream::LogCreation() const {
  LogTrace("_Moutstream this=%" PRIXPTR ", amode=%d, g_write=%" PRIXPTR,
           reinterpret_cast<uintptr_t>(this), mode_ == kMemory ? 0 : 1,
           reinterpret_cast<uintptr_t>(sink_.write));
}

void Moutstream::LogFunctions(const char* kind) const {
  LogTrace("Moutstream with %s fctions: this=%" PRIXPTR ", g_write=%" PRIXPTR, kind,
           reinterpret_cast<uintptr_t>(this), reinterpret_cast<uintptr_t>(sink_.write));
}

// ---- Memory -------------------------------------------------------------------------------

// Gives the buffer that capacity and one byte more, all behind the filled part zero.
bool Moutstream::Resize(int64_t capacity) {
  auto* block = static_cast<char*>(std::realloc(buffer_.get(), static_cast<size_t>(capacity) + 1));
  if (block == nullptr) {
    error_ = ENOMEM;
    return false;
  }
  static_cast<void>(buffer_.release());
  buffer_.reset(block);
  std::memset(block + filled_, 0, static_cast<size_t>(capacity - filled_) + 1);
  capacity_ = capacity;
  return true;
}

// Doubles up to a million bytes, then grows by a million and four per cent.
bool Moutstream::Grow(int64_t request) {
  constexpr int64_t kModerateFrom = 1'000'000;
  constexpr int64_t kSmallest = 1024;
  int64_t increment = capacity_;
  if (capacity_ > kModerateFrom) increment = std::min(capacity_, capacity_ / 25 + kModerateFrom);
  increment = std::max({increment, kSmallest, request});
  if (increment > INT64_MAX - 1 - capacity_) {
    error_ = ENOMEM;
    return false;
  }
  return Resize(capacity_ + increment);
}

std::string_view Moutstream::GetWholeBuffer() const {
  if (error_ != 0) throw std::bad_alloc();
  return GetBuffer();
}

// ---- Writing ------------------------------------------------------------------------------

bool Moutstream::WriteBlock(const void* data, int64_t length) {
  if (error_ != 0) return false;
  if (length <= 0) return true;
  switch (mode_) {
    case kMemory:
      return WriteToMemory(static_cast<const char*>(data), length);
    case kBuffered:
      return WriteBuffered(static_cast<const char*>(data), length);
    case kCounting:
      Count(length);
      return true;
  }
  return false;
}

bool Moutstream::WriteToMemory(const char* data, int64_t length) {
  if (length >= capacity_ - filled_ && !Grow(length)) return false;
  std::memcpy(buffer_.get() + filled_, data, static_cast<size_t>(length));
  filled_ += length;
  return true;
}

bool Moutstream::WriteBuffered(const char* data, int64_t length) {
  int ex_pos = 1;
  try {
    while (length > 0) {
      ex_pos = 2;
      if (filled_ == capacity_ && !FlushBuffer()) return false;
      ex_pos = 3;
      const int64_t count = std::min(length, capacity_ - filled_);
      std::memcpy(buffer_.get() + filled_, data, static_cast<size_t>(count));
      filled_ += count;
      data += count;
      length -= count;
    }
  } catch (...) {
    LogError("<E> WriteBlock ex_pos=%d, s=%" PRIXPTR ", bufpos=%d, len=%d, bufsize=%d", ex_pos,
             reinterpret_cast<uintptr_t>(data), static_cast<int>(filled_), static_cast<int>(length),
             static_cast<int>(capacity_));
    throw;
  }
  return true;
}

bool Moutstream::FlushBuffer() {
  if (mode_ != kBuffered || filled_ == 0) return error_ == 0;
  if (error_ != 0) return false;
  int64_t count = 0;
  try {
    errno = 0;
    count = sink_.write(sink_.context, buffer_.get(), filled_);
  } catch (...) {
    LogError("<E> FlushBuffer ex_pos=%d, this=%" PRIXPTR
             ", kolik=%d, IsBadReadPtr=%d, gen_write=%" PRIXPTR ", g_write=%" PRIXPTR,
             1, reinterpret_cast<uintptr_t>(this), static_cast<int>(filled_), 0,
             reinterpret_cast<uintptr_t>(&WriteFile), reinterpret_cast<uintptr_t>(sink_.write));
    error_ = EIO;  // nobody knows how much of it was written
    throw;
  }
  if (count != filled_) {
    error_ = errno != 0 ? errno : EIO;
    return false;
  }
  written_ += filled_;
  filled_ = 0;
  return true;
}

}  // namespace mimora

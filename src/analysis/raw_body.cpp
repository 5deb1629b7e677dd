// Copyright (c) 2026 the mimora developers.
#include "analysis/raw_body.h"

#include <iterator>
#include <string_view>
#include <utility>

#include "diag/result.h"
#include "platform/platform.h"
#include "stream/stream_window.h"

namespace mimora {
namespace {

// A piece of the source.
struct Range {
  int64_t start;
  int64_t length;
};

Range BodyRange(const Bodypart& part, int32_t offset) {
  return {part.BodyStart + offset, kWholeStream};
}

Range BodypartRange(const Bodypart& part, int32_t offset) {
  const bool root = part.Parent == nullptr;
  const int64_t size = part.BodyStart + part.BodyLength - part.PartStart;
  return {part.PartStart + offset, root ? kWholeStream : size - offset};
}

int32_t ReadRange(Minstream* in, Range range, void* buffer, uint32_t* size) {
  if (in == nullptr) return kNotOpen;
  StreamWindow window(*in, range.start, range.length);
  *size = static_cast<uint32_t>(window.Stream().ReadBlock(static_cast<char*>(buffer), *size));
  return in->GetError();
}

// Copies exactly WANTED bytes, if the range has as many; counts those that were written.
Result SaveRange(Minstream& in, Range range, uint32_t wanted, int file, uint32_t& written) {
  StreamWindow window(in, range.start, range.length);
  while (written < wanted) {
    const std::string_view run = window.Stream().NextRun().substr(0, wanted - written);
    if (run.empty()) return kReadFailed;
    if (platform::Write(file, run.data(), std::ssize(run)) != std::ssize(run)) return kWriteFailed;
    window.Stream().Take(run.size());
    written += static_cast<uint32_t>(run.size());
  }
  return kOk;
}

// A file that is removed again unless it is kept, also when a callback throws. Never a device that
// was written to.
class Removal {
 public:
  explicit Removal(const char* name) : name_(name) {}
  ~Removal() {
    if (name_ != nullptr && platform::IsRegularFile(name_)) platform::Remove(name_);
  }
  Removal(const Removal&) = delete;
  Removal& operator=(const Removal&) = delete;

  void Keep() { name_ = nullptr; }

 private:
  const char* name_;
};

}  // namespace

int32_t ReadBodyText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                     uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  return ReadRange(in != nullptr ? in : part->BodyStream, BodyRange(*part, offset), buffer, size);
}

int32_t ReadBodypartText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                         uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  return ReadRange(in != nullptr ? in : part->BodyStream, BodypartRange(*part, offset), buffer,
                   size);
}

int32_t SaveText(const Bodypart* part, Minstream* in, const char* file_name, bool body_only,
                 int32_t offset, uint32_t* count) {
  if (part == nullptr || count == nullptr) return kNotOpen;
  if (in == nullptr) in = part->BodyStream;
  if (in == nullptr) return kNotOpen;
  const platform::OpenFile file(file_name != nullptr ? platform::OpenForWriting(file_name)
                                                     : platform::kNoFile);
  if (file.Number() == platform::kNoFile) return kOutputNotOpened;
  Removal removal(file_name);
  const uint32_t wanted = std::exchange(*count, 0);
  const Range range = body_only ? BodyRange(*part, offset) : BodypartRange(*part, offset);
  const Result result = SaveRange(*in, range, wanted, file.Number(), *count);
  if (result != kOk) return result;
  removal.Keep();
  return in->GetError();
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
//
// Sources for stream tests: one text behind every kind of input stream, in every size of piece.
#ifndef MIMORA_TESTS_SUPPORT_SOURCES_H_
#define MIMORA_TESTS_SUPPORT_SOURCES_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "platform/platform.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"
#include "support/drip_source.h"

namespace mimora::testing {

// A file with that text, gone with the object.
class TextFile {
 public:
  explicit TextFile(std::string_view text) {
    platform::Close(platform::CreateTemporary(name_));
    std::ofstream(name_, std::ios::binary) << text;
  }
  ~TextFile() { platform::Remove(name_.c_str()); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  const char* Name() const { return name_.c_str(); }

 private:
  std::string name_;
};

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline MemorySource SourceOf(std::string_view text) {
  return {.data = text.data(), .length = std::ssize(text)};
}

constexpr int64_t kBufferSizes[] = {1, 2, 3, 7, 64, 4096};

// Calls CHECK with a stream over the text for every kind of source, every buffer size and short
// reads. Where the bytes come from must never show.
inline void ForEverySource(std::string_view text, const std::function<void(Minstream&)>& check) {
  const auto check_with = [&check](const char* kind, auto... source) {
    SCOPED_TRACE(kind);
    Minstream in(source...);
    check(in);
  };
  check_with("memory", SourceOf(text));
  const TextFile file(text);
  for (const int64_t size : kBufferSizes) {
    SCOPED_TRACE(::testing::Message() << "buffer of " << size);
    // One failure is enough to read.
    if (::testing::Test::HasFailure()) return;
    check_with("file", FileSource{.name = file.Name()}, size);
    for (const int64_t step : {int64_t{1}, int64_t{5}, DripSource::kNever}) {
      SCOPED_TRACE(::testing::Message() << "at most " << step << " bytes a read");
      DripSource reading(text, step), pointing(text, step);
      check_with("read callback", reading.Reading(), size);
      check_with("read-pointer callback", pointing.Pointing(), size);
    }
  }
}

inline std::string TextOf(const Moutstream& out) { return std::string(out.GetBuffer()); }

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_SOURCES_H_

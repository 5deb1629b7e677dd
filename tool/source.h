// Copyright (c) 2026 the mimora developers.
//
// The files that messages come from.
#ifndef MIMORA_TOOL_SOURCE_H_
#define MIMORA_TOOL_SOURCE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "tool/descriptor.h"

namespace mimora::tool {

// A read-only private mapping of a whole file; empty when nothing is mapped.
class Mapping {
 public:
  Mapping() = default;
  // Leaves the mapping empty when the file cannot be mapped.
  Mapping(int descriptor, std::size_t size);
  Mapping(Mapping&& other) noexcept;
  Mapping& operator=(Mapping&& other) noexcept;
  ~Mapping();

  std::string_view Bytes() const { return {static_cast<const char*>(address_), size_}; }

 private:
  void* address_ = nullptr;
  std::size_t size_ = 0;
};

// The bytes of one message file: mapped when the system can map it, so that a mailbox of many
// gigabytes costs no memory, otherwise read into memory (pipes, standard input).
class Source {
 public:
  // PATH "-" is the standard input. Throws std::system_error when the file cannot be read.
  explicit Source(const std::string& path);

  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  std::string_view Bytes() const { return text_.empty() ? mapping_.Bytes() : text_; }

 private:
  Mapping mapping_;
  std::string text_;
};

// A message for the library to open by its name and to move about in. What comes through a pipe is
// copied into a temporary file, which has no entry in any directory.
class NamedFile {
 public:
  // PATH "-" is the standard input. Throws std::system_error.
  explicit NamedFile(const std::string& path);

  // Good as long as the object.
  const std::string& Name() const { return name_; }

 private:
  void CopyFrom(int descriptor);
  static void CheckSize(std::size_t size);

  std::string name_;
  Descriptor copy_;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_SOURCE_H_

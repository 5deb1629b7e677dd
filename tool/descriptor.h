// Copyright (c) 2026 the mimora developers.
//
// Files of the system, read and written to the end whatever comes between.
#ifndef MIMORA_TOOL_DESCRIPTOR_H_
#define MIMORA_TOOL_DESCRIPTOR_H_

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace mimora::tool {

// SUBJECT, if any, stands in front of the reason.
[[noreturn]] inline void ThrowErrno(const std::string& subject = "") {
  if (subject.empty()) throw std::system_error(errno, std::generic_category());
  throw std::system_error(errno, std::generic_category(), subject);
}

// A file that is closed at the end.
class Descriptor {
 public:
  Descriptor() = default;
  // Takes over what a function of the system answered. Throws std::system_error when that is none.
  explicit Descriptor(int number, const std::string& subject = "") : number_(number) {
    if (number_ < 0) ThrowErrno(subject);
  }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  int Number() const { return number_; }
  // Whether all that was written has arrived, as far as the system tells.
  bool Close() { return number_ < 0 || ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_ = -1;
};

// Hands everything up to the end to TAKE, block by block. Throws std::system_error.
template <typename Take>
void ReadAll(int descriptor, Take take) {
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count == 0) return;
    if (count > 0) {
      take(std::string_view(block.data(), static_cast<std::size_t>(count)));
    } else if (errno != EINTR) {
      ThrowErrno();
    }
  }
}

// Throws std::system_error.
inline void WriteAll(int descriptor, std::string_view bytes, const std::string& subject = "") {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      ThrowErrno(subject);
    }
  }
}

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_DESCRIPTOR_H_

// Copyright (c) 2026 the mimora developers.
#include "tool/source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace mimora::tool {
namespace {

[[noreturn]] void ThrowErrno() { throw std::system_error(errno, std::generic_category()); }

class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (number_ < 0) ThrowErrno();
  }
  ~Descriptor() { ::close(number_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }

 private:
  const int number_;
};

std::string ReadAll(int descriptor) {
  std::string text;
  std::array<char, 65536> block;
  for (;;) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count == 0) return text;
    if (count > 0) {
      text.append(block.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      ThrowErrno();
    }
  }
}

}  // namespace

Mapping::Mapping(int descriptor, std::size_t size) {
  void* address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
  if (address == MAP_FAILED) return;
  address_ = address;
  size_ = size;
  // Messages are read from their first byte to their last; a refusal costs speed only.
  ::madvise(address_, size_, MADV_SEQUENTIAL);
}

Mapping::Mapping(Mapping&& other) noexcept
    : address_(std::exchange(other.address_, nullptr)), size_(std::exchange(other.size_, 0)) {}

Mapping& Mapping::operator=(Mapping&& other) noexcept {
  std::swap(address_, other.address_);
  std::swap(size_, other.size_);
  return *this;
}

Mapping::~Mapping() {
  if (address_ != nullptr) ::munmap(address_, size_);
}

Source::Source(const std::string& path) {
  if (path == "-") {
    text_ = ReadAll(STDIN_FILENO);
    return;
  }
  const Descriptor file(path);
  struct stat status;
  if (::fstat(file.Number(), &status) != 0) ThrowErrno();
  // Files that the kernel makes up as they are read call themselves regular and empty, so only
  // a size above 0 is believed.
  if (S_ISREG(status.st_mode) && status.st_size > 0)
    mapping_ = Mapping(file.Number(), static_cast<std::size_t>(status.st_size));
  if (mapping_.Bytes().empty()) text_ = ReadAll(file.Number());
}

}  // namespace mimora::tool

// Copyright (c) 2026 the mimora developers.
#include "tool/source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace mimora::tool {
namespace {

// The library opens no larger ones by their names.
constexpr std::size_t kLargestNamedFile = INT32_MAX;

Descriptor OpenToRead(const std::string& path) {
  return Descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::string ReadText(int descriptor) {
  std::string text;
  ReadAll(descriptor, [&text](std::string_view block) { text += block; });
  return text;
}

// Files that the kernel makes up as they are read call themselves regular and empty, so only a
// size above 0 is believed.
std::size_t KnownSize(int descriptor) {
  struct stat status;
  if (::fstat(descriptor, &status) != 0) ThrowErrno();
  return S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
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
    text_ = ReadText(STDIN_FILENO);
    return;
  }
  const Descriptor file = OpenToRead(path);
  const std::size_t size = KnownSize(file.Number());
  if (size > 0) mapping_ = Mapping(file.Number(), size);
  if (mapping_.Bytes().empty()) text_ = ReadText(file.Number());
}

NamedFile::NamedFile(const std::string& path) : name_(path) {
  if (path == "-") {
    CopyFrom(STDIN_FILENO);
    return;
  }
  const Descriptor file = OpenToRead(path);
  const std::size_t size = KnownSize(file.Number());
  if (size == 0) CopyFrom(file.Number());
  CheckSize(size);
}

void NamedFile::CopyFrom(int descriptor) {
  std::string path = std::filesystem::temp_directory_path() / "mimora.XXXXXX";
  copy_ = Descriptor(::mkostemp(path.data(), O_CLOEXEC), path);
  ::unlink(path.c_str());
  std::size_t size = 0;
  ReadAll(descriptor, [&](std::string_view block) {
    CheckSize(size += block.size());
    WriteAll(copy_.Number(), block);
  });
  name_ = "/proc/self/fd/" + std::to_string(copy_.Number());
}

void NamedFile::CheckSize(std::size_t size) {
  if (size > kLargestNamedFile)
    throw std::system_error(std::make_error_code(std::errc::file_too_large));
}

}  // namespace mimora::tool

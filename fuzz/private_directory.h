// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_FUZZ_PRIVATE_DIRECTORY_H_
#define MIMORA_FUZZ_PRIVATE_DIRECTORY_H_

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "fuzz.h"

namespace mimora::fuzz {

// A directory that nobody else uses, gone with the object.
class PrivateDirectory {
 public:
  PrivateDirectory() : path_((std::filesystem::temp_directory_path() / "fuzz.XXXXXX").string()) {
    FUZZ_CHECK(::mkdtemp(path_.data()) != nullptr);
  }
  ~PrivateDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace mimora::fuzz

#endif  // MIMORA_FUZZ_PRIVATE_DIRECTORY_H_

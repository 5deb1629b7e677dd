// Copyright (c) 2026 the mimora developers.
//
// Runs a target on the files and directories that are named, once each.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz.h"

namespace fs = std::filesystem;

namespace {

int files = 0;

void Replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  // Told beforehand: a target that fails does not come back.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  // Of just that size, as libFuzzer has it.
  const mimora::fuzz::ExactCopy copy(bytes);
  mimora::fuzz::CheckInput({reinterpret_cast<const uint8_t*>(copy.Text().data()), bytes.size()});
  ++files;
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    if (!fs::is_directory(arguments[i])) {
      Replay(arguments[i]);
      continue;
    }
    for (const auto& entry : fs::directory_iterator(arguments[i]))
      if (entry.is_regular_file()) Replay(entry.path());
  }
  if (files == 0) std::fprintf(stderr, "nothing to replay\n");
  return files == 0 ? 1 : 0;
}

// Copyright (c) 2026 the mimora developers.
#include "corpus.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace mimora::bench {
namespace {

void RequireOpen(const std::ifstream& file, const std::string& path) {
  if (file) return;
  std::fprintf(stderr, "cannot read %s\n", path.c_str());
  std::exit(1);
}

std::string FileOfMessage(const std::string& folder, size_t number) {
  const std::string digits = std::to_string(number);
  return folder + "/" + std::string(5 - digits.size(), '0') + digits + ".eml";
}

}  // namespace

Contents& Contents::operator+=(const Contents& other) {
  leaves += other.leaves;
  bytes += other.bytes;
  return *this;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  RequireOpen(file, path);
  std::string text(std::filesystem::file_size(path), '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  return text;
}

Corpus::Corpus(const std::string& folder, const std::string& name)
    : text_(ReadFile(folder + "/" + name + ".mail")) {
  std::ifstream index(folder + "/" + name + ".index");
  RequireOpen(index, name + ".index");
  size_t offset = 0;
  size_t size = 0;
  for (Contents contents; index >> offset >> size >> contents.leaves >> contents.bytes;) {
    messages_.push_back({std::string_view(text_).substr(offset, size),
                         FileOfMessage(folder + "/" + name, messages_.size()), contents});
  }
}

}  // namespace mimora::bench

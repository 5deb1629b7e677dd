// Copyright (c) 2026 the mimora developers.
#include "tool/new_file.h"

#include <fcntl.h>
#include <unistd.h>

namespace mimora::tool {

NewFile::NewFile(const std::string& path)
    : path_(path),
      file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600), path) {}

NewFile::~NewFile() {
  if (!kept_) ::unlink(path_.c_str());
}

void NewFile::Write(std::string_view bytes) { WriteAll(file_.Number(), bytes, path_); }

void NewFile::Keep() {
  if (!file_.Close()) ThrowErrno(path_);
  kept_ = true;
}

}  // namespace mimora::tool

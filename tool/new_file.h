// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TOOL_NEW_FILE_H_
#define MIMORA_TOOL_NEW_FILE_H_

#include <string>
#include <string_view>

#include "tool/descriptor.h"

namespace mimora::tool {

// A file that was not there before and is readable by its owner only. It is gone again at the end
// unless it is kept. All throw std::system_error with the name in its text.
class NewFile {
 public:
  explicit NewFile(const std::string& path);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  void Write(std::string_view bytes);
  void Keep();

 private:
  const std::string path_;
  Descriptor file_;
  bool kept_ = false;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_NEW_FILE_H_

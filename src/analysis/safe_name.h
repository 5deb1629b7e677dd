// Copyright (c) 2026 the mimora developers.
//
// File names out of the names that senders choose.
#ifndef MIMORA_ANALYSIS_SAFE_NAME_H_
#define MIMORA_ANALYSIS_SAFE_NAME_H_

#include <string>
#include <string_view>
#include <unordered_map>

namespace mimora {

// The name without what makes it dangerous as the name of a file: no directory, no control
// characters or marks that turn the direction of writing, no dots and blanks at its ends, not the
// name of a device, not too long. Empty when nothing is left.
std::string SafeFileName(std::string_view name);

// Names for the files of one directory, told apart even where letter case is not.
class UniqueNames {
 public:
  // The name itself, or with " (2)", " (3)"... in front of its extension: never the same twice.
  std::string Next(const std::string& name);

 private:
  std::unordered_map<std::string, int> used_;  // in upper case, with the last number given out
};

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_SAFE_NAME_H_

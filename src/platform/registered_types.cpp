// Copyright (c) 2026 the mimora developers.
#include <fstream>
#include <sstream>
#include <string>
#include <unordered_map>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora::platform {
namespace {

constexpr const char* kTypesFile = "/etc/mime.types";
constexpr const char* kGlobsFile = "/usr/share/mime/globs2";

// From extensions in upper case, without their dots. Of several types the first one stays.
using Types = std::unordered_map<std::string, std::string>;

// Lines of a type and its extensions.
void ReadTypes(const std::string& name, Types& types) {
  std::ifstream file(name);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string type;
    words >> type;
    for (std::string extension; words >> extension;) types.emplace(UpperCase(extension), type);
  }
}

// Lines "weight:type:pattern", those of the greatest weight first; behind a third colon are flags,
// of patterns that are not meant for every file.
void ReadGlobs(const char* name, Types& types) {
  std::ifstream file(name);
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string weight, type, pattern, flags;
    std::getline(fields, weight, ':');
    std::getline(fields, type, ':');
    std::getline(fields, pattern, ':');
    std::getline(fields, flags);
    const bool is_extension =
        pattern.starts_with("*.") && pattern.find_first_of("*?[.", 2) == std::string::npos;
    if (is_extension && flags.empty()) types.emplace(UpperCase(pattern.substr(2)), type);
  }
}

Types ReadAll() {
  Types types;
  const auto named = ReadSetting("Mime_Types");
  ReadTypes(named.value_or(kTypesFile), types);
  if (!named) ReadGlobs(kGlobsFile, types);
  return types;
}

}  // namespace

std::optional<std::string> RegisteredType(std::string_view extension) {
  static const Types types = ReadAll();
  const auto found = types.find(UpperCase(extension));
  if (found == types.end()) return std::nullopt;
  return found->second;
}

}  // namespace mimora::platform

// Copyright (c) 2026 the mimora developers.
//
// The order of the folders: a file includes its own folder and those below, and only the platform
// folder knows the system.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

const std::map<std::string, int> kFloors = {
    {"platform", 0}, {"diag", 1}, {"stream", 2}, {"codec", 3}, {"mime", 4},
    {"analysis", 5}, {"html", 5}, {"smime", 5},  {"util", 5},  {"api", 6}};

// Headers of the C++ standard library have no suffix; of the others the sources use these.
const std::set<std::string> kOtherHeaders = {"emmintrin.h"};

struct Include {
  bool system;
  std::string name;
};

std::optional<Include> ParseInclude(const std::string& line) {
  constexpr const char* kDirective = "#include ";
  if (!line.starts_with(kDirective)) return std::nullopt;
  const size_t open = line.find_first_of("<\"");
  const size_t close = line.find_first_of(">\"", open + 1);
  if (open == std::string::npos || close == std::string::npos) return std::nullopt;
  return Include{line[open] == '<', line.substr(open + 1, close - open - 1)};
}

TEST(Structure, IncludesPointDownAndOnlyThePlatformKnowsTheSystem) {
  int seen = 0;
  for (const auto& entry : fs::recursive_directory_iterator(MIMORA_SOURCE_DIR "/src")) {
    if (!entry.is_regular_file()) continue;
    const std::string folder = entry.path().parent_path().filename();
    SCOPED_TRACE(entry.path());
    ASSERT_TRUE(kFloors.contains(folder));
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      const auto include = ParseInclude(line);
      if (!include) continue;
      ++seen;
      const std::string& name = include->name;
      if (include->system) {
        const bool standard = name.find('.') == std::string::npos || kOtherHeaders.contains(name);
        EXPECT_TRUE(standard || folder == "platform") << name;
        continue;
      }
      const std::string target = name.substr(0, name.find('/'));
      if (target == "mimora") {
        EXPECT_EQ(folder, "api") << name;
        continue;
      }
      ASSERT_TRUE(kFloors.contains(target)) << name;
      EXPECT_TRUE(target == folder || kFloors.at(target) < kFloors.at(folder)) << name;
    }
  }
  EXPECT_GT(seen, 100);
}

}  // namespace

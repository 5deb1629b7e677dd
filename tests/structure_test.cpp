// Copyright (c) 2026 the mimora developers.
//
// The order of the folders: a file includes its own folder and those below, and only the platform
// folder knows the system.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

const std::map<std::string, int> kFloors = {
    {"platform", 0}, {"diag", 1}, {"stream", 2}, {"codec", 3}, {"mime", 4},
    {"analysis", 5}, {"html", 5}, {"smime", 5},  {"util", 5},  {"api", 6}};

// Headers of the C++ standard library have no suffix; of the others the sources use these.
const std::set<std::string> kOtherHeaders = {"emmintrin.h", "immintrin.h"};

TEST(Structure, IncludesPointDownAndOnlyThePlatformKnowsTheSystem) {
  const std::string directive = "#include ";
  int seen = 0;
  for (const auto& entry : fs::recursive_directory_iterator(MIMORA_SOURCE_DIR "/src")) {
    if (!entry.is_regular_file()) continue;
    const std::string folder = *fs::relative(entry.path(), MIMORA_SOURCE_DIR "/src").begin();
    ASSERT_TRUE(kFloors.contains(folder)) << folder;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      SCOPED_TRACE(entry.path().string() + ": " + line);
      if (!line.starts_with(directive)) continue;
      ++seen;
      const std::string name = line.substr(directive.size() + 1);
      const std::string target = name.substr(0, name.find_first_of("/>\""));
      if (line[directive.size()] == '<') {
        const bool standard =
            line.find(".h>") == std::string::npos || kOtherHeaders.contains(target);
        EXPECT_TRUE(standard || folder == "platform" || (folder == "smime" && target == "openssl"));
      } else if (target == "mimora") {
        EXPECT_EQ(folder, "api");
      } else {
        ASSERT_TRUE(kFloors.contains(target));
        EXPECT_TRUE(target == folder || kFloors.at(target) < kFloors.at(folder));
      }
    }
  }
  EXPECT_GT(seen, 100);
}

}  // namespace

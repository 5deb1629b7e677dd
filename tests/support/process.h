// Copyright (c) 2026 the mimora developers.
//
// What is logged is decided once per process: work on the log runs in a process of its own, which
// shows on its standard error what the callback and the log got.
#ifndef MIMORA_TESTS_SUPPORT_PROCESS_H_
#define MIMORA_TESTS_SUPPORT_PROCESS_H_

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "support/sources.h"

namespace mimora::testing {

// Both in a folder that only this process knows.
inline std::string log_file;
inline std::string switch_file;

inline void Show(const char* line) { std::fprintf(stderr, "%s|", line); }

// Shows the log, with "@" for the prefix of a line and "*" for an address, and empties it.
inline void ShowLog() {
  if (!std::filesystem::is_regular_file(log_file)) return Show("no file");
  constexpr std::string_view kPrefix = "0000-00-00 00:00:00 [00000000:00000000] ";
  std::istringstream log(ReadFile(log_file));
  for (std::string line; std::getline(log, line);) {
    std::string start = line.substr(0, kPrefix.size());
    for (char& c : start) c = std::isxdigit(static_cast<unsigned char>(c)) != 0 ? '0' : c;
    if (start == kPrefix) line.replace(0, kPrefix.size(), "@");
    for (size_t at = 0; (at = line.find('=', at) + 1) != 0;) {
      const size_t end = std::min(line.find_first_not_of("0123456789ABCDEF", at), line.size());
      if (end - at >= 6) line.replace(at, end - at, "*");
    }
    std::fprintf(stderr, "%s%s", line.c_str(), log.eof() ? "" : "\n");
  }
  std::ofstream(log_file, std::ios::trunc);
}

// FILES: "l" makes the log file, "s" the switch file, a capital letter a folder of that name.
inline void MakeFiles(std::string_view files) {
  for (const char c : files) {
    const std::string& name = c == 'l' || c == 'L' ? log_file : switch_file;
    if (c == 'l' || c == 's') std::ofstream(name, std::ios::app);
    if (c == 'L' || c == 'S') std::filesystem::create_directory(name);
  }
}

inline void ExpectShown(const std::string& name, std::string_view files,
                        const std::function<void()>& work, const std::string& want) {
  SCOPED_TRACE(name);
  const auto run = [&] {
    std::string folder = (std::filesystem::temp_directory_path() / "log_test.XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) ::_exit(1);
    log_file = folder + "/mimora.err";
    switch_file = folder + "/mimora1.err";
    MakeFiles(files);
    ::setenv("MIMORA_KEY20", ("a;b;c;" + folder).c_str(), 1);
    work();
    std::filesystem::remove_all(folder);
    ::_exit(0);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ::testing::Matcher<const std::string&> shown = ::testing::Eq(want);
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), shown);
}

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_PROCESS_H_

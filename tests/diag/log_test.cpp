// Copyright (c) 2026 the mimora developers.
//
// What is logged is decided once per process: every case here runs in a process of its own, which
// shows on its standard error what the callback and the log got.
#include "diag/log.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <string_view>

#include "diag/checks.h"
#include "mimora/mimora.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

// Both in a folder that only this process knows.
std::string log_file;
std::string switch_file;

void Show(const char* line) { std::fprintf(stderr, "%s|", line); }
void ShowLength(const char* line) { std::fprintf(stderr, "%zu|", std::strlen(line)); }

// Shows the log, with "@" for the prefix of a line, and empties it.
void ShowLog() {
  if (!std::filesystem::is_regular_file(log_file)) return Show("no file");
  const std::regex prefix(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \[[0-9A-F]{8}:[0-9A-F]{8}\] )");
  std::fputs(std::regex_replace(ReadFile(log_file), prefix, "@").c_str(), stderr);
  std::ofstream(log_file, std::ios::trunc);
}

// FILES: "l" makes the log file, "s" the switch file, a capital letter a folder of that name.
void MakeFiles(std::string_view files) {
  for (const char c : files) {
    const std::string& name = c == 'l' || c == 'L' ? log_file : switch_file;
    c == 'l' || c == 's' ? void(std::ofstream(name))
                         : void(std::filesystem::create_directory(name));
  }
}

template <typename Work>
void ExpectShown(const char* name, std::string_view files, Work work, const std::string& want) {
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

// ---- Decisions ----------------------------------------------------------------------------------

// What a process does, letter by letter.
void Do(std::string_view script) {
  for (const char c : script) {
    if (c == 't') LogTrace("trace");
    if (c == 'e') LogError("error");
    if (c == 'd') LogTraceWithData("x", 1, "dump");
    if (c == 'c') P_SetQQ_callback(Show);
    if (c == 'n') P_SetQQ_callback(nullptr);
    if (c == '+') MakeFiles("ls");
    if (c == '-') std::filesystem::remove(log_file), std::filesystem::remove(switch_file);
    if (c == '0') std::filesystem::remove_all(log_file.substr(0, log_file.rfind('/')));
  }
}

#define DUMP "@dump\nBINARY DATA START size = 1\nx\nBINARY DATA END\n"

TEST(Log, DecidesOnceWhatIsWritten) {
  struct Case {
    const char* name;
    const char* files;
    const char* script;
    const char* want;
  };
  constexpr Case kCases[] = {
      {"no file", "", "ted", "no file|"},
      {"only the switch file", "s", "ted", "no file|"},
      {"only the log file", "l", "te", "@error\n"},
      {"both files", "ls", "te", "@trace\n@error\n"},
      {"the log file is a folder", "Ls", "ted", "no file|"},
      {"the switch file is a folder", "lS", "te", "@error\n"},
      {"a dump first switches the trace on", "l", "dte", DUMP "@trace\n@error\n"},
      {"a trace first switches the dumps off", "l", "td", ""},
      {"an error first decides nothing about the trace", "ls", "ete", "@error\n@trace\n@error\n"},
      {"nor about the dumps", "l", "edt", "@error\n" DUMP "@trace\n"},
      {"files that come later change nothing", "", "te+ted", ""},
      {"a trace that is switched on brings the errors with it", "", "e+te", "@trace\n@error\n"},
      {"a dump does not", "", "e+de", DUMP},
      {"files that go later change nothing", "ls", "te-te", "@trace\n@error\n"},
      {"a log that can't be opened any more is lost", "ls", "te0ted", "no file|"},
      {"the callback takes the trace and nothing else", "ls", "cted", "trace|@error\n" DUMP},
      {"the callback gives the trace back", "ls", "ctnt", "trace|@trace\n"},
      {"the callback needs no file", "", "cte", "trace|no file|"},
      {"the callback is heard when the trace is off", "l", "tctnt", "trace|"},
      {"the callback decides nothing", "l", "ctdnt", "trace|" DUMP "@trace\n"},
  };
  for (const Case& c : kCases) {
    ExpectShown(
        c.name, c.files, [&] { Do(c.script), ShowLog(); }, c.want);
  }
}

// ---- Lines --------------------------------------------------------------------------------------

TEST(Log, LineEndsBehindALineGoAndOthersStay) {
  const auto work = [] {
    LogTrace("a\nb\n\n");
    LogError("\n");
    LogTraceWithData(nullptr, 0, "c\n");
    P_SetQQ_callback(Show);
    LogTrace("a\nb\n\n");
    ShowLog();
  };
  const char* want = "a\nb|@a\nb\n@\n@c\nBINARY DATA START size = 0\n\nBINARY DATA END\n";
  ExpectShown("", "ls", work, want);
}

TEST(Log, LongLinesAreCut) {
  const std::string x(5000, 'x');
  const auto show_length = [] {
    std::fprintf(stderr, "%zu|", ReadFile(log_file).find('\n'));
    std::ofstream(log_file, std::ios::trunc);
  };
  const auto in_file = [&] {
    LogTrace("%s", x.c_str()), show_length();
    LogError("%s", x.c_str()), show_length();
  };
  ExpectShown("in the file with their prefix", "ls", in_file, "2047|2047|");
  const auto in_callback = [&] {
    P_SetQQ_callback(ShowLength);
    for (const int length : {2046, 2047, 2048, 5000}) LogTrace("%.*s", length, x.c_str());
    P_QQ(x.c_str());
    LogTrace("%.2046s\nmore", x.c_str());
  };
  ExpectShown("for the callback", "", in_callback, "2046|2047|2047|2047|2047|2046|");
}

TEST(Log, DumpsHaveNoCrAndTellTheSizeWithThem) {
  const auto work = [] {
    LogTraceWithData("\r\na\r\r\n%s\r", 9, "data of %d", 9), ShowLog();
    LogTraceWithData(nullptr, 5, "null"), ShowLog();
    LogTraceWithData("x", -1, "negative"), ShowLog();
    const std::string data = std::string(65535, 'x') + "\r\n" + std::string(70000, 'y');
    LogTraceWithData(data.data(), std::ssize(data), "long");
    const std::string want = std::string(65535, 'x') + "\n" + std::string(70000, 'y');
    Show(ReadFile(log_file).ends_with("\n" + want + "\nBINARY DATA END\n") ? "good" : "bad");
  };
  ExpectShown("", "l", work,
              "@data of 9\nBINARY DATA START size = 9\n\na\n%s\nBINARY DATA END\n"
              "@null\nBINARY DATA START size = 5\n\nBINARY DATA END\n"
              "@negative\nBINARY DATA START size = -1\n\nBINARY DATA END\ngood|");
}

TEST(Log, HasTheTextThatIsLoadedAsAMessage) {
  const auto work = [] {
    M_Bodypart* part = M_CreateMessage();
    M_LoadBodypartFromString(part, "a: b\r\n\r\nc", -1);
    M_DestroyMessage(part);
    const std::string log = ReadFile(log_file);
    const size_t start = log.find("BINARY DATA START");
    Show(log.substr(start, log.find("END", start) - start).c_str());
  };
  ExpectShown("", "ls", work, "BINARY DATA START size = 9\na: b\n\nc\nBINARY DATA |");
}

TEST(Log, PercentSignsOfAUserNeverAskForArguments) {
  for (const bool callback : {false, true}) {
    const auto work = [&] {
      P_SetQQ_callback(callback ? Show : nullptr);
      for (const char* text : {"100%% of 50%", "%s %n %*d %m", "%%%", "%%s%%%%", "%", ""})
        P_QQ(text);
      P_QQ(nullptr);
      if (!callback) ShowLog();
    };
    ExpectShown(callback ? "callback" : "file", "ls", work,
                callback ? "100% of 50%|%s %n %*d %m|%%|%s%%|%||"
                         : "@100% of 50%\n@%s %n %*d %m\n@%%\n@%s%%\n@%\n@\n");
  }
}

// The prefix that a line of now gets, as far as its minutes, and what identifies its writer.
std::string Prefix(pid_t process, pid_t thread) {
  const time_t now = std::time(nullptr);
  char date[32], prefix[64];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:", std::localtime(&now));
  std::snprintf(prefix, sizeof prefix, "%s..:.. [%08X:%08X] ", date, static_cast<unsigned>(process),
                static_cast<unsigned>(thread));
  return prefix;
}

void ShowWhetherPrefixIs(const std::string& prefix) {
  std::string line = ReadFile(log_file);
  line.replace(line.find(':') + 1, 5, "..:..");
  Show(line == prefix + "text\n" ? "good" : line.c_str());
}

TEST(Log, PrefixTellsLocalTimeProcessAndThread) {
  const auto work = [] {
    ::setenv("TZ", "AAA+11", 1);
    LogError("text");
    ShowWhetherPrefixIs(Prefix(::getpid(), ::gettid()));
  };
  ExpectShown("", "l", work, "good|");
}

// Mail servers fork: who logged before as the parent is another process and another thread now.
TEST(Log, PrefixTellsTheThreadOfAForkedChild) {
  const auto work = [] {
    LogError("parent");
    std::ofstream(log_file, std::ios::trunc);
    const pid_t child = ::fork();
    if (child == 0) LogError("text"), ::_exit(0);
    ::waitpid(child, nullptr, 0);
    ShowWhetherPrefixIs(Prefix(child, child));
  };
  ExpectShown("", "l", work, "good|");
}

// ---- Handle checks ------------------------------------------------------------------------------

// Of the two pages around it only the first can be read.
const char* EndOfReadablePage() {
  const auto size = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
  void* pages = ::mmap(nullptr, 2 * size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  char* end = static_cast<char*>(pages) + size;
  ::mprotect(end, size, PROT_NONE);
  return end;
}

TEST(Checks, RefuseEveryAddressThatIsNoHandle) {
  struct Case {
    const char* name;
    const void* handle;
    const char* want;
  };
  constexpr const char* kOther = "false|@checkinstream assert failure\n";
  constexpr const char* kFault = "false|@checkinstream exception\n@checkinstream assert failure\n";
  const uint32_t tag = 0;
  const char* end = EndOfReadablePage();
  const Case cases[] = {
      {"null", nullptr, kOther},
      {"another tag", &tag, kOther},
      {"an address that is never mapped", reinterpret_cast<void*>(16), kFault},
      {"an impossible address", reinterpret_cast<void*>(UINTPTR_MAX - 7), kFault},
      {"a page that can't be read", end, kFault},
      {"half a tag in front of such a page", end - 2, kFault},
      {"a whole one", end - 4, kOther},
  };
  for (const Case& c : cases) {
    const auto work = [&] { Show(checkinstream(c.handle, "") ? "true" : "false"), ShowLog(); };
    ExpectShown(c.name, "l", work, c.want);
  }
}

TEST(Checks, KnowTheirKindAndTraceAddressAndContext) {
  const auto work = [] {
    const uint32_t tags[] = {kBodypartSignature, kInstreamSignature, kOutstreamSignature};
    for (const auto check : {checkbodypart, checkinstream, checkoutstream})
      for (const uint32_t& tag : tags) Show(check(&tag, "") ? "1" : "0");
    P_SetQQ_callback(Show);
    checkbodypart(nullptr, "");
    checkinstream(reinterpret_cast<void*>(0xAB), "M_Some");
    checkoutstream(reinterpret_cast<void*>(0x1F), "");
  };
  ExpectShown("", "", work,
              "1|0|0|0|1|0|0|0|1|checkbodypart for bp=[0] |checkinstream for in=[AB] M_Some|"
              "checkoutstream for out=[1F] |");
}

// ---- Where the log is ---------------------------------------------------------------------------

TEST(LogFilePathFor, TakesTheFieldBehindTheThirdSemicolon) {
  struct Case {
    const char* name;
    const char* key20;
    const char* want;
  };
  constexpr Case kCases[] = {
      {"four fields", "a;b;c;/var/log", "/var/log/mimora.err"},
      {"a slash at the end", "a;b;c;/var/log/", "/var/log/mimora.err"},
      {"the root folder", "a;b;c;/", "/mimora.err"},
      {"a later semicolon is part of it", "a;b;c;x;y", "x;y/mimora.err"},
      {"empty fields in front", ";;;logs", "logs/mimora.err"},
      {"no semicolon: the file itself", "/x.log", "/x.log"},
      {"two semicolons: the file itself", "a;b;/c", "a;b;/c"},
      {"an empty field: the file itself", "a;b;c;", "a;b;c;"},
      {"nothing", "", ""},
  };
  for (const Case& c : kCases) EXPECT_EQ(LogFilePathFor(c.key20), c.want) << c.name;
}

// A setting that is too long counts as none.
TEST(Log, FindsTheSwitchFileBesideTheLogFile) {
  const auto show_for = [](const std::string& key20) {
    return [key20] {
      ::setenv("MIMORA_KEY20", key20.c_str(), 1);
      Show(GetLogFilePath() == key20 ? "itself" : GetLogFilePath().c_str());
      Show(GetLogSwitchFilePath().c_str());
    };
  };
  const std::string x(507, 'x');
  ExpectShown("a folder", "", show_for(";;;/no"), "/no/mimora.err|/no/mimora1.err|");
  ExpectShown("a file", "", show_for("/no/where.log"), "itself|/no/mimora1.err|");
  ExpectShown("511 bytes", "", show_for("/no/" + x), "itself|/no/mimora1.err|");
  ExpectShown("512 bytes", "", show_for("/now/" + x), "/var/log/mimora.err|/var/log/mimora1.err|");
}

}  // namespace
}  // namespace mimora::testing

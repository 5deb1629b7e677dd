// Copyright (c) 2026 the mimora developers.
//
// What is logged is decided once per process: every case here runs in a process of its own, which
// writes to its standard error what the log and the callback got.
#include "diag/log.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
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

// The folder that holds the log.
struct Folder {
  std::string path = (std::filesystem::temp_directory_path() / "log_test.XXXXXX").string();
  Folder() { path = ::mkdtemp(path.data()); }
  std::string Log() const { return path + "/mimora.err"; }
  std::string Switch() const { return path + "/mimora1.err"; }
  void MakeBoth() const {
    std::ofstream(Log(), std::ios::app);
    std::ofstream(Switch(), std::ios::app);
  }
};

// In the wanted texts "@ " stands for the prefix of a line, "no file" for a log that is not there.
// Lines that the callback gets come first, each with "|" behind it.
struct LogCase {
  const char* name;
  enum { kNone, kLog, kSwitch, kBoth } files;
  void (*work)(const Folder&);
  const char* want;
};

[[noreturn]] void Run(const LogCase& c) {
  const Folder folder;
  if (c.files == LogCase::kLog || c.files == LogCase::kBoth) std::ofstream(folder.Log());
  if (c.files == LogCase::kSwitch || c.files == LogCase::kBoth) std::ofstream(folder.Switch());
  ::setenv("MIMORA_KEY20", ("a;b;c;" + folder.path).c_str(), 1);
  c.work(folder);
  const bool there = std::filesystem::is_regular_file(folder.Log());
  const std::string log = there ? ReadFile(folder.Log()) : "no file";
  std::filesystem::remove_all(folder.path);
  const std::regex prefix(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \[[0-9A-F]{8}:[0-9A-F]{8}\] )");
  std::fputs(std::regex_replace(log, prefix, "@ ").c_str(), stderr);
  ::_exit(0);
}

void ExpectWritten(const LogCase& c) {
  SCOPED_TRACE(c.name);
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ::testing::Matcher<const std::string&> want = ::testing::Eq(std::string(c.want));
  EXPECT_EXIT(Run(c), ::testing::ExitedWithCode(0), want);
}

void Show(const char* line) { std::fprintf(stderr, "%s|", line); }
void ShowLength(const char* line) { std::fprintf(stderr, "%zu|", std::strlen(line)); }

void TraceAndError() {
  LogTrace("trace %d", 1);
  LogError("error %s", "two");
}

constexpr LogCase kDecisions[] = {
    {"no file", LogCase::kNone,
     [](const Folder&) {
       TraceAndError();
       LogTraceWithData("x", 1, "dump");
     },
     "no file"},
    {"only the switch file", LogCase::kSwitch, [](const Folder&) { TraceAndError(); }, "no file"},
    {"only the log file", LogCase::kLog, [](const Folder&) { TraceAndError(); }, "@ error two\n"},
    {"both files", LogCase::kBoth, [](const Folder&) { TraceAndError(); },
     "@ trace 1\n@ error two\n"},
    {"the log file is a folder", LogCase::kSwitch,
     [](const Folder& folder) {
       std::filesystem::create_directory(folder.Log());
       TraceAndError();
     },
     "no file"},
    {"the switch file is a folder", LogCase::kLog,
     [](const Folder& folder) {
       std::filesystem::create_directory(folder.Switch());
       TraceAndError();
     },
     "@ error two\n"},
    {"a dump first switches the trace on", LogCase::kLog,
     [](const Folder&) {
       LogTraceWithData("x", 1, "dump");
       TraceAndError();
     },
     "@ dump\nBINARY DATA START size = 1\nx\nBINARY DATA END\n@ trace 1\n@ error two\n"},
    {"a trace first switches the dumps off", LogCase::kLog,
     [](const Folder&) {
       LogTrace("trace");
       LogTraceWithData("x", 1, "dump");
     },
     ""},
    {"an error first decides nothing about the trace", LogCase::kBoth,
     [](const Folder&) {
       LogError("first");
       TraceAndError();
     },
     "@ first\n@ trace 1\n@ error two\n"},
    {"files that come later change nothing", LogCase::kNone,
     [](const Folder& folder) {
       TraceAndError();
       folder.MakeBoth();
       TraceAndError();
       LogTraceWithData("x", 1, "dump");
     },
     ""},
    {"a trace that is switched on brings the errors with it", LogCase::kNone,
     [](const Folder& folder) {
       LogError("lost");
       folder.MakeBoth();
       TraceAndError();
     },
     "@ trace 1\n@ error two\n"},
    {"files that go later change nothing", LogCase::kBoth,
     [](const Folder& folder) {
       TraceAndError();
       std::filesystem::remove(folder.Log());
       std::filesystem::remove(folder.Switch());
       TraceAndError();
     },
     "@ trace 1\n@ error two\n"},
    {"a log that can no longer be opened is lost in silence", LogCase::kBoth,
     [](const Folder& folder) {
       TraceAndError();
       std::filesystem::remove_all(folder.path);
       TraceAndError();
       LogTraceWithData("x", 1, "dump");
     },
     "no file"},
    {"the callback takes the trace and nothing else", LogCase::kBoth,
     [](const Folder&) {
       P_SetQQ_callback(Show);
       TraceAndError();
       LogTraceWithData("x", 1, "dump");
       P_SetQQ_callback(nullptr);
       LogTrace("file");
     },
     "trace 1|@ error two\n@ dump\nBINARY DATA START size = 1\nx\nBINARY DATA END\n@ file\n"},
    {"the callback needs no file", LogCase::kNone,
     [](const Folder&) {
       P_SetQQ_callback(Show);
       TraceAndError();
     },
     "trace 1|no file"},
    {"the callback is heard when the trace is off", LogCase::kLog,
     [](const Folder&) {
       LogTrace("lost");
       P_SetQQ_callback(Show);
       LogTrace("heard");
       P_SetQQ_callback(nullptr);
       LogTrace("lost");
     },
     "heard|"},
    {"the callback decides nothing", LogCase::kLog,
     [](const Folder&) {
       P_SetQQ_callback(Show);
       LogTrace("heard");
       LogTraceWithData("x", 1, "dump");
       P_SetQQ_callback(nullptr);
       LogTrace("trace");
     },
     "heard|@ dump\nBINARY DATA START size = 1\nx\nBINARY DATA END\n@ trace\n"},
};

TEST(Log, DecidesOnceWhatIsWritten) {
  for (const LogCase& c : kDecisions) ExpectWritten(c);
}

constexpr LogCase kTexts[] = {
    {"line ends behind a line go, others stay", LogCase::kBoth,
     [](const Folder&) {
       LogTrace("a\nb\n\n");
       LogError("\n");
       LogTraceWithData(nullptr, 0, "c\n");
       P_SetQQ_callback(Show);
       LogTrace("a\nb\n\n");
     },
     "a\nb|@ a\nb\n@ \n@ c\nBINARY DATA START size = 0\n\nBINARY DATA END\n"},
    {"a dump has no CR, and tells the size with them", LogCase::kLog,
     [](const Folder&) { LogTraceWithData("\r\na\r\r\n%s\r", 9, "data of %d", 9); },
     "@ data of 9\nBINARY DATA START size = 9\n\na\n%s\nBINARY DATA END\n"},
    {"a dump of nothing", LogCase::kLog,
     [](const Folder&) {
       LogTraceWithData(nullptr, 5, "null");
       LogTraceWithData("x", -1, "negative");
     },
     "@ null\nBINARY DATA START size = 5\n\nBINARY DATA END\n"
     "@ negative\nBINARY DATA START size = -1\n\nBINARY DATA END\n"},
    {"a long dump is whole", LogCase::kLog,
     [](const Folder& folder) {
       const std::string data = std::string(65535, 'x') + "\r\n" + std::string(70000, 'y');
       LogTraceWithData(data.data(), std::ssize(data), "long");
       const std::string log = ReadFile(folder.Log());
       const std::string want = data.substr(0, 65535) + data.substr(65536) + "\nBINARY DATA END\n";
       std::fputs(log.ends_with("\n" + want) ? "good " : "bad ", stderr);
       std::ofstream(folder.Log());
     },
     "good "},
    {"a text that is loaded as a message is dumped", LogCase::kBoth,
     [](const Folder& folder) {
       M_Bodypart* part = M_CreateMessage();
       M_LoadBodypartFromString(part, "a: b\r\n\r\nc", -1);
       M_DestroyMessage(part);
       const std::string log = ReadFile(folder.Log());
       const size_t end = log.find("END\n");
       std::fputs(log.substr(log.find("BINARY"), end - log.find("BINARY")).c_str(), stderr);
       std::ofstream(folder.Log());
     },
     "BINARY DATA START size = 9\na: b\n\nc\nBINARY DATA "},
    {"long lines are cut in the file, prefix included", LogCase::kBoth,
     [](const Folder& folder) {
       const std::string text(5000, 'x');
       for (const bool error : {false, true}) {
         error ? LogError("%s", text.c_str()) : LogTrace("%s", text.c_str());
         std::fprintf(stderr, "%zu ", ReadFile(folder.Log()).find('\n'));
         std::ofstream(folder.Log());
       }
     },
     "2047 2047 "},
    {"long lines are cut for the callback", LogCase::kNone,
     [](const Folder&) {
       P_SetQQ_callback(ShowLength);
       for (const size_t length : {2046u, 2047u, 2048u, 5000u}) {
         LogTrace("%s", std::string(length, 'x').c_str());
         P_QQ(std::string(length, 'x').c_str());
       }
       LogTrace("%s\nmore", std::string(2046, 'x').c_str());
     },
     "2046|2046|2047|2047|2047|2047|2047|2047|2046|no file"},
    {"percent signs of a user", LogCase::kBoth,
     [](const Folder&) {
       for (const bool callback : {false, true}) {
         P_SetQQ_callback(callback ? Show : nullptr);
         for (const char* text : {"100%% of 50%", "%s %n %d %5.3f %m", "%%%", "%%s %%%%", "", "%"})
           P_QQ(text);
         P_QQ(nullptr);
       }
     },
     "100% of 50%|%s %n %d %5.3f %m|%%|%s %%||%|"
     "@ 100% of 50%\n@ %s %n %d %5.3f %m\n@ %%\n@ %s %%\n@ \n@ %\n"},
};

TEST(Log, WritesLinesAndDumps) {
  for (const LogCase& c : kTexts) ExpectWritten(c);
}

// The local time and the identifiers of PROCESS and THREAD, which wrote the last line of the log.
bool PrefixIsOf(const Folder& folder, int process, int thread, time_t before) {
  std::string line = ReadFile(folder.Log());
  line.erase(0, line.rfind('\n', line.size() - 2) + 1);
  char ids[32];
  std::snprintf(ids, sizeof ids, " [%08X:%08X] ", static_cast<unsigned>(process),
                static_cast<unsigned>(thread));
  const auto stamp = [](time_t t) {
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", std::localtime(&t));
    return std::string(text.data());
  };
  const std::string time = line.substr(0, 19);
  const bool good = line.substr(19).starts_with(ids) && stamp(before) <= time &&
                    time <= stamp(std::time(nullptr));
  std::ofstream(folder.Log());
  return good;
}

TEST(Log, PrefixTellsLocalTimeProcessAndThread) {
  ExpectWritten({"", LogCase::kLog,
                 [](const Folder& folder) {
                   ::setenv("TZ", "AAA+11", 1);
                   const time_t before = std::time(nullptr);
                   LogError("text");
                   std::fputs(PrefixIsOf(folder, ::getpid(), ::gettid(), before) ? "good" : "bad",
                              stderr);
                 },
                 "good"});
}

// Mail servers fork: a child that logged before as its parent is another process and thread.
TEST(Log, PrefixTellsTheThreadOfAForkedChild) {
  ExpectWritten({"", LogCase::kLog,
                 [](const Folder& folder) {
                   LogError("parent");
                   const time_t before = std::time(nullptr);
                   const pid_t child = ::fork();
                   if (child == 0) {
                     LogError("child");
                     ::_exit(0);
                   }
                   ::waitpid(child, nullptr, 0);
                   std::fputs(PrefixIsOf(folder, child, child, before) ? "good" : "bad", stderr);
                 },
                 "good"});
}

// ---- Handle checks ------------------------------------------------------------------------------

// Two pages of which only the first can be read.
char* EndOfReadablePage() {
  const auto size = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
  void* pages = ::mmap(nullptr, 2 * size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  char* end = static_cast<char*>(pages) + size;
  ::mprotect(end, size, PROT_NONE);
  return end;
}

constexpr LogCase kChecks[] = {
    {"null", LogCase::kLog,
     [](const Folder&) {
       P_SetQQ_callback(Show);
       std::fputs(checkbodypart(nullptr, "") ? "true" : "false", stderr);
     },
     "checkbodypart for bp=[0] |false@ checkbodypart assert failure\n"},
    {"unreadable", LogCase::kLog,
     [](const Folder&) {
       P_SetQQ_callback(Show);
       const bool good = checkinstream(reinterpret_cast<void*>(0xAB), "context");
       std::fputs(good ? "true" : "false", stderr);
     },
     "checkinstream for in=[AB] context|false"
     "@ checkinstream exception\n@ checkinstream assert failure\n"},
    {"a page that may not be read", LogCase::kLog,
     [](const Folder&) { checkoutstream(EndOfReadablePage(), ""); },
     "@ checkoutstream exception\n@ checkoutstream assert failure\n"},
    {"half a tag in front of such a page", LogCase::kLog,
     [](const Folder&) { checkbodypart(EndOfReadablePage() - 2, ""); },
     "@ checkbodypart exception\n@ checkbodypart assert failure\n"},
    {"another tag that ends with its page", LogCase::kLog,
     [](const Folder&) { checkbodypart(EndOfReadablePage() - 4, ""); },
     "@ checkbodypart assert failure\n"},
    {"another kind", LogCase::kLog,
     [](const Folder&) {
       const uint32_t tags[] = {kBodypartSignature, kInstreamSignature, kOutstreamSignature};
       for (const auto check : {checkbodypart, checkinstream, checkoutstream})
         for (const uint32_t& tag : tags) std::fputs(check(&tag, "") ? "1" : "0", stderr);
     },
     "100010001"
     "@ checkbodypart assert failure\n@ checkbodypart assert failure\n"
     "@ checkinstream assert failure\n@ checkinstream assert failure\n"
     "@ checkoutstream assert failure\n@ checkoutstream assert failure\n"},
    {"the verdict without a log", LogCase::kNone,
     [](const Folder&) {
       const uint32_t tag = kBodypartSignature;
       std::fprintf(stderr, "%d%d%d ", checkbodypart(&tag, ""), checkbodypart(nullptr, ""),
                    checkbodypart(EndOfReadablePage(), ""));
     },
     "100 no file"},
};

TEST(Checks, TellGoodHandlesFromAllOtherAddresses) {
  for (const LogCase& c : kChecks) ExpectWritten(c);
}

// ---- Where the log is ---------------------------------------------------------------------------

TEST(LogFilePathFor, TakesTheFieldBehindTheThirdSemicolon) {
  struct PathCase {
    const char* name;
    const char* key20;
    const char* want;
  };
  constexpr PathCase kCases[] = {
      {"four fields", "a;b;c;/var/log", "/var/log/mimora.err"},
      {"a slash at the end", "a;b;c;/var/log/", "/var/log/mimora.err"},
      {"the root folder", "a;b;c;/", "/mimora.err"},
      {"a later semicolon is part of it", "a;b;c;x;y", "x;y/mimora.err"},
      {"empty fields in front", ";;;logs", "logs/mimora.err"},
      {"no semicolon: the file itself", "/x.log", "/x.log"},
      {"two semicolons: the file itself", "a;b;/c", "a;b;/c"},
      {"an empty field: the file itself", "a;b;c;", "a;b;c;"},
      {"only semicolons", ";;;", ";;;"},
      {"nothing", "", ""},
  };
  for (const PathCase& c : kCases) EXPECT_EQ(LogFilePathFor(c.key20), c.want) << c.name;
}

// The switch file lies beside the log; a setting that is too long counts as none.
TEST(Log, FindsItsFilesByTheSetting) {
  static constexpr auto show = [](const std::string& key20) {
    ::setenv("MIMORA_KEY20", key20.c_str(), 1);
    const std::string& log = GetLogFilePath();
    std::fprintf(stderr, "%s %s", log.size() > 100 ? "long" : log.c_str(),
                 GetLogSwitchFilePath().c_str());
  };
  static const std::string long_name(507, 'x');
  const LogCase cases[] = {
      {"a folder", LogCase::kNone, [](const Folder&) { show("a;b;c;/nowhere"); },
       "/nowhere/mimora.err /nowhere/mimora1.errno file"},
      {"a file", LogCase::kNone, [](const Folder&) { show("/no/where.log"); },
       "/no/where.log /no/mimora1.errno file"},
      {"511 bytes", LogCase::kNone, [](const Folder&) { show("/no/" + long_name); },
       "long /no/mimora1.errno file"},
      {"512 bytes", LogCase::kNone, [](const Folder&) { show("/nox/" + long_name); },
       "/var/log/mimora.err /var/log/mimora1.errno file"},
  };
  for (const LogCase& c : cases) ExpectWritten(c);
}

}  // namespace
}  // namespace mimora::testing

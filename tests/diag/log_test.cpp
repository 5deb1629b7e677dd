// Copyright (c) 2026 the mimora developers.
#include "diag/log.h"

#include <sys/wait.h>

#include <cstring>
#include <ctime>
#include <thread>

#include "diag/checks.h"
#include "diag/limits.h"
#include "mimora/mimora.h"
#include "support/process.h"

namespace mimora::testing {
namespace {

// ---- Decisions ----------------------------------------------------------------------------------

// With a callback that takes the trace, so that only the dump is in the file.
void LoadAPart() {
  P_SetQQ_callback([](const char*) {});
  M_Bodypart* part = M_CreateMessage();
  M_LoadBodypartFromString(part, "a\r\nb", -1);
  M_DestroyMessage(part);
  P_SetQQ_callback(nullptr);
}

// What a process does, letter by letter.
void Do(std::string_view script) {
  for (const char c : script) {
    if (c == 't') LogTrace("trace");
    if (c == 'e') LogError("error");
    if (c == 'd') LogTraceWithData("x", 1, "dump");
    if (c == 'l') LoadAPart();
    if (c == 'c') P_SetQQ_callback(Show);
    if (c == 'n') P_SetQQ_callback(nullptr);
    if (c == '+') MakeFiles("ls");
    if (c == '-') std::filesystem::remove(log_file), std::filesystem::remove(switch_file);
  }
}

#define DUMP "@dump\nBINARY DATA START size = 1\nx\nBINARY DATA END\n"

TEST(Log, DecidesOnceWhatIsWritten) {
  const struct {
    const char *name, *files, *script, *want;
  } cases[] = {
      {"only the switch file", "s", "ted", "no file|"},
      {"the log file is a folder", "Ls", "ted", "no file|"},
      {"only the log file", "l", "te", "@error\n"},
      {"both files", "ls", "te", "@trace\n@error\n"},
      {"the switch file is a folder", "lS", "te", "@error\n"},
      {"a dump first switches the trace on", "l", "dte", DUMP "@trace\n@error\n"},
      {"the text of a part that is loaded", "l", "l",
       "@LoadBodypartFromString\nBINARY DATA START size = 4\na\nb\nBINARY DATA END\n"
       "@<E> 2 header lines that are no fields, or too many, the first: a\n"},
      {"a trace first switches the dumps off", "l", "td", ""},
      {"an error first decides nothing about them", "l", "edt", "@error\n" DUMP "@trace\n"},
      {"files that come later change nothing", "", "te+ted", ""},
      {"a trace that is switched on brings the errors with it", "", "e+te", "@trace\n@error\n"},
      {"a dump does not", "", "e+de", DUMP},
      {"files that go later change nothing", "ls", "te-te", "@trace\n@error\n"},
      {"the callback takes the trace and nothing else", "ls", "cted", "trace|@error\n" DUMP},
      {"the callback is heard when the trace is off", "l", "tctnt", "trace|"},
      {"the callback decides nothing", "l", "ctdnt", "trace|" DUMP "@trace\n"},
  };
  for (const auto& c : cases)
    ExpectShown(
        c.name, c.files, [&] { Do(c.script), ShowLog(); }, c.want);
}

// ---- Lines --------------------------------------------------------------------------------------

TEST(Log, LineEndsBehindALineGoAndLongLinesAreCut) {
  const std::string x(5000, 'x');
  const auto in_file = [&x] {
    LogTrace("a\nb\n\n");
    LogError("\n");
    ShowLog();
    LogError("%s", x.c_str());
    Show(std::to_string(ReadFile(log_file).find('\n')).c_str());
  };
  ExpectShown("in the file with their prefix", "ls", in_file, "@a\nb\n@\n2047|");
  const auto in_callback = [&x] {
    P_SetQQ_callback([](const char* line) { std::fprintf(stderr, "%zu|", std::strlen(line)); });
    LogTrace("a\nb\n\n");
    for (const int length : {2046, 2047, 2048, 5000}) LogTrace("%.*s", length, x.c_str());
    P_QQ(x.c_str());
    LogTrace("%.2046s\nmore", x.c_str());
  };
  ExpectShown("for the callback", "", in_callback, "3|2046|2047|2047|2047|2047|2046|");
}

TEST(Log, DumpsHaveNoCrAndTellTheSizeWithThem) {
  const auto work = [] {
    LogTraceWithData("\r\na\r\r\n%s\r", 9, "data of %d", 9);
    LogTraceWithData(nullptr, 5, "null");
    LogTraceWithData("x", -1, "negative\n"), ShowLog();
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

TEST(Log, PercentSignsOfAUserNeverAskForArguments) {
  const auto work = [] {
    for (const auto callback : {P_TraceProc{Show}, P_TraceProc{}}) {
      P_SetQQ_callback(callback);
      for (const char* text : {"100%% of 50%", "%s %n %*d %m", "%%%", ""}) P_QQ(text);
      P_QQ(nullptr);
    }
    ShowLog();
  };
  ExpectShown("", "ls", work, "100% of 50%|%s %n %*d %m|%%||@100% of 50%\n@%s %n %*d %m\n@%%\n@\n");
}

// Whether the only line of the log is of now and of the thread of that number in this process.
void ShowWhetherPrefixIs(pid_t process, pid_t thread) {
  const time_t now = std::time(nullptr);
  char date[32], writer[64];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:", std::localtime(&now));
  std::snprintf(writer, sizeof writer, " [%08X:%08X] text\n", static_cast<unsigned>(process),
                static_cast<unsigned>(thread));
  const std::string line = ReadFile(log_file);
  Show(line.starts_with(date) && line.substr(19) == writer ? "good" : line.c_str());
  std::ofstream(log_file, std::ios::trunc);
}

// Mail servers fork: who logged before as the parent is another process and another thread now.
TEST(Log, PrefixTellsLocalTimeProcessAndThreadAlsoOfAForkedChild) {
  const auto work = [] {
    ::setenv("TZ", "AAA+11", 1);
    LogError("text");
    ShowWhetherPrefixIs(::getpid(), ::gettid());
    const pid_t child = ::fork();
    if (child == 0) LogError("text"), ::_exit(0);
    ::waitpid(child, nullptr, 0);
    ShowWhetherPrefixIs(child, child);
  };
  ExpectShown("", "l", work, "good|good|");
}

// ---- What mail and callers do wrong -------------------------------------------------------------

TEST(Log, TellsWhatOfAMessageIsNotSeen) {
  std::string deep;
  for (int level = 0; level <= kDeepestLevel; ++level) deep += "Content-Type: message/rfc822\n\n";
  std::string wide = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (int part = 0; part <= kMostParts; ++part) wide += "--b\n\n";
  const struct {
    const char* name;
    std::string message, want;
  } cases[] = {
      {"header lines, once a header", "To: a\nno\x1B[31msense\nmore\nCc: b\n\nx",
       "@<E> 2 header lines that are no fields, or too many, the first: no.[31msense\n"},
      {"nothing", deep, ""},
      {"a level", "Content-Type: message/rfc822\n\n" + deep,
       "@<E> 1 parts at the limits, their structure is not seen\n"},
      {"the rest", wide, "@<E> 1 parts at the limits, their structure is not seen\n"},
  };
  for (const auto& c : cases) {
    const auto work = [&c] {
      M_Bodypart* part = M_CreateMessage();
      M_LoadBodypartFromBuffer(part, c.message.data(), static_cast<int32_t>(c.message.size()));
      ShowLog();
      M_DestroyMessage(part);
    };
    ExpectShown(c.name, "l", work, c.want);
  }
}

TEST(Log, TellsOfAStreamThatAnotherThreadPositioned) {
  const auto work = [] {
    Minstream in(MemorySource{.data = "ab", .length = 2});
    std::thread([&in] { in.Seek(1); }).join();
    in.Skip();
    const std::string line = ReadFile(log_file);
    char reader[32];
    std::snprintf(reader, sizeof reader, "id %x ", static_cast<unsigned>(::gettid()));
    const bool told = line.find("~<E> thread ") != std::string::npos;
    Show(told && line.find(reader) != std::string::npos ? "told" : line.c_str());
  };
  ExpectShown("", "l", work, "told|");
}

// ---- Handle checks ------------------------------------------------------------------------------

TEST(Checks, KnowTheirKindAndTellOfEveryAddressThatIsNoHandle) {
  const auto work = [] {
    const uint32_t tags[] = {kBodypartSignature, kInstreamSignature, kOutstreamSignature};
    for (const auto check : {checkbodypart, checkinstream, checkoutstream})
      for (const uint32_t& tag : tags) Show(check(&tag, "") ? "1" : "0");
    std::ofstream(log_file, std::ios::trunc);
    const void* const impossible = reinterpret_cast<void*>(UINTPTR_MAX - 7);
    for (const void* handle : {static_cast<const void*>(nullptr), impossible})
      Show(checkinstream(handle, "") ? "true" : "false"), ShowLog();
  };
  ExpectShown("", "l", work,
              "1|0|0|0|1|0|0|0|1|false|@checkinstream assert failure\n"
              "false|@checkinstream exception\n@checkinstream assert failure\n");
}

// ---- Where the log is ---------------------------------------------------------------------------

// A setting of 512 bytes or more counts as none.
TEST(Log, LiesInTheFolderBehindTheThirdSemicolonAndItsSwitchFileBesideIt) {
  const std::string x(507, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"a;b;c;/no/", "/no/mimora.err|/no/mimora1.err|"},
      {"a;b;c;/", "/mimora.err|/mimora1.err|"},
      {";;;x;y", "x;y/mimora.err|x;y/mimora1.err|"},
      {"a;b;/no.log", "a;b;/no.log|a;b;/mimora1.err|"},
      {"a;b;c;", "a;b;c;|mimora1.err|"},
      {"/no/" + x, "/no/" + x + "|/no/mimora1.err|"},
      {"/now/" + x, "/var/log/mimora.err|/var/log/mimora1.err|"},
  };
  for (const auto& [key20, want] : cases) {
    const auto work = [&setting = key20] {
      ::setenv("MIMORA_KEY20", setting.c_str(), 1);
      Show(GetLogFilePath().c_str()), Show(GetLogSwitchFilePath().c_str());
    };
    ExpectShown(key20, "", work, want);
  }
}

}  // namespace
}  // namespace mimora::testing

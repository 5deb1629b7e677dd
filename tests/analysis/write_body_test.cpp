// Copyright (c) 2026 the mimora developers.
#include "analysis/write_body.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "diag/result.h"
#include "mime/parser.h"
#include "support/coders.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

constexpr char kText[] = "Content-Type: text/plain; charset=iso-8859-2\n";
constexpr char kBase64[] = "Content-Transfer-Encoding: base64\n";
constexpr char kQuoted[] = "Content-Transfer-Encoding: Quoted-Printable\n";
constexpr char kTwoFiles[] = "a\xB9\nbegin 644 x\n#0V%T\n`\nend\nb\nbegin 644 y\n#0F%T\n`\nend\nc";

struct Case {
  const char* name;
  std::string header;
  const char* body;
  BodyRequest request;
  int32_t result;
  const char* want;
  int64_t decoded_size;  // afterwards
};

const BodyRequest kDecoded = {};
const BodyRequest kToBase64 = {.target_encoding = "BASE64"};
const BodyRequest kToUtf8 = {.target_charset = "UTF-8"};
const BodyRequest kToUtf8AndBase64 = {.target_encoding = "base64", .target_charset = "utf-8"};
const BodyRequest kCut = {.keep_embedded = false};

const Case kCases[] = {
    {"as it stands", "", "a\nb", kDecoded, 0, "a\nb", 3},
    {"nothing", "", "", kDecoded, 0, "", 0},
    {"decoded", kBase64, "TWFu\nTQ==", kDecoded, 0, "ManM", 4},
    {"in its own encoding", kBase64, "TW Fu", kToBase64, 0, "TW Fu", 3},
    {"from one encoding to another", kQuoted, "=4D\nan", kToBase64, 0, "TQ0KYW4=\r\n", 5},
    {"into an encoding", "", "Man", kToBase64, 0, "TWFu\r\n", 3},
    {"into an encoding without effect", "", "Man", {.target_encoding = "8bit"}, 0, "Man", 3},
    {"translated", kText, "\xB9!", kToUtf8, 0, "\xC5\xA1!", 3},
    {"decoded and translated", kText + std::string(kQuoted), "=B9", kToUtf8, 0, "\xC5\xA1", 2},
    {"translated and encoded", kText, "\xB9", kToUtf8AndBase64, 0, "xaE=\r\n", 2},
    {"not translated into what it is",
     kText,
     "\xB9",
     {.target_charset = "ISO8859-2"},
     0,
     "\xB9",
     1},
    {"only text is translated", "Content-Type: image/x; charset=iso-8859-2\n", "\xB9", kToUtf8, 0,
     "\xB9", 1},
    {"text of an unknown charset", "Content-Type: text/plain; charset=x-none\n", "\xB9", kToUtf8,
     kUnknownCharset, "", 1},
    {"UTF-16 in quoted-printable",
     kText,
     "\xB9",
     {.target_encoding = "quoted-printable", .target_charset = "utf-16"},
     kUnknownCharset,
     "",
     1},
    {"text without a charset", "Content-Type: text/plain\n", "\xB9", kToUtf8, 0, "\xB9", 1},
    {"with its files", kText, kTwoFiles, kDecoded, 0, kTwoFiles, 54},
    {"without its files", kText, kTwoFiles, kCut, 0, "a\xB9\nb\nc", 6},
    {"without its files, translated",
     kText,
     kTwoFiles,
     {.target_charset = "utf-8", .keep_embedded = false},
     0,
     "a\xC5\xA1\nb\nc",
     7},
    {"without its files, encoded",
     kText,
     kTwoFiles,
     {.target_encoding = "base64", .keep_embedded = false},
     0,
     "YbkKYgpj\r\n",
     6},
    {"without its files, translated and encoded",
     kText,
     kTwoFiles,
     {.target_encoding = "base64", .target_charset = "utf-8", .keep_embedded = false},
     0,
     "YcWhCmIKYw==\r\n",
     7},
    {"its first file", kText, kTwoFiles, {.embedded_index = 0}, 0, "Cat", 6},
    {"its last file", kText, kTwoFiles, {.embedded_index = 1}, 0, "Bat", 6},
    {"no such file", kText, kTwoFiles, {.embedded_index = 2}, kNoSuchAttachment, "", 6},
};

// What stands behind the part would show.
std::string MailWith(const Case& c) {
  return "Content-Type: multipart/mixed; boundary=b\n\n--b\n" + c.header + "\n" + c.body +
         "\n--b\n\nbehind\n--b--\n";
}

TEST(WriteBody, WritesWhatWasAskedForFromEverySource) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(MailWith(c), [&c](Minstream& in) {
      Bodypart message;
      Load(message, in);
      Bodypart& part = *message.Children[0];
      Moutstream out(MemorySink{});
      EXPECT_EQ(WriteBodypartBodyToStream(part, out, nullptr, c.request), c.result);
      EXPECT_EQ(TextOf(out), c.want);
      EXPECT_EQ(part.DecodedSize, c.decoded_size);
      Moutstream behind(MemorySink{});
      WriteBodypartBodyToStream(*message.Children[1], behind, nullptr, {});
      EXPECT_EQ(TextOf(behind), "behind");
    });
  }
}

TEST(WriteBody, SavesTheFilesOfATnefStream) {
  const std::string mail = ReadFile(MIMORA_TEST_DATA "/corpus/tnef-one-file.eml");
  const std::string blanks(30, ' ');
  ForEverySource(mail, [&](Minstream& in) {
    Bodypart message;
    Load(message, in);
    WalkBodyparts(message, [&](Bodypart& part) {
      if (part.TnefAttachments.empty()) return;
      Moutstream out(MemorySink{});
      EXPECT_EQ(SaveAttachment(part, out, nullptr, 1), 0);
      EXPECT_EQ(out.WritePos(), part.TnefAttachments[0].DecodedSize);
      EXPECT_TRUE(TextOf(out).starts_with("\n" + blanks + "Authors of tnef\n"));
      EXPECT_EQ(SaveAttachment(part, out, nullptr, 2), kNoSuchAttachment);
    });
  });
}

TEST(WriteBody, FindsItsSource) {
  const std::string text = "in the stream";
  const TextFile file("in the file");
  Minstream in(SourceOf(text));
  Bodypart part;
  const auto write = [&](Minstream* in4) {
    Moutstream out(MemorySink{});
    const int32_t result = WriteBodypartBodyToStream(part, out, in4, {});
    return result == kOk ? TextOf(out) : std::to_string(result);
  };
  const auto code = [](int32_t result) { return std::to_string(result); };
  EXPECT_EQ(write(&in), code(kNoBodyData));

  part.DataDefinitionType = kBodyInStream;
  part.BodyLength = 6;
  EXPECT_EQ(write(nullptr), code(kNotOpen));
  EXPECT_EQ(write(&in), "in the") << "the part's own is missing";
  DripSource stuck(text);
  CallbackSource no_seek = stuck.Reading();
  no_seek.seek = nullptr;
  Minstream unmovable(no_seek, 4);
  part.BodyStart = 3;
  part.ContentTransferEncoding = "base64";
  Moutstream nothing(MemorySink{});
  EXPECT_EQ(WriteBodypartBodyToStream(part, nothing, &unmovable, {}), -1);
  EXPECT_EQ(nothing.WritePos(), 0) << "what is there instead";
  part.ContentTransferEncoding.clear();
  part.DataDefinitionType = kBodyDetached;
  EXPECT_EQ(write(nullptr), code(kNotOpen));
  part.BodyStart = 3;
  part.BodyLength = -1;
  EXPECT_EQ(write(&in), "the stream");
  part.BodyStart = 13;
  part.BodyLength = 100;
  EXPECT_EQ(write(&in), code(kReadFailed)) << "beyond the end";
  part.BodyStart = 3;
  EXPECT_EQ(write(&in), code(kReadFailed)) << "cut off";
  part.UuencodedBlocks.push_back({.Name = "x", .DecodedSize = 1, .Offset = 5, .BlockLength = 90});
  Moutstream file_inside(MemorySink{});
  EXPECT_EQ(SaveAttachment(part, file_inside, &in, 1), kReadFailed);
  part.UuencodedBlocks.clear();

  part.DataDefinitionType = kBodyInFile;
  EXPECT_EQ(write(&in), code(kNoBodyFileName));
  part.BodyFileName = "/nonexistent";
  EXPECT_EQ(write(&in), code(kBodyFileNotOpened));
  part.BodyFileName = file.Name();
  EXPECT_EQ(write(&in), "in the file");
  part.DataDefinitionType = kBodyInPart;
  EXPECT_EQ(write(&in), file.Name());
  part.DataDefinitionType = kBodyInMemory;
  EXPECT_EQ(write(&in), code(kNoBodyMemory));
  part.BodyMemory = "in memory";
  part.BodyLength = 9;
  EXPECT_EQ(write(&in), "in memory");

  Moutstream closed(CallbackSink{}, 0);
  EXPECT_EQ(WriteBodypartBodyToStream(part, closed, &in, {}), kNotOpen);
}

// ---- Faults. The directory for temporary files is asked for once: a process of its own.

std::string temporary_folder;

[[noreturn]] void Fail(const char* what, const char* row) {
  std::fprintf(stderr, "%s: %s\n", what, row);
  ::_exit(1);
}

void ExpectNoTemporaryFile() {
  const bool empty =
      !std::filesystem::exists(temporary_folder) || std::filesystem::is_empty(temporary_folder);
  if (!empty) Fail("a temporary file is left", "");
}

int32_t WriteCase(const Case& c, Minstream& in, Moutstream& out) {
  Bodypart message;
  Load(message, in);
  const int32_t result = WriteBodypartBodyToStream(*message.Children[0], out, nullptr, c.request);
  ExpectNoTemporaryFile();
  return result;
}

// Reading fails at every byte, of the load or later; then writing at every byte.
void FailEverywhere(const Case& c) {
  const std::string mail = MailWith(c);
  for (int64_t at = 0; at < std::ssize(mail); ++at) {
    DripSource source(mail, 5, DripSource::kNever);
    Minstream in(source.Reading(), 7);
    Bodypart message;
    Load(message, in);
    source.FailAt(at);
    Moutstream out(MemorySink{});
    const int32_t result = WriteBodypartBodyToStream(*message.Children[0], out, nullptr, c.request);
    ExpectNoTemporaryFile();
    const Bodypart& part = *message.Children[0];
    const bool met = part.BodyStart < at && at < part.BodyStart + part.BodyLength;
    if (result == kOk && met && c.request.keep_embedded && c.request.embedded_index == kWholeBody) {
      Fail("a read error goes unnoticed", c.name);
    }
  }
  for (int64_t room = 0; room < static_cast<int64_t>(std::strlen(c.want)); ++room) {
    Minstream in(SourceOf(mail));
    int64_t left = room;
    Moutstream out(
        CallbackSink{.context = reinterpret_cast<intptr_t>(&left), .write = WriteWhileThereIsRoom},
        3);
    if (WriteCase(c, in, out) == kOk) Fail("a write error goes unnoticed", c.name);
  }
}

int32_t WriteLargeBody() {
  const Case large{"", kText, "", kToUtf8AndBase64, 0, "", 0};
  std::string mail = MailWith(large);
  mail.insert(mail.find("\n--b\n\nbehind"), std::string(100'000, 'x'));
  Minstream in(SourceOf(mail));
  Moutstream out(MemorySink{});
  return WriteCase(large, in, out);
}

void FailWithTemporaryFiles() {
  temporary_folder = (std::filesystem::temp_directory_path() / "body_test.XXXXXX").string();
  if (::mkdtemp(temporary_folder.data()) == nullptr) ::_exit(1);
  ::setenv("TMPDIR", temporary_folder.c_str(), 1);
  for (const Case& c : kCases) FailEverywhere(c);
  if (WriteLargeBody() != kOk) Fail("a large body", "");
  // A file that may not grow stands for a disk that is full.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = 50'000;
  ::setrlimit(RLIMIT_FSIZE, &limit);
  if (WriteLargeBody() != kTempNotWritten) Fail("a disk that is full", "");
  std::filesystem::remove_all(temporary_folder);
  if (WriteLargeBody() != kTempNotCreated) Fail("no directory", "");
  ::_exit(0);
}

TEST(WriteBody, ReportsEveryFaultAndLeavesNoTemporaryFile) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(FailWithTemporaryFiles(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace mimora::testing

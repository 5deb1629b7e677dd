// Copyright (c) 2026 the mimora developers.
//
// The exports as a caller meets them: what they write into the trace, and what they answer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <string_view>

#include "mimora/mimora.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

constexpr char kMessage[] =
    "To: abc\r\n"
    "Received: 1\r\n"
    "Received: 2\r\n"
    "Subject: one\r\n two\r\n"
    "Content-Type: text/plain; charset=\"x y\"; name=n.txt\r\n"
    "Content-Disposition: inline (c); filename=f\r\n"
    "Content-Transfer-Encoding: 7bit\r\n"
    "\r\n"
    "body";

// One handle of each kind.
struct Handles {
  M_Bodypart* part = M_CreateMessage();
  S_InStream* in = S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0);
  Handles() { M_LoadBodypartFromBuffer(part, kMessage, sizeof kMessage - 1); }
  ~Handles() {
    M_DestroyMessage(part);
    S_DestroyInStream(in);
    S_DestroyOutStream(out);
  }
};

std::string Hex(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%" PRIXPTR, reinterpret_cast<uintptr_t>(address));
  return text;
}

// ---- Trace --------------------------------------------------------------------------------------

std::string trace;

// What WORK writes into the trace, with names in place of the addresses of the handles.
std::string TraceOf(const Handles& h, const std::function<void()>& work) {
  trace.clear();
  P_SetQQ_callback([](const char* line) { trace.append(line).append("\n"); });
  work();
  P_SetQQ_callback(nullptr);
  trace = std::regex_replace(trace, std::regex("\\b" + Hex(h.part) + "\\b"), "PART");
  trace = std::regex_replace(trace, std::regex("\\b" + Hex(h.in) + "\\b"), "IN");
  return std::regex_replace(trace, std::regex("\\b" + Hex(h.out) + "\\b"), "OUT");
}

int64_t PointAtNothing(S_Context, const void**, int64_t) { return 0; }
int64_t WriteAll(S_Context, const void*, int64_t length) { return length; }

char buffer[100];
uint32_t size = 0;

#define CHECK "checkbodypart for bp=[PART] "
#define UNDEFINE "M_UndefineBodypartBodyStreamDefinition"

TEST(Trace, HasTheseLinesWordForWord) {
  struct Case {
    const char* name;
    void (*call)(const Handles&);
    const char* want;
  };
  constexpr Case kCases[] = {
      {"a part", [](const Handles& h) { M_CheckBodypart(h.part); },
       "M_CheckBodypart in\n" CHECK "\nM_CheckBodypart out\n"},
      {"a null part", [](const Handles&) { M_HeaderFieldsCount(nullptr); },
       "M_HeaderFieldsCount in\ncheckbodypart for bp=[0] \nM_HeaderFieldsCount out\n"},
      {"a null part is destroyed unchecked", [](const Handles&) { M_DestroyMessage(nullptr); },
       "M_DestroyMessage in\nM_DestroyMessage out\n"},
      {"the check of an input stream", [](const Handles& h) { S_CheckInStream(h.in); },
       "M_CheckInStream in\ncheckinstream for in=[IN] \nM_CheckInStream out\n"},
      {"the check of an output stream", [](const Handles& h) { S_CheckOutStream(h.out); },
       "M_CheckOutStream in\ncheckoutstream for out=[OUT] \nM_CheckOutStream out\n"},
      {"the flags of a message", [](const Handles& h) { M_GetMessageFlags(h.part, &size); },
       "M_GetBodypartFlags in\n" CHECK "\nM_GetBodypartFlags out\n"},
      {"a name of a field",
       [](const Handles& h) { M_BodypartHeaderFieldValueProc(h.part, "%s", nullptr, &size); },
       "M_BodypartHeaderFieldValueProc in, keyname = '%s'\n" CHECK
       "\nM_BodypartHeaderFieldValueProc out\n"},
      {"no name of a field",
       [](const Handles& h) { M_BodypartHeaderFieldValueProc(h.part, nullptr, nullptr, &size); },
       "M_BodypartHeaderFieldValueProc in, keyname = 'null'\n" CHECK
       "\nM_BodypartHeaderFieldValueProc out\n"},
      {"a field by its index",
       [](const Handles& h) { M_BodypartHeaderField(h.part, 0, nullptr, nullptr); },
       "M_BodypartHeaderField in\n" CHECK "\n" CHECK
       "M_BodypartHeaderField\nM_BodypartHeaderField out\n"},
      {"detaching", [](const Handles& h) { M_UndefineBodypartBodyStreamDefinition(h.part, h.in); },
       UNDEFINE " in\n" CHECK "\ncheckinstream for in=[IN] \n" CHECK UNDEFINE "\n" UNDEFINE
                " out\n"},
      {"detaching from null",
       [](const Handles& h) { M_UndefineBodypartBodyStreamDefinition(h.part, nullptr); },
       UNDEFINE " in\n" CHECK "\n" CHECK UNDEFINE "\n" UNDEFINE " out\n"},
      {"the error of a stream", [](const Handles& h) { S_GetIOError(h.out); },
       "S_GetIOError in\ncheckoutstream for out=[OUT] \nS_GetIOError out\n"},
      {"the error of no stream", [](const Handles& h) { S_GetIOError(h.part); },
       "S_GetIOError in\nS_GetIOError out\n"},
      {"a copy", [](const Handles& h) { S_CopyFromInStreamToOutStream(h.in, h.out); },
       "S_CopyFromInStreamToOutStream in\ncheckinstream for in=[IN] \n"
       "checkoutstream for out=[OUT] \nS_CopyFromInStreamToOutStream out\n"},
      {"the lock", [](const Handles& h) { S_LockInStream(h.in), S_UnlockInStream(h.in); }, ""},
      {"parameters", [](const Handles&) { P_SetGlobalParams("A=b\0"); }, ""},
      {"the self-test", [](const Handles&) { EXPECT_EQ(P_MIMORATest(5), 0); }, ""},
      {"a dump of null", [](const Handles&) { M_PrintBodypart(nullptr); },
       "checkbodypart for bp=[0] \n"},
  };
  const Handles handles;
  ::testing::internal::CaptureStdout();
  for (const Case& c : kCases)
    EXPECT_EQ(TraceOf(handles, [&] { c.call(handles); }), c.want) << c.name;
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "bodypart is NULL\n");
}

TEST(Trace, TellsTheAddressOfANewStream) {
  Handles h;
  const auto create_in = [&h](const void* source, int32_t length) {
    S_DestroyInStream(h.in);
    return TraceOf(
        h, [&] { h.in = S_CreateInStream(source, length, 0, nullptr, nullptr, nullptr, 26); });
  };
  const auto create_out = [&h](S_Context context, S_WriteProc write) {
    S_DestroyOutStream(h.out);
    return TraceOf(h, [&] {
      h.out = S_CreateOutStream(nullptr, context, write, nullptr, nullptr, context != 0 ? 9 : 0);
    });
  };
  EXPECT_EQ(create_in("abc", 3),
            "S_CreateInStream in\n_Minstream in this=IN, amode=0, abufsize=3\n"
            "S_CreateInStream out [IN]\n");
  EXPECT_EQ(create_in("/", -1),
            "S_CreateInStream in\n_Minstream in this=IN, amode=1, abufsize=1A\n"
            "S_CreateInStream out [IN]\n");
  EXPECT_EQ(create_out(0, nullptr),
            "S_CreateOutStream in\n_Moutstream this=OUT, amode=0, g_write=0\n"
            "S_CreateOutStream out [OUT]\n");
  EXPECT_EQ(create_out(5, WriteAll),
            "S_CreateOutStream in\nMoutstream with external fctions: this=OUT, g_write=" +
                Hex(reinterpret_cast<const void*>(WriteAll)) + "\nS_CreateOutStream out [OUT]\n");
  S_DestroyInStream(h.in);
  const auto create = [&h] { h.in = S_CreateInStream1(5, 26, PointAtNothing, nullptr, nullptr); };
  EXPECT_EQ(TraceOf(h, create), "_Minstream in this=IN, amode=1, abufsize=1A\n");
}

// ---- Null handles -------------------------------------------------------------------------------

TEST(NullHandles, AreAnsweredWithTheValueThatStandsForNothing) {
  Handles h;
  const char* text = "x";
  int64_t wide = 0;
  const void* bytes = nullptr;
  uint32_t count = 5;
  const auto null = [](const void* pointer) { return pointer == nullptr ? 0 : 1; };
  struct NullCase {
    const char* name;
    int64_t got;
    int64_t want;
  };
  const NullCase cases[] = {
      {"destroy", M_DestroyMessage(nullptr), 0},
      {"load", M_LoadMessage(nullptr, h.in), MIMORA_E_NOT_OPEN},
      {"load, no stream", M_LoadMessage(h.part, nullptr), MIMORA_E_NOT_OPEN},
      {"buffer", M_LoadBodypartFromBuffer(nullptr, "a", 1), MIMORA_E_NOT_OPEN},
      {"buffer, no data", M_LoadBodypartFromBuffer(h.part, nullptr, 1), MIMORA_E_NOT_OPEN},
      {"string", M_LoadBodypartFromString(nullptr, "a", 1), MIMORA_E_NOT_OPEN},
      {"child", null(M_GetNthChildBodypart(nullptr, 0)), 0},
      {"enclosed message", null(M_GetMessageBodypartBody(nullptr)), 0},
      {"new child", null(M_CreateChildBodypart(nullptr)), 0},
      {"delete child", M_DeleteChildBodypart(nullptr, h.part), -1},
      {"delete no child", M_DeleteChildBodypart(h.part, nullptr), -1},
      {"flags", M_GetBodypartFlags(nullptr, &count), -1},
      {"flags, nowhere", M_GetMessageFlags(h.part, nullptr), -1},
      {"fields", M_HeaderFieldsCount(nullptr), -1},
      {"fields, older name", M_BodypartHeaderFieldsCount(nullptr), -1},
      {"field", M_BodypartHeaderField(nullptr, 0, &text, nullptr), -1},
      {"its name", null(text), 0},
      {"field text", M_BodypartHeaderFieldByIndex(nullptr, 0, buffer, &count), -1},
      {"value", null(M_BodypartHeaderFieldValue(nullptr, "To")), 0},
      {"value copied", M_BodypartHeaderFieldValueProc(nullptr, "To", buffer, &count), -1},
      {"n-th value", null(M_BodypartHeaderFieldNthValue(nullptr, "To", 1)), 0},
      {"n-th copied", M_BodypartHeaderFieldNthValueProc(nullptr, "To", 1, buffer, &count), -1},
      {"delete field", M_DeleteBodypartHeaderField(nullptr, 0), -1},
      {"encoding", M_GetContentTransferEncoding(nullptr, buffer, &count), -1},
      {"disposition", M_GetContentDisposition(nullptr, buffer, &count), -1},
      {"charset", M_GetCharset(nullptr, buffer, &count), -1},
      {"parameter", M_MimeParameter(nullptr, "Content-Type", "name", buffer, &count), -1},
      {"body size", M_GetBodypartSize(nullptr, &wide, &wide), -1},
      {"attachment size", M_GetAttachmentSize(0, nullptr), -1},
      {"raw body size", M_GetBodyTextRawSize(nullptr), 0},
      {"raw part size", M_GetBodypartTextRawSize(nullptr), 0},
      {"body text", M_GetBodyText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN},
      {"part text", M_GetBodypartText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN},
      {"part text, no size", M_GetBodypartText(h.part, nullptr, buffer, 0, nullptr),
       MIMORA_E_NOT_OPEN},
      {"no source", null(S_CreateInStream(nullptr, 5, 0, nullptr, nullptr, nullptr, 0)), 0},
      {"no callback", null(S_CreateInStream1(0, 0, nullptr, nullptr, nullptr)), 0},
      {"bytes", S_GetOutStreamBuffer(nullptr, &bytes, &count), -1},
      {"error", S_GetIOError(nullptr), 0},
      {"position", S_WritePos(nullptr), -1},
      {"flush", S_FlushBuffers(nullptr), EBADF},
      {"copy", S_CopyFromInStreamToOutStream(nullptr, h.out), MIMORA_E_NOT_OPEN},
      {"copy, no output", S_CopyFromInStreamToOutStream(h.in, nullptr), MIMORA_E_NOT_OPEN},
      {"encode a file", P_EncodeBASE64(nullptr, "/dev/null", 76), MIMORA_E_OPEN_INPUT},
      {"encode, no output", P_EncodeBASE64("/dev/null", nullptr, 76), MIMORA_E_OPEN_OUTPUT},
      {"decode a file", P_DecodeBASE64(nullptr, "/dev/null"), MIMORA_E_OPEN_INPUT},
      {"decode, no output", P_DecodeBASE64("/dev/null", nullptr), MIMORA_E_OPEN_OUTPUT},
  };
  for (const NullCase& c : cases) EXPECT_EQ(c.got, c.want) << c.name;
  EXPECT_EQ(count, 5u) << "what is not answered is not touched";
}

TEST(NullHandles, DoNoHarm) {
  const Handles h;
  M_CleanMessage(nullptr);
  M_CheckBodypart(nullptr);
  M_UndefineBodypartBodyStreamDefinition(nullptr, h.in);
  M_TakeoverBodypartBodyStreamDefinition(nullptr, nullptr);
  S_DestroyInStream(nullptr);
  S_CheckInStream(nullptr);
  S_SeekReadPos(nullptr, 1);
  S_LockInStream(nullptr);
  S_UnlockInStream(nullptr);
  S_DestroyOutStream(nullptr);
  S_CheckOutStream(nullptr);
  P_EncodeQuotedPrintable(h.in, nullptr);
  P_EncodeQuotedPrintable(nullptr, h.out);
  P_DecodeQuotedPrintable(nullptr, nullptr);
  EXPECT_EQ(S_WritePos(h.out), 0);
}

// ---- Texts --------------------------------------------------------------------------------------

using Copy = int32_t (*)(M_Bodypart*, char*, uint32_t*);

template <int N>
int32_t CopyNthReceived(M_Bodypart* part, char* text, uint32_t* room) {
  return M_BodypartHeaderFieldNthValueProc(part, "received", N, text, room);
}

int32_t CopySubject(M_Bodypart* part, char* text, uint32_t* room) {
  return M_BodypartHeaderFieldValueProc(part, "sUBJECT", text, room);
}

int32_t CopyPartOfAName(M_Bodypart* part, char* text, uint32_t* room) {
  return M_BodypartHeaderFieldValueProc(part, "Subj", text, room);
}

int32_t CopyName(M_Bodypart* part, char* text, uint32_t* room) {
  return M_MimeParameter(part, "content-type", "NAME", text, room);
}

TEST(SizedCopy, CopiesWhenTextAndZeroFitAndTellsTheSizeWhenNot) {
  const std::pair<Copy, const char*> cases[] = {
      {CopySubject, "one\r\n two"},
      {CopyNthReceived<2>, "2"},
      {CopyName, "n.txt"},
      {M_GetContentTransferEncoding, "7bit"},
      {M_GetContentDisposition, "inline"},
      {M_GetCharset, "x y"},
  };
  const Handles h;
  for (const auto& [copy, want] : cases) {
    SCOPED_TRACE(want);
    const auto needed = static_cast<uint32_t>(std::strlen(want) + 1);
    char text[32] = "untouched";
    uint32_t room = 77;
    EXPECT_EQ(copy(h.part, nullptr, &room), 1);
    EXPECT_EQ(room, needed);
    EXPECT_EQ(copy(h.part, text, nullptr), 1);
    room = needed - 1;
    EXPECT_EQ(copy(h.part, text, &room), 1);
    EXPECT_EQ(room, needed);
    EXPECT_STREQ(text, "untouched");
    for (const uint32_t enough : {needed, 32u}) {
      std::memset(text, '#', sizeof text);
      room = enough;
      EXPECT_EQ(copy(h.part, text, &room), 0);
      EXPECT_STREQ(text, want);
      EXPECT_EQ(text[needed], '#');
      EXPECT_EQ(room, enough);
    }
  }
}

TEST(SizedCopy, TouchesNothingWhenThereIsNoSuchText) {
  const Handles h;
  for (const Copy copy : {CopyPartOfAName, CopyNthReceived<3>, CopyNthReceived<0>}) {
    char text[32] = "untouched";
    uint32_t room = 32;
    EXPECT_EQ(copy(h.part, text, &room), -1);
    EXPECT_EQ(copy(h.part, text, nullptr), -1);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(room, 32u);
  }
}

TEST(M_BodypartHeaderFieldByIndex, WritesOneByteMoreThanItsSizeSays) {
  struct Case {
    const char* name;
    int32_t index;
    bool has_buffer;
    uint32_t room;
    int32_t want;
    uint32_t want_room;
  };
  constexpr Case kCases[] = {
      {"exact size", 0, true, 7, 0, 7},       {"more room", 0, true, 15, 0, 7},
      {"one too small", 0, true, 6, 1, 7},    {"no room", 0, true, 0, 1, 7},
      {"no buffer", 0, false, 100, 1, 7},     {"index -1", -1, true, 15, -1, 15},
      {"no such index", 7, true, 15, -1, 15},
  };
  const Handles h;
  for (const Case& c : kCases) {
    std::string text(16, '#');
    uint32_t room = c.room;
    char* target = c.has_buffer ? text.data() : nullptr;
    EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, c.index, target, &room), c.want) << c.name;
    EXPECT_EQ(room, c.want_room) << c.name;
    EXPECT_EQ(text.substr(0, 9), c.want == 0 ? std::string("To: abc\0#", 9) : "#########")
        << c.name;
  }
  char text[] = "untouched";
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, text, nullptr), 1);
  EXPECT_STREQ(text, "untouched");
}

// ---- Streams ------------------------------------------------------------------------------------

std::string_view BytesOf(S_OutStream* out) {
  const void* bytes = nullptr;
  uint32_t length = 0;
  EXPECT_EQ(S_GetOutStreamBuffer(out, &bytes, &length), 0);
  return {static_cast<const char*>(bytes), length};
}

TEST(S_CreateInStream, TakesEveryLengthButMinusOneForMemory) {
  const TextFile file("a file");
  for (const auto& [length, want] :
       {std::pair<int32_t, std::string_view>{-1, "a file"}, {4, file.Name()}, {0, ""}, {-2, ""}}) {
    const Handles h;
    S_InStream* in = S_CreateInStream(file.Name(), length, 0, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(S_CopyFromInStreamToOutStream(in, h.out), MIMORA_OK);
    EXPECT_EQ(BytesOf(h.out), length == 4 ? want.substr(0, 4) : want);
    S_DestroyInStream(in);
  }
}

TEST(S_CreateOutStream, PrefersAFileThenCallbacksThenATemporaryFile) {
  const TextFile file("old");
  const auto name_of = [](S_OutStream* out) {
    char name[4096] = "x";
    EXPECT_EQ(S_GetOutStreamFileName(out, name, sizeof name), 0);
    S_DestroyOutStream(out);
    return std::string(name);
  };
  EXPECT_EQ(name_of(S_CreateOutStream(file.Name(), 5, WriteAll, nullptr, nullptr, 9)), file.Name());
  EXPECT_EQ(ReadFile(file.Name()), "");
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 5, WriteAll, nullptr, nullptr, 9)), "");
  const auto temporary = name_of(S_CreateOutStream(nullptr, 0, WriteAll, nullptr, nullptr, -1));
  EXPECT_TRUE(std::filesystem::remove(temporary)) << temporary;
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 0, WriteAll, nullptr, nullptr, 0)), "");
}

TEST(S_GetOutStreamFileName, NeedsRoomForTheZero) {
  const TextFile file("");
  const auto length = static_cast<uint32_t>(std::strlen(file.Name()));
  S_OutStream* out = S_CreateOutStream(file.Name(), 0, nullptr, nullptr, nullptr, 0);
  char name[4096] = "x";
  EXPECT_EQ(S_GetOutStreamFileName(out, name, 0), 1);
  EXPECT_STREQ(name, "x") << "no room for an empty text either";
  EXPECT_EQ(S_GetOutStreamFileName(out, nullptr, 100), 1);
  EXPECT_EQ(S_GetOutStreamFileName(out, name, length), 1);
  EXPECT_STREQ(name, "");
  EXPECT_EQ(S_GetOutStreamFileName(out, name, length + 1), 0);
  EXPECT_STREQ(name, file.Name());
  S_DestroyOutStream(out);
}

TEST(S_GetIOError, TellsTheErrorOfAStreamAndZeroForAnythingElse) {
  const Handles h;
  const uint32_t destroyed = 0;
  for (const void* other : {static_cast<const void*>(h.part), static_cast<const void*>(&destroyed),
                            reinterpret_cast<const void*>(uintptr_t{16}),
                            reinterpret_cast<const void*>(UINTPTR_MAX - 1)})
    EXPECT_EQ(S_GetIOError(other), 0) << other;
  S_InStream* in = S_CreateInStream("/nonexistent/file", -1, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream("/dev/full", 0, nullptr, nullptr, nullptr, 2);
  EXPECT_EQ(S_GetIOError(in), ENOENT);
  EXPECT_EQ(S_GetIOError(out), 0);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(in, out), MIMORA_E_READ);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(h.in, out), MIMORA_E_WRITE);
  EXPECT_EQ(S_GetIOError(out), ENOSPC);
  EXPECT_EQ(S_FlushBuffers(out), ENOSPC);
  S_DestroyInStream(in);
  S_DestroyOutStream(out);
}

TEST(S_GetOutStreamBuffer, HasAZeroBehindTheBytesWhileTheyGrow) {
  const Handles h;
  std::string want;
  for (const size_t length : {1u, 1022u, 1u, 1u, 2000u, 100000u, 3000000u}) {
    const std::string piece(length, static_cast<char>('a' + length % 26));
    want += piece;
    const auto count = static_cast<int32_t>(length);
    S_InStream* in = S_CreateInStream(piece.data(), count, 0, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(S_CopyFromInStreamToOutStream(in, h.out), MIMORA_OK);
    S_DestroyInStream(in);
    ASSERT_EQ(BytesOf(h.out), want);
    EXPECT_EQ(BytesOf(h.out).data()[want.size()], '\0');
    EXPECT_EQ(S_WritePos(h.out), std::ssize(want));
  }
}

// ---- Exceptions ---------------------------------------------------------------------------------

struct Broken : std::exception {
  const char* what() const noexcept override { return "broken"; }
};

int64_t ThrowOnRead(S_Context, void*, int64_t) { throw Broken(); }
int64_t ThrowOnWrite(S_Context, const void*, int64_t) { throw Broken(); }

// In a process of its own, since a log is looked for only once. Shows what is caught, the "out"
// lines of the trace, and the error lines without their numbers.
[[noreturn]] void CallWithThrowingCallbacks() {
  std::string folder = (std::filesystem::temp_directory_path() / "exports_test.XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) ::_exit(1);
  ::setenv("MIMORA_KEY20", (";;;" + folder).c_str(), 1);
  std::ofstream(folder + "/mimora.err");
  P_SetQQ_callback([](const char* line) {
    if (std::string_view(line).ends_with(" out")) std::fprintf(stderr, "%s|", line);
  });
  M_Bodypart* part = M_CreateMessage();
  S_InStream* in = S_CreateInStream(nullptr, 0, 5, ThrowOnRead, nullptr, nullptr, 0);
  S_InStream* good = S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 1);
  const std::function<void()> calls[] = {
      [&] { M_LoadMessage(part, in); }, [&] { S_CopyFromInStreamToOutStream(good, out); },
      [&] { P_DecodeQuotedPrintable(in, out); }, [&] { S_FlushBuffers(out); }};
  for (const auto& call : calls) {
    try {
      call();
    } catch (const std::exception& e) {
      std::fprintf(stderr, "%s|", e.what());
    }
  }
  M_DestroyMessage(part);
  S_DestroyInStream(in);
  S_DestroyInStream(good);
  S_DestroyOutStream(out);
  const std::string log = ReadFile(folder + "/mimora.err");
  std::filesystem::remove_all(folder);
  const std::regex numbers("[-0-9]+ [:0-9]+ \\[[:0-9A-F]+\\] |=[0-9A-F]+|x[0-9a-f]+");
  std::fputs(std::regex_replace(log, numbers, "").c_str(), stderr);
  ::_exit(0);
}

TEST(Exceptions, AreLoggedAndPassThroughToTheCaller) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ::testing::Matcher<const std::string&> shown = ::testing::Eq(
      std::string("M_CreateMessage out|broken|broken|broken|broken|M_DestroyMessage out|"
                  "S_DestroyInStream out|S_DestroyInStream out|S_DestroyOutStream out|"
                  "<E> FillBuffer ex_pos, out\n"
                  "<E> M_LoadMessage ex_pos\n"
                  "<E> FlushBuffer ex_pos, this, kolik, IsBadReadPtr, gen_write, g_write\n"
                  "<E> WriteBlock ex_pos, s, bufpos, len, bufsize\n"
                  "<E> S_CopyFromInStreamToOutStream 0\n"
                  "<E> FillBuffer ex_pos, out\n"
                  "<E> P_DecodeQuotedPrintable ex_pos\n"
                  "<E> FlushBuffer ex_pos, this, kolik, IsBadReadPtr, gen_write, g_write\n"
                  "<E> S_FlushBuffers ex_pos\n"
                  "<E> FlushBuffer ex_pos, this, kolik, IsBadReadPtr, gen_write, g_write\n"
                  "<E> Moutstream\n"));
  EXPECT_EXIT(CallWithThrowingCallbacks(), ::testing::ExitedWithCode(0), shown);
}

}  // namespace
}  // namespace mimora::testing

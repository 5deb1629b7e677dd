// Copyright (c) 2026 the mimora developers.
//
// The exports as a caller meets them: what they write into the trace, and what they answer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
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
#include <thread>

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

std::string Hex(uintptr_t address) {
  char text[32];
  std::snprintf(text, sizeof text, "%" PRIXPTR, address);
  return text;
}

// ---- Trace --------------------------------------------------------------------------------------

std::string trace;  // lines of the callback

// What WORK writes into the trace, with names in place of the addresses of the handles.
std::string TraceOf(const Handles& handles, const std::function<void()>& work) {
  trace.clear();
  P_SetQQ_callback([](const char* line) { trace.append(line).append("\n"); });
  work();
  P_SetQQ_callback(nullptr);
  std::string named = trace;
  for (const auto& [handle, name] : {std::pair<const void*, const char*>{handles.part, "PART"},
                                     {handles.in, "IN"},
                                     {handles.out, "OUT"}}) {
    named = std::regex_replace(
        named, std::regex("\\b" + Hex(reinterpret_cast<uintptr_t>(handle)) + "\\b"), name);
  }
  return named;
}

struct TraceCase {
  const char* name;
  void (*call)(const Handles&);
  const char* want;
};

char buffer[100];
uint32_t size = 0;

constexpr TraceCase kTraceCases[] = {
    {"a check of a part", [](const Handles& h) { M_CheckBodypart(h.part); },
     "M_CheckBodypart in\ncheckbodypart for bp=[PART] \nM_CheckBodypart out\n"},
    {"a check of another kind",
     [](const Handles& h) { S_CheckInStream(reinterpret_cast<S_InStream*>(h.out)); },
     "M_CheckInStream in\ncheckinstream for in=[OUT] \nM_CheckInStream out\n"},
    {"the checks of the streams have the other prefix",
     [](const Handles& h) {
       S_CheckInStream(h.in);
       S_CheckOutStream(h.out);
     },
     "M_CheckInStream in\ncheckinstream for in=[IN] \nM_CheckInStream out\n"
     "M_CheckOutStream in\ncheckoutstream for out=[OUT] \nM_CheckOutStream out\n"},
    {"a null part", [](const Handles&) { M_HeaderFieldsCount(nullptr); },
     "M_HeaderFieldsCount in\ncheckbodypart for bp=[0] \nM_HeaderFieldsCount out\n"},
    {"the flags of a message are those of a part",
     [](const Handles& h) { M_GetMessageFlags(h.part, &size); },
     "M_GetBodypartFlags in\ncheckbodypart for bp=[PART] \nM_GetBodypartFlags out\n"},
    {"a value of a name",
     [](const Handles& h) { M_BodypartHeaderFieldValueProc(h.part, "Sub%sject", nullptr, &size); },
     "M_BodypartHeaderFieldValueProc in, keyname = 'Sub%sject'\n"
     "checkbodypart for bp=[PART] \nM_BodypartHeaderFieldValueProc out\n"},
    {"a value of no name",
     [](const Handles& h) { M_BodypartHeaderFieldValueProc(h.part, nullptr, nullptr, &size); },
     "M_BodypartHeaderFieldValueProc in, keyname = 'null'\n"
     "checkbodypart for bp=[PART] \nM_BodypartHeaderFieldValueProc out\n"},
    {"fields by index check a second time",
     [](const Handles& h) {
       const char* text = nullptr;
       M_BodypartHeaderField(h.part, 0, &text, &text);
       M_BodypartHeaderFieldByIndex(h.part, 0, buffer, &size);
     },
     "M_BodypartHeaderField in\ncheckbodypart for bp=[PART] \n"
     "checkbodypart for bp=[PART] M_BodypartHeaderField\nM_BodypartHeaderField out\n"
     "M_BodypartHeaderFieldByIndex in\ncheckbodypart for bp=[PART] \n"
     "checkbodypart for bp=[PART] M_BodypartHeaderFieldByIndex\nM_BodypartHeaderFieldByIndex "
     "out\n"},
    {"detaching checks a second time, and no null stream",
     [](const Handles& h) {
       M_UndefineBodypartBodyStreamDefinition(h.part, h.in);
       M_UndefineBodypartBodyStreamDefinition(h.part, nullptr);
     },
     "M_UndefineBodypartBodyStreamDefinition in\ncheckbodypart for bp=[PART] \n"
     "checkinstream for in=[IN] \n"
     "checkbodypart for bp=[PART] M_UndefineBodypartBodyStreamDefinition\n"
     "M_UndefineBodypartBodyStreamDefinition out\n"
     "M_UndefineBodypartBodyStreamDefinition in\ncheckbodypart for bp=[PART] \n"
     "checkbodypart for bp=[PART] M_UndefineBodypartBodyStreamDefinition\n"
     "M_UndefineBodypartBodyStreamDefinition out\n"},
    {"attaching checks a second time",
     [](const Handles& h) { M_TakeoverBodypartBodyStreamDefinition(h.part, h.in); },
     "M_TakeoverBodypartBodyStreamDefinition in\ncheckbodypart for bp=[PART] \n"
     "checkinstream for in=[IN] \n"
     "checkbodypart for bp=[PART] M_TakeoverBodypartBodyStreamDefinition\n"
     "M_TakeoverBodypartBodyStreamDefinition out\n"},
    {"a null message is destroyed without a check",
     [](const Handles&) { M_DestroyMessage(nullptr); },
     "M_DestroyMessage in\nM_DestroyMessage out\n"},
    {"errors of streams",
     [](const Handles& h) {
       S_GetIOError(h.in);
       S_GetIOError(h.out);
       S_GetIOError(h.part);
     },
     "S_GetIOError in\ncheckinstream for in=[IN] \nS_GetIOError out\n"
     "S_GetIOError in\ncheckoutstream for out=[OUT] \nS_GetIOError out\n"
     "S_GetIOError in\nS_GetIOError out\n"},
    {"a copy", [](const Handles& h) { S_CopyFromInStreamToOutStream(h.in, h.out); },
     "S_CopyFromInStreamToOutStream in\ncheckinstream for in=[IN] \ncheckoutstream for out=[OUT] \n"
     "S_CopyFromInStreamToOutStream out\n"},
    {"a seek", [](const Handles& h) { S_SeekReadPos(h.in, 0); },
     "S_SeekReadPos in\ncheckinstream for in=[IN] \nS_SeekReadPos out\n"},
    {"calls without lines of their own",
     [](const Handles& h) {
       S_LockInStream(h.in);
       S_UnlockInStream(h.in);
       P_SetGlobalParams("A=b\0");
       EXPECT_EQ(P_MIMORATest(5), 0);
     },
     ""},
    {"a line of the caller", [](const Handles&) { P_QQ("50%% of %s\n"); }, "50% of %s\n"},
};

TEST(Trace, HasTheseLinesWordForWord) {
  const Handles handles;
  for (const TraceCase& c : kTraceCases)
    EXPECT_EQ(TraceOf(handles, [&] { c.call(handles); }), c.want) << c.name;
}

TEST(Trace, ADumpWritesNoLinesButItsCheck) {
  const Handles handles;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(TraceOf(handles, [] { M_PrintBodypart(nullptr); }), "checkbodypart for bp=[0] \n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "bodypart is NULL\n");
}

int64_t ReadNothing(S_Context, void*, int64_t) { return 0; }
int64_t PointAtNothing(S_Context, const void**, int64_t) { return 0; }
int64_t WriteAll(S_Context, const void*, int64_t length) { return length; }

TEST(Trace, TellsTheAddressOfEachNewStream) {
  const auto trace_of = [](auto create, auto destroy) {
    const Handles handles;
    void* made = nullptr;
    const std::string lines = TraceOf(handles, [&] { made = create(); });
    const std::regex address("\\b" + Hex(reinterpret_cast<uintptr_t>(made)) + "\\b");
    destroy(static_cast<decltype(create())>(made));
    return std::regex_replace(lines, address, "NEW");
  };
  EXPECT_EQ(trace_of([] { return S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 16); },
                     S_DestroyInStream),
            "S_CreateInStream in\n_Minstream in this=NEW, amode=0, abufsize=3\n"
            "S_CreateInStream out [NEW]\n");
  EXPECT_EQ(trace_of([] { return S_CreateInStream("/", -1, 0, nullptr, nullptr, nullptr, 26); },
                     S_DestroyInStream),
            "S_CreateInStream in\n_Minstream in this=NEW, amode=1, abufsize=1A\n"
            "S_CreateInStream out [NEW]\n");
  EXPECT_EQ(
      trace_of([] { return S_CreateInStream(nullptr, 0, 5, ReadNothing, nullptr, nullptr, 26); },
               S_DestroyInStream),
      "S_CreateInStream in\n_Minstream in this=NEW, amode=1, abufsize=1A\n"
      "S_CreateInStream out [NEW]\n");
  EXPECT_EQ(trace_of([] { return S_CreateInStream1(5, 26, PointAtNothing, nullptr, nullptr); },
                     S_DestroyInStream),
            "_Minstream in this=NEW, amode=1, abufsize=1A\n");
  EXPECT_EQ(trace_of([] { return S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0); },
                     S_DestroyOutStream),
            "S_CreateOutStream in\n_Moutstream this=NEW, amode=0, g_write=0\n"
            "S_CreateOutStream out [NEW]\n");
  EXPECT_EQ(trace_of([] { return S_CreateOutStream(nullptr, 5, WriteAll, nullptr, nullptr, 9); },
                     S_DestroyOutStream),
            "S_CreateOutStream in\nMoutstream with external fctions: this=NEW, g_write=" +
                Hex(reinterpret_cast<uintptr_t>(WriteAll)) + "\nS_CreateOutStream out [NEW]\n");
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
      {"buffer, negative", M_LoadBodypartFromBuffer(h.part, "a", -1), MIMORA_E_NOT_OPEN},
      {"string", M_LoadBodypartFromString(nullptr, "a", 1), MIMORA_E_NOT_OPEN},
      {"string, no text", M_LoadBodypartFromString(h.part, nullptr, -1), MIMORA_E_NOT_OPEN},
      {"string, negative", M_LoadBodypartFromString(h.part, "a", -2), MIMORA_E_NOT_OPEN},
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
      {"value of no name", null(M_BodypartHeaderFieldValue(h.part, nullptr)), 0},
      {"value copied", M_BodypartHeaderFieldValueProc(nullptr, "To", buffer, &count), -1},
      {"n-th value", null(M_BodypartHeaderFieldNthValue(nullptr, "To", 1)), 0},
      {"n-th copied", M_BodypartHeaderFieldNthValueProc(nullptr, "To", 1, buffer, &count), -1},
      {"delete field", M_DeleteBodypartHeaderField(nullptr, 0), -1},
      {"encoding", M_GetContentTransferEncoding(nullptr, buffer, &count), -1},
      {"disposition", M_GetContentDisposition(nullptr, buffer, &count), -1},
      {"charset", M_GetCharset(nullptr, buffer, &count), -1},
      {"parameter", M_MimeParameter(nullptr, "Content-Type", "name", buffer, &count), -1},
      {"parameter of none", M_MimeParameter(h.part, nullptr, nullptr, buffer, &count), -1},
      {"body size", M_GetBodypartSize(nullptr, &wide, &wide), -1},
      {"body size, nowhere", M_GetBodypartSize(h.part, nullptr, nullptr), 0},
      {"attachment size", M_GetAttachmentSize(0, nullptr), -1},
      {"raw body size", M_GetBodyTextRawSize(nullptr), 0},
      {"raw part size", M_GetBodypartTextRawSize(nullptr), 0},
      {"body text", M_GetBodyText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN},
      {"body text, nowhere", M_GetBodyText(h.part, nullptr, nullptr, 0, &size), MIMORA_E_NOT_OPEN},
      {"part text", M_GetBodypartText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN},
      {"part text, no size", M_GetBodypartText(h.part, nullptr, buffer, 0, nullptr),
       MIMORA_E_NOT_OPEN},
      {"no source", null(S_CreateInStream(nullptr, 5, 0, nullptr, nullptr, nullptr, 0)), 0},
      {"no callback", null(S_CreateInStream1(0, 0, nullptr, nullptr, nullptr)), 0},
      {"bytes", S_GetOutStreamBuffer(nullptr, &bytes, &count), -1},
      {"bytes, nowhere", S_GetOutStreamBuffer(h.out, nullptr, nullptr), 0},
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

TEST(SizedCopy, CopiesWhenTextAndZeroFitAndTellsTheSizeWhenNot) {
  using Copy = int32_t (*)(M_Bodypart*, char*, uint32_t*);
  struct CopyCase {
    const char* name;
    Copy copy;
    const char* want;  // null: there is none
  };
  constexpr CopyCase kCases[] = {
      {"value",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_BodypartHeaderFieldValueProc(p, "sUBJECT", b, s);
       },
       "one\r\n two"},
      {"no value",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_BodypartHeaderFieldValueProc(p, "Subj", b, s);
       },
       nullptr},
      {"second value",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_BodypartHeaderFieldNthValueProc(p, "received", 2, b, s);
       },
       "2"},
      {"third of two values",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_BodypartHeaderFieldNthValueProc(p, "received", 3, b, s);
       },
       nullptr},
      {"value number 0",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_BodypartHeaderFieldNthValueProc(p, "received", 0, b, s);
       },
       nullptr},
      {"encoding", M_GetContentTransferEncoding, "7bit"},
      {"disposition", M_GetContentDisposition, "inline"},
      {"charset", M_GetCharset, "x y"},
      {"parameter",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_MimeParameter(p, "content-type", "NAME", b, s);
       },
       "n.txt"},
      {"no parameter",
       [](M_Bodypart* p, char* b, uint32_t* s) {
         return M_MimeParameter(p, "Content-Type", "filename", b, s);
       },
       nullptr},
  };
  const Handles h;
  for (const CopyCase& c : kCases) {
    SCOPED_TRACE(c.name);
    const auto length = static_cast<uint32_t>(c.want != nullptr ? std::strlen(c.want) : 0);
    const int32_t none = c.want != nullptr ? 1 : -1;
    const uint32_t needed = c.want != nullptr ? length + 1 : 77;
    char text[32] = "untouched";
    uint32_t room = 77;
    EXPECT_EQ(c.copy(h.part, nullptr, &room), none);
    EXPECT_EQ(room, needed);
    EXPECT_EQ(c.copy(h.part, text, nullptr), none);
    room = length;
    EXPECT_EQ(c.copy(h.part, text, &room), none);
    EXPECT_EQ(room, c.want != nullptr ? length + 1 : 0);
    EXPECT_STREQ(text, "untouched");
    if (c.want == nullptr) continue;
    for (const uint32_t enough : {length + 1, 32u}) {
      std::memset(text, '#', sizeof text);
      room = enough;
      EXPECT_EQ(c.copy(h.part, text, &room), 0);
      EXPECT_STREQ(text, c.want);
      EXPECT_EQ(text[length + 1], '#');
      EXPECT_EQ(room, enough);
    }
  }
}

// Its size never counts the zero.
TEST(M_BodypartHeaderFieldByIndex, WritesOneByteMoreThanItsSizeSays) {
  const Handles h;
  char text[16];
  for (const uint32_t enough : {7u, 15u}) {
    std::memset(text, '#', sizeof text);
    uint32_t room = enough;
    EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, text, &room), 0);
    EXPECT_EQ(std::string_view(text, 9), std::string_view("To: abc\0#", 9));
    EXPECT_EQ(room, 7u);
  }
  struct RefusedCase {
    const char* name;
    int32_t index;
    char* text;
    uint32_t room;
    int32_t want;
    uint32_t want_room;
  };
  const RefusedCase cases[] = {
      {"one too small", 0, text, 6, 1, 7},
      {"no room", 0, text, 0, 1, 7},
      {"no buffer", 0, nullptr, 100, 1, 7},
      {"index -1", -1, text, 15, -1, 15},
      {"index behind the last", 7, text, 15, -1, 15},
  };
  std::memset(text, '#', sizeof text);
  for (const RefusedCase& c : cases) {
    uint32_t room = c.room;
    EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, c.index, c.text, &room), c.want) << c.name;
    EXPECT_EQ(room, c.want_room) << c.name;
  }
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, text, nullptr), 1);
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 7, text, nullptr), -1);
  EXPECT_EQ(std::string(text, sizeof text), std::string(sizeof text, '#'));
}

// ---- Streams ------------------------------------------------------------------------------------

TEST(S_CreateInStream, TakesEveryLengthButMinusOneForMemory) {
  const TextFile file("of a file");
  struct SourceCase {
    const char* name;
    const void* source;
    int32_t length;
    std::string_view want;
  };
  const SourceCase cases[] = {
      {"a file", file.Name(), -1, "of a file"},
      {"memory", "bytes", 3, "byt"},
      {"empty memory", file.Name(), 0, ""},
      {"less than nothing", "bytes", -2, ""},
  };
  for (const SourceCase& c : cases) {
    SCOPED_TRACE(c.name);
    S_InStream* in = S_CreateInStream(c.source, c.length, 0, nullptr, nullptr, nullptr, 0);
    S_OutStream* out = S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(S_CopyFromInStreamToOutStream(in, out), MIMORA_OK);
    const void* bytes = nullptr;
    uint32_t length = 0;
    EXPECT_EQ(S_GetOutStreamBuffer(out, &bytes, &length), 0);
    EXPECT_EQ(std::string_view(static_cast<const char*>(bytes), length), c.want);
    S_DestroyInStream(in);
    S_DestroyOutStream(out);
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
  const std::string temporary =
      name_of(S_CreateOutStream(nullptr, 0, WriteAll, nullptr, nullptr, -1));
  EXPECT_TRUE(std::filesystem::remove(temporary)) << temporary;
  EXPECT_EQ(name_of(S_CreateOutStream(file.Name(), 5, WriteAll, nullptr, nullptr, 9)), file.Name());
  EXPECT_EQ(ReadFile(file.Name()), "");
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 5, WriteAll, nullptr, nullptr, 9)), "");
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0)), "");
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
  for (const size_t length : {1u, 1022u, 1u, 1u, 2000u, 100000u}) {
    const std::string piece(length, static_cast<char>('a' + length % 26));
    want += piece;
    S_InStream* in = S_CreateInStream(piece.data(), static_cast<int32_t>(length), 0, nullptr,
                                      nullptr, nullptr, 0);
    EXPECT_EQ(S_CopyFromInStreamToOutStream(in, h.out), MIMORA_OK);
    S_DestroyInStream(in);
    const void* bytes = nullptr;
    uint32_t filled = 0;
    EXPECT_EQ(S_GetOutStreamBuffer(h.out, &bytes, &filled), 0);
    ASSERT_EQ(filled, want.size());
    EXPECT_EQ(std::string_view(static_cast<const char*>(bytes), filled + 1),
              std::string_view(want.c_str(), want.size() + 1));
    EXPECT_EQ(S_WritePos(h.out), std::ssize(want));
  }
}

TEST(S_LockInStream, IsGivenBackAsOftenAsItWasTaken) {
  const Handles h;
  S_LockInStream(h.in);
  S_LockInStream(h.in);
  std::atomic<bool> taken{false};
  std::thread other([&] {
    S_LockInStream(h.in);
    taken = true;
    S_UnlockInStream(h.in);
  });
  S_UnlockInStream(h.in);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(taken);
  S_UnlockInStream(h.in);
  other.join();
  EXPECT_TRUE(taken);
}

// ---- Exceptions ---------------------------------------------------------------------------------

struct Broken : std::exception {
  const char* what() const noexcept override { return "broken"; }
};

int64_t ThrowOnRead(S_Context, void*, int64_t) { throw Broken(); }
int64_t ThrowOnWrite(S_Context, const void*, int64_t) { throw Broken(); }

// Every export that calls back, with callbacks that throw; the handles can still be destroyed.
void CallWithThrowingCallbacks(const std::function<void(const std::function<void()>&)>& run) {
  S_InStream* in = S_CreateInStream(nullptr, 0, 5, ThrowOnRead, nullptr, nullptr, 0);
  S_InStream* good = S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 1);
  M_Bodypart* part = M_CreateMessage();
  run([&] { M_LoadMessage(part, in); });
  run([&] { S_CopyFromInStreamToOutStream(good, out); });
  run([&] { P_DecodeQuotedPrintable(in, out); });
  run([&] { S_FlushBuffers(out); });
  EXPECT_EQ(M_DestroyMessage(part), 0);
  S_DestroyInStream(in);
  S_DestroyInStream(good);
  S_DestroyOutStream(out);
}

TEST(Exceptions, PassThroughToTheCallerWithoutAnOutLine) {
  const Handles handles;
  CallWithThrowingCallbacks([&](const std::function<void()>& call) {
    const std::string lines = TraceOf(handles, [&] { EXPECT_THROW(call(), Broken); });
    EXPECT_NE(lines.find(" in\n"), std::string::npos);
    EXPECT_EQ(lines.find(" out\n"), std::string::npos) << lines;
  });
}

// In a process of its own, since a log is looked for only once.
[[noreturn]] void ShowErrorLines() {
  std::string folder = (std::filesystem::temp_directory_path() / "exports_test.XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) ::_exit(1);
  ::setenv("MIMORA_KEY20", (";;;" + folder).c_str(), 1);
  std::ofstream(folder + "/mimora.err");
  M_HeaderFieldsCount(nullptr);
  CallWithThrowingCallbacks([](const std::function<void()>& call) {
    try {
      call();
    } catch (const Broken&) {
    }
  });
  const std::string log = ReadFile(folder + "/mimora.err");
  std::filesystem::remove_all(folder);
  std::fputs(std::regex_replace(
                 log, std::regex("[-0-9]+ [:0-9]+ \\[[:0-9A-F]+\\] |=[0-9A-F]+|x[0-9a-f]+"), "")
                 .c_str(),
             stderr);
  ::_exit(0);
}

TEST(Exceptions, AreLoggedOnTheirWay) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ::testing::Matcher<const std::string&> lines = ::testing::Eq(
      std::string("checkbodypart assert failure\n"
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
  EXPECT_EXIT(ShowErrorLines(), ::testing::ExitedWithCode(0), lines);
}

}  // namespace
}  // namespace mimora::testing

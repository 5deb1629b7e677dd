// Copyright (c) 2026 the mimora developers.
//
// The exports as a caller meets them: what they write into the trace, and what they answer.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

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

int64_t PointAtNothing(S_Context, const void**, int64_t) { return 0; }
int64_t WriteAll(S_Context, const void*, int64_t length) { return length; }

char buffer[100];
uint32_t size = 0;

// ---- Trace --------------------------------------------------------------------------------------

std::string trace;

void StartTrace() {
  trace.clear();
  P_SetQQ_callback([](const char* line) { trace.append(line).append("\n"); });
}

// Ends the trace and puts a name in place of an address.
void NameInTrace(const void* address, std::string_view name) {
  P_SetQQ_callback(nullptr);
  char hex[32];
  std::snprintf(hex, sizeof hex, "%" PRIXPTR, reinterpret_cast<uintptr_t>(address));
  for (size_t at = 0; (at = trace.find(hex, at)) != std::string::npos;)
    trace.replace(at, std::strlen(hex), name);
}

TEST(Trace, HasTheseLinesWordForWord) {
  const Handles h;
  ::testing::internal::CaptureStdout();
  StartTrace();
  M_HeaderFieldsCount(nullptr);
  M_DestroyMessage(nullptr);  // is not checked
  S_CheckInStream(h.in);
  M_GetMessageFlags(h.part, &size);
  M_BodypartHeaderFieldValueProc(h.part, "%s", nullptr, &size);
  M_BodypartHeaderFieldValueProc(h.part, nullptr, nullptr, &size);
  M_BodypartHeaderField(h.part, 0, nullptr, nullptr);
  M_UndefineBodypartBodyStreamDefinition(h.part, h.in);
  M_UndefineBodypartBodyStreamDefinition(h.part, nullptr);
  S_GetIOError(h.out);
  S_GetIOError(h.part);
  S_CopyFromInStreamToOutStream(h.in, h.out);
  M_PrintBodypart(nullptr);
  S_LockInStream(h.in), S_UnlockInStream(h.in), P_SetGlobalParams("A=b\0"), P_MIMORATest(5);
  NameInTrace(h.part, "PART"), NameInTrace(h.in, "IN"), NameInTrace(h.out, "OUT");
  EXPECT_EQ(trace,
            "M_HeaderFieldsCount in\ncheckbodypart for bp=[0] \nM_HeaderFieldsCount out\n"
            "M_DestroyMessage in\nM_DestroyMessage out\n"
            "M_CheckInStream in\ncheckinstream for in=[IN] \nM_CheckInStream out\n"
            "M_GetBodypartFlags in\ncheckbodypart for bp=[PART] \nM_GetBodypartFlags out\n"
            "M_BodypartHeaderFieldValueProc in, keyname = '%s'\n"
            "checkbodypart for bp=[PART] \nM_BodypartHeaderFieldValueProc out\n"
            "M_BodypartHeaderFieldValueProc in, keyname = 'null'\n"
            "checkbodypart for bp=[PART] \nM_BodypartHeaderFieldValueProc out\n"
            "M_BodypartHeaderField in\ncheckbodypart for bp=[PART] \n"
            "checkbodypart for bp=[PART] M_BodypartHeaderField\nM_BodypartHeaderField out\n"
            "M_UndefineBodypartBodyStreamDefinition in\ncheckbodypart for bp=[PART] \n"
            "checkinstream for in=[IN] \n"
            "checkbodypart for bp=[PART] M_UndefineBodypartBodyStreamDefinition\n"
            "M_UndefineBodypartBodyStreamDefinition out\n"
            "M_UndefineBodypartBodyStreamDefinition in\ncheckbodypart for bp=[PART] \n"
            "checkbodypart for bp=[PART] M_UndefineBodypartBodyStreamDefinition\n"
            "M_UndefineBodypartBodyStreamDefinition out\n"
            "S_GetIOError in\ncheckoutstream for out=[OUT] \nS_GetIOError out\n"
            "S_GetIOError in\nS_GetIOError out\n"
            "S_CopyFromInStreamToOutStream in\ncheckinstream for in=[IN] \n"
            "checkoutstream for out=[OUT] \nS_CopyFromInStreamToOutStream out\n"
            "checkbodypart for bp=[0] \n");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "bodypart is NULL\n");
}

TEST(Trace, TellsTheAddressOfANewStream) {
  StartTrace();
  S_InStream* memory = S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 26);
  S_InStream* pointing = S_CreateInStream1(5, 26, PointAtNothing, nullptr, nullptr);
  S_OutStream* bytes = S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* callback = S_CreateOutStream(nullptr, 5, WriteAll, nullptr, nullptr, 9);
  NameInTrace(memory, "MEMORY"), NameInTrace(pointing, "POINTING");
  NameInTrace(bytes, "BYTES"), NameInTrace(callback, "CALLBACK");
  NameInTrace(reinterpret_cast<const void*>(WriteAll), "WRITE");
  EXPECT_EQ(trace,
            "S_CreateInStream in\n_Minstream in this=MEMORY, amode=0, abufsize=3\n"
            "S_CreateInStream out [MEMORY]\n"
            "_Minstream in this=POINTING, amode=1, abufsize=1A\n"
            "S_CreateOutStream in\n_Moutstream this=BYTES, amode=0, g_write=0\n"
            "S_CreateOutStream out [BYTES]\n"
            "S_CreateOutStream in\n_Moutstream this=CALLBACK, amode=1, g_write=0\n"
            "Moutstream with external fctions: this=CALLBACK, g_write=WRITE\n"
            "S_CreateOutStream out [CALLBACK]\n");
  S_DestroyInStream(memory), S_DestroyInStream(pointing);
  S_DestroyOutStream(bytes), S_DestroyOutStream(callback);
}

// ---- Null handles -------------------------------------------------------------------------------

#define NULL_CASE(call, want) \
  { #call, int64_t{call }, want }

TEST(NullHandles, AreAnsweredWithTheValueThatStandsForNothingAndDoNoHarm) {
  const Handles h;
  const char* text = "x";
  uint32_t count = 5;
  const struct {
    const char* call;
    int64_t got;
    int64_t want;
  } cases[] = {
      NULL_CASE(M_LoadMessage(nullptr, h.in), MIMORA_E_NOT_OPEN),
      NULL_CASE(M_LoadMessage(h.part, nullptr), MIMORA_E_NOT_OPEN),
      NULL_CASE(M_LoadBodypartFromString(h.part, nullptr, -1), MIMORA_E_NOT_OPEN),
      NULL_CASE(M_GetChildBodypartsCount(nullptr), 0),
      NULL_CASE(M_GetNthChildBodypart(nullptr, 0) != nullptr, 0),
      NULL_CASE(M_DeleteChildBodypart(nullptr, h.part), -1),
      NULL_CASE(M_DeleteChildBodypart(h.part, nullptr), -1),
      NULL_CASE(M_GetMessageFlags(h.part, nullptr), -1),
      NULL_CASE(M_HeaderFieldsCount(nullptr), -1),
      NULL_CASE(M_BodypartHeaderField(nullptr, 0, &text, nullptr), -1),
      NULL_CASE(text != nullptr, 0),
      NULL_CASE(M_BodypartHeaderFieldByIndex(nullptr, 0, buffer, &count), -1),
      NULL_CASE(M_BodypartHeaderFieldValue(nullptr, "To") != nullptr, 0),
      NULL_CASE(M_BodypartHeaderFieldValueProc(nullptr, "To", buffer, &count), -1),
      NULL_CASE(M_GetAttachmentSize(0, nullptr), -1),
      NULL_CASE(M_GetBodyText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN),
      NULL_CASE(M_GetBodypartText(h.part, nullptr, buffer, 0, nullptr), MIMORA_E_NOT_OPEN),
      NULL_CASE(S_CreateInStream(nullptr, 5, 0, nullptr, nullptr, nullptr, 0) != nullptr, 0),
      NULL_CASE(S_GetOutStreamBuffer(nullptr, nullptr, &count), -1),
      NULL_CASE(S_WritePos(nullptr), -1),
      NULL_CASE(S_FlushBuffers(nullptr), EBADF),
      NULL_CASE(S_CopyFromInStreamToOutStream(nullptr, h.out), MIMORA_E_NOT_OPEN),
      NULL_CASE(S_CopyFromInStreamToOutStream(h.in, nullptr), MIMORA_E_NOT_OPEN),
      NULL_CASE(P_EncodeBASE64(nullptr, "/dev/null", 76), MIMORA_E_OPEN_INPUT),
      NULL_CASE(P_DecodeBASE64("/dev/null", nullptr), MIMORA_E_OPEN_OUTPUT),
  };
  for (const auto& c : cases) EXPECT_EQ(c.got, c.want) << c.call;
  EXPECT_EQ(count, 5u) << "what is not answered is not touched";
  char name[] = "x", type[] = "x";
  EXPECT_EQ(S_GetOutStreamFileName(nullptr, name, 2), 1);
  EXPECT_EQ(M_GetBodypartMimeContentType(nullptr, type, 2), 1);
  EXPECT_EQ(name + std::string(type), "");
  M_CleanMessage(nullptr);
  M_UndefineBodypartBodyStreamDefinition(nullptr, h.in);
  M_TakeoverBodypartBodyStreamDefinition(nullptr, nullptr);
  S_DestroyInStream(nullptr), S_DestroyOutStream(nullptr);
  S_SeekReadPos(nullptr, 1), S_LockInStream(nullptr), S_UnlockInStream(nullptr);
  P_EncodeQuotedPrintable(h.in, nullptr), P_DecodeQuotedPrintable(nullptr, h.out);
}

// ---- Texts --------------------------------------------------------------------------------------

TEST(SizedCopy, CopiesWhenTextAndZeroFitTellsTheSizeWhenNotAndElseTouchesNothing) {
  using Copy = std::function<int32_t(M_Bodypart*, char*, uint32_t*)>;
  const auto received = [](int32_t n) -> Copy {
    return [n](M_Bodypart* part, char* to, uint32_t* room) {
      return M_BodypartHeaderFieldNthValueProc(part, "received", n, to, room);
    };
  };
  const Copy subject = [](M_Bodypart* part, char* to, uint32_t* room) {
    return M_BodypartHeaderFieldValueProc(part, "sUBJECT", to, room);
  };
  const Copy parameter = [](M_Bodypart* part, char* to, uint32_t* room) {
    return M_MimeParameter(part, "content-type", "NAME", to, room);
  };
  const struct {
    const char* name;
    Copy copy;
    const char* want;  // null: there is no such text
  } cases[] = {
      {"a field", subject, "one\r\n two"},
      {"the second field", received(2), "2"},
      {"the third of two", received(3), nullptr},
      {"a parameter", parameter, "n.txt"},
      {"the encoding", M_GetContentTransferEncoding, "7bit"},
      {"the disposition", M_GetContentDisposition, "inline"},
      {"the charset", M_GetCharset, "x y"},
  };
  const Handles h;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    char text[32] = "untouched";
    uint32_t room = 32;
    if (c.want == nullptr) {
      EXPECT_EQ(c.copy(h.part, text, &room), -1);
      EXPECT_EQ(c.copy(h.part, text, nullptr), -1);
      EXPECT_EQ(room, 32u);
      EXPECT_STREQ(text, "untouched");
      continue;
    }
    const auto needed = static_cast<uint32_t>(std::strlen(c.want) + 1);
    EXPECT_EQ(c.copy(h.part, nullptr, &room), 1);
    EXPECT_EQ(std::exchange(room, needed - 1), needed);
    EXPECT_EQ(c.copy(h.part, text, &room), 1);
    EXPECT_EQ(c.copy(h.part, text, nullptr), 1);
    EXPECT_EQ(room, needed);
    EXPECT_STREQ(text, "untouched");
    for (const uint32_t enough : {needed, 32u}) {
      std::memset(text, '#', sizeof text);
      room = enough;
      EXPECT_EQ(c.copy(h.part, text, &room), 0);
      EXPECT_STREQ(text, c.want);
      EXPECT_EQ(text[needed], '#');
      EXPECT_EQ(room, enough);
    }
  }
}

// Its size does not count the zero, neither in what a buffer needs nor in what is stored.
TEST(M_BodypartHeaderFieldByIndex, WritesOneByteMoreThanItsSizeSays) {
  const Handles h;
  char text[16] = "untouched";
  uint32_t room = 6;
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, text, &room), 1) << "one too small";
  EXPECT_EQ(std::exchange(room, 15), 7u);
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, nullptr, &room), 1) << "no buffer";
  EXPECT_EQ(std::exchange(room, 15), 7u);
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 7, text, &room), -1) << "no such index";
  EXPECT_EQ(std::exchange(room, 7), 15u);
  EXPECT_STREQ(text, "untouched");
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(h.part, 0, text, &room), 0) << "exact size";
  EXPECT_EQ(room, 7u);
  EXPECT_EQ(std::string(text, 9), std::string("To: abc\0d", 9));
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
       {std::pair<int32_t, std::string_view>{-1, "a file"}, {4, file.Name()}, {-2, ""}}) {
    const Handles h;
    S_InStream* in = S_CreateInStream(file.Name(), length, 0, nullptr, nullptr, nullptr, 0);
    EXPECT_EQ(S_CopyFromInStreamToOutStream(in, h.out), MIMORA_OK);
    EXPECT_EQ(BytesOf(h.out), length == 4 ? want.substr(0, 4) : want);
    S_DestroyInStream(in);
  }
}

TEST(S_CreateOutStream, PrefersAFileThenCallbacksThenATemporaryFile) {
  const TextFile file("old");
  // The name needs room for its zero.
  const auto name_of = [](S_OutStream* out) {
    char name[4096] = "x";
    EXPECT_EQ(S_GetOutStreamFileName(out, name, 0), 1);
    EXPECT_STREQ(name, "x");
    EXPECT_EQ(S_GetOutStreamFileName(out, name, sizeof name), 0);
    const std::string whole = name;
    const auto length = static_cast<uint32_t>(whole.size());
    EXPECT_EQ(S_GetOutStreamFileName(out, name, length), 1);
    EXPECT_STREQ(name, "");
    EXPECT_EQ(S_GetOutStreamFileName(out, name, length + 1), 0);
    EXPECT_EQ(name, whole);
    S_DestroyOutStream(out);
    return whole;
  };
  EXPECT_EQ(name_of(S_CreateOutStream(file.Name(), 5, WriteAll, nullptr, nullptr, 9)), file.Name());
  EXPECT_EQ(ReadFile(file.Name()), "");
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 5, WriteAll, nullptr, nullptr, 9)), "");
  const auto temporary = name_of(S_CreateOutStream(nullptr, 0, WriteAll, nullptr, nullptr, -1));
  EXPECT_TRUE(std::filesystem::remove(temporary)) << temporary;
  EXPECT_EQ(name_of(S_CreateOutStream(nullptr, 0, WriteAll, nullptr, nullptr, 0)), "");
}

TEST(S_GetIOError, TellsTheErrorOfAStreamAndZeroForAnythingElse) {
  const Handles h;
  const uint32_t destroyed = 0;
  for (const void* other : {static_cast<const void*>(h.part), static_cast<const void*>(&destroyed),
                            reinterpret_cast<const void*>(UINTPTR_MAX - 1)})
    EXPECT_EQ(S_GetIOError(other), 0) << other;
  S_InStream* in = S_CreateInStream("/nonexistent/file", -1, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream("/dev/full", 0, nullptr, nullptr, nullptr, 2);
  EXPECT_EQ(S_GetIOError(in), ENOENT);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(in, out), MIMORA_E_READ);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(h.in, out), MIMORA_E_WRITE);
  EXPECT_EQ(S_GetIOError(out), ENOSPC);
  S_DestroyInStream(in);
  S_DestroyOutStream(out);
}

// ---- Exceptions ---------------------------------------------------------------------------------

struct Broken : std::exception {
  const char* what() const noexcept override { return "broken"; }
};

int64_t ThrowOnRead(S_Context, void*, int64_t) { throw Broken(); }
int64_t ThrowOnWrite(S_Context, const void*, int64_t) { throw Broken(); }

// A byte, then an error.
int64_t PointAtOneByte(S_Context context, const void** bytes, int64_t) {
  int64_t& left = *reinterpret_cast<int64_t*>(context);
  *bytes = "x";
  return left-- > 0 ? 1 : -1;
}

// With one byte in its buffer.
S_OutStream* FilledThrowingStream() {
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 2);
  int64_t left = 1;
  S_InStream* in =
      S_CreateInStream1(reinterpret_cast<S_Context>(&left), 0, PointAtOneByte, nullptr, nullptr);
  S_CopyFromInStreamToOutStream(in, out);
  S_DestroyInStream(in);
  return out;
}

// In a process of its own, since a log is looked for only once. Shows what is caught, the "out"
// lines of the trace, and the error lines without their prefix and addresses.
[[noreturn]] void CallWithThrowingCallbacks() {
  std::string folder = (std::filesystem::temp_directory_path() / "exports_test.XXXXXX").string();
  if (::mkdtemp(folder.data()) == nullptr) ::_exit(1);
  ::setenv("MIMORA_KEY20", (";;;" + folder).c_str(), 1);
  std::ofstream(folder + "/mimora.err");
  M_Bodypart* part = M_CreateMessage();
  S_InStream* in = S_CreateInStream(nullptr, 0, 5, ThrowOnRead, nullptr, nullptr, 0);
  S_InStream* good = S_CreateInStream("abc", 3, 0, nullptr, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 1);
  S_OutStream* filled = FilledThrowingStream();
  S_OutStream* last = FilledThrowingStream();
  P_SetQQ_callback([](const char* line) {
    if (std::string_view(line).ends_with(" out")) std::fprintf(stderr, "%s|", line);
  });
  const std::function<void()> calls[] = {
      [&] { M_LoadMessage(part, in); }, [&] { S_CopyFromInStreamToOutStream(good, out); },
      [&] { S_FlushBuffers(filled); }, [&] { S_FlushBuffers(filled); },
      [&] { S_DestroyOutStream(last); }};
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
  S_DestroyOutStream(filled);
  std::ifstream log(folder + "/mimora.err");
  for (std::string line; std::getline(log, line);) {
    for (size_t at = 0; (at = line.find('=', at) + 1) != 0;) {
      const size_t stop = line.find_first_not_of("0123456789ABCDEF", at);
      const size_t length = std::min(stop, line.size()) - at;
      if (length >= 6) line.replace(at, length, "*");
    }
    std::fprintf(stderr, "%s\n", line.substr(line.find("<E>")).c_str());
  }
  std::filesystem::remove_all(folder);
  ::_exit(0);
}

TEST(Exceptions, AreLoggedAndPassThroughToTheCaller) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
#define FLUSH "<E> FlushBuffer ex_pos=1, this=*, kolik=1, IsBadReadPtr=0, gen_write=*, g_write=*\n"
  const ::testing::Matcher<const std::string&> shown = ::testing::Eq(
      std::string("broken|broken|broken|S_FlushBuffers out|broken|M_DestroyMessage out|"
                  "S_DestroyInStream out|S_DestroyInStream out|S_DestroyOutStream out|"
                  "S_DestroyOutStream out|"
                  "<E> FillBuffer ex_pos=2, out=0\n"
                  "<E> M_LoadMessage ex_pos=1\n" FLUSH
                  "<E> WriteBlock ex_pos=2, s=*, bufpos=1, len=2, bufsize=1\n"
                  "<E> S_CopyFromInStreamToOutStream 0x1\n" FLUSH
                  "<E> S_FlushBuffers ex_pos=1\n" FLUSH "<E> Moutstream\n"
                  "<E> S_DestroyOutStream ex_pos=0\n"));
  EXPECT_EXIT(CallWithThrowingCallbacks(), ::testing::ExitedWithCode(0), shown);
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
//
// The exports as a caller meets them: what they write into the trace, and what they answer.
#include <cinttypes>
#include <cstring>
#include <exception>
#include <utility>

#include "mimora/mimora.h"
#include "support/process.h"

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
void NameInTrace(const void* address, std::string_view name, const char* format = "%" PRIXPTR) {
  P_SetQQ_callback(nullptr);
  char hex[32];
  std::snprintf(hex, sizeof hex, format, reinterpret_cast<uintptr_t>(address));
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

TEST(Trace, TellsTheStepsOfWritingABody) {
  const Handles h;
  StartTrace();
  M_SaveBodypartBody(h.part, nullptr, nullptr, nullptr, h.out);
  NameInTrace(h.part, "PART"), NameInTrace(h.out, "OUT");
  // In memory the body is read through a stream of its own, which is not of interest here.
  const size_t window = trace.find("_Minstream");
  trace.erase(window, trace.find('\n', window) + 1 - window);
  const size_t source = trace.find("checkinstream");
  trace.erase(source, trace.find('\n', source) + 1 - source);
  EXPECT_EQ(trace,
            "M_SaveBodypartBody in\ncheckbodypart for bp=[PART] \ncheckoutstream for out=[OUT] \n"
            "M_SaveBodypartBody bp = PART, in4 = 0\n"
            "WriteBodypartBodyToStream in\nWriteBodypartBodyToStream 1\n"
            "WriteBodypartBodyToStream 3\nWriteBodypartBodyToStream 4\n"
            "WriteBodypartBodyToStream 7\nBody.BodyData.ContentTransferEncoding = 7bit\n"
            "WriteBodypartBodyToStream 8\nWriteBodypartBodyToStream out for PART\n"
            "M_SaveBodypartBody out\n");
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

TEST(Trace, TellsTheArgumentsOfHtml) {
  constexpr char16_t kHtml[] = u"<p>a";
  char16_t text[2];
  uint32_t length = 2;
  StartTrace();
  M_HTMLToText(kHtml, text, &length);
  NameInTrace(kHtml, "HTML", "%" PRIxPTR), NameInTrace(text, "TEXT", "%" PRIxPTR);
  EXPECT_EQ(trace, "M_HTMLToText in HTML=HTML, Text=TEXT, *TextLen=2\nM_HTMLToText out\n");
}

// ---- Null handles -------------------------------------------------------------------------------

TEST(NullHandles, AreAnsweredWithTheValueThatStandsForNothingAndDoNoHarm) {
  const Handles h;
  const char* text = "x";
  uint32_t count = 5;
  EXPECT_EQ(M_LoadMessage(nullptr, h.in), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_LoadMessage(h.part, nullptr), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_LoadBodypartFromString(h.part, nullptr, -1), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_GetChildBodypartsCount(nullptr), 0);
  EXPECT_EQ(M_GetNthChildBodypart(nullptr, 0), nullptr);
  EXPECT_EQ(M_DeleteChildBodypart(nullptr, h.part), -1);
  EXPECT_EQ(M_DeleteChildBodypart(h.part, nullptr), -1);
  EXPECT_EQ(M_GetMessageFlags(h.part, nullptr), -1);
  EXPECT_EQ(M_HeaderFieldsCount(nullptr), -1);
  EXPECT_EQ(M_BodypartHeaderField(nullptr, 0, &text, nullptr), -1);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(M_BodypartHeaderFieldByIndex(nullptr, 0, buffer, &count), -1);
  EXPECT_EQ(M_BodypartHeaderFieldValue(nullptr, "To"), nullptr);
  EXPECT_EQ(M_BodypartHeaderFieldValueProc(nullptr, "To", buffer, &count), -1);
  EXPECT_EQ(M_GetAttachmentSize(0, nullptr), -1);
  EXPECT_EQ(M_GetBodyText(nullptr, nullptr, buffer, 0, &size), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_GetBodypartText(h.part, nullptr, buffer, 0, nullptr), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(S_CreateInStream(nullptr, 5, 0, nullptr, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(S_GetOutStreamBuffer(nullptr, nullptr, &count), -1);
  EXPECT_EQ(S_WritePos(nullptr), -1);
  EXPECT_EQ(S_FlushBuffers(nullptr), EBADF);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(nullptr, h.out), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(h.in, nullptr), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(P_EncodeBASE64(nullptr, "/dev/null", 76), MIMORA_E_OPEN_INPUT);
  EXPECT_EQ(P_DecodeBASE64("/dev/null", nullptr), MIMORA_E_OPEN_OUTPUT);
  EXPECT_EQ(M_SaveBodypartBody(nullptr, nullptr, nullptr, h.in, h.out), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_SaveBodypartBodyEx(h.part, nullptr, nullptr, nullptr, nullptr, 0), MIMORA_E_NOT_OPEN);
  EXPECT_EQ(M_SaveAttachment(0, nullptr, nullptr, h.out), MIMORA_E_BAD_PART);
  EXPECT_EQ(M_SaveAttachment(0, reinterpret_cast<M_Bodypart*>(h.out), nullptr, h.out),
            MIMORA_E_BAD_PART);
  EXPECT_EQ(M_SaveAttachment(0, h.part, nullptr, nullptr), MIMORA_E_BAD_OUTPUT);
  EXPECT_EQ(M_AddBodypartHeaderField(nullptr, "a", "b"), -1);
  EXPECT_EQ(M_AddBodypartHeaderField(h.part, nullptr, "b"), -1);
  EXPECT_EQ(M_DecodeHeaderFieldValue(nullptr, nullptr, buffer, &count), 0);
  EXPECT_EQ(M_EncodeHeaderFieldValue(nullptr, nullptr, nullptr, buffer, &count), 0);
  EXPECT_EQ(M_DecodeEML(nullptr, "/", nullptr, nullptr, 0, 0, nullptr), MIMORA_E_OPEN_INPUT);
  EXPECT_EQ(P_GetHTMLCodePage(nullptr), 0u);
  EXPECT_EQ(count, 5u) << "what is not answered is not touched";
  char name[] = "x", type[] = "x", part_name[] = "x";
  EXPECT_EQ(M_GetBodypartName(nullptr, part_name, 2), 1);
  EXPECT_EQ(M_GetBodypartName1(nullptr, part_name, 2, nullptr), 1);
  EXPECT_EQ(S_GetOutStreamFileName(nullptr, name, 2), 1);
  EXPECT_EQ(M_GetBodypartMimeContentType(nullptr, type, 2), 1);
  EXPECT_EQ(name + std::string(type) + part_name, "");
  M_CleanMessage(nullptr);
  M_UndefineBodypartBodyStreamDefinition(nullptr, h.in);
  M_TakeoverBodypartBodyStreamDefinition(nullptr, nullptr);
  S_DestroyInStream(nullptr), S_DestroyOutStream(nullptr);
  S_SeekReadPos(nullptr, 1), S_LockInStream(nullptr), S_UnlockInStream(nullptr);
  P_EncodeQuotedPrintable(h.in, nullptr), P_DecodeQuotedPrintable(nullptr, h.out);
}

// ---- Texts --------------------------------------------------------------------------------------

// COPY is an export whose last arguments are a buffer and its size.
template <typename Copy, typename... Arguments>
void ExpectSizedCopy(std::string_view want, Copy copy, Arguments... arguments) {
  SCOPED_TRACE(want);
  const auto needed = static_cast<uint32_t>(want.size() + 1);
  char text[32] = "untouched";
  uint32_t room = 32;
  EXPECT_EQ(copy(arguments..., nullptr, &room), 1);
  EXPECT_EQ(std::exchange(room, needed - 1), needed);
  EXPECT_EQ(copy(arguments..., text, &room), 1);
  EXPECT_EQ(copy(arguments..., text, nullptr), 1);
  EXPECT_EQ(room, needed);
  EXPECT_STREQ(text, "untouched");
  for (const uint32_t enough : {needed, 32u}) {
    std::memset(text, '#', sizeof text);
    room = enough;
    EXPECT_EQ(copy(arguments..., text, &room), 0);
    EXPECT_EQ(text, want);
    EXPECT_EQ(text[needed], '#');
    EXPECT_EQ(room, enough);
  }
}

TEST(SizedCopy, CopiesWhenTextAndZeroFitTellsTheSizeWhenNotAndElseTouchesNothing) {
  const Handles h;
  ExpectSizedCopy("one\r\n two", M_BodypartHeaderFieldValueProc, h.part, "sUBJECT");
  ExpectSizedCopy("2", M_BodypartHeaderFieldNthValueProc, h.part, "received", 2);
  ExpectSizedCopy("n.txt", M_MimeParameter, h.part, "content-type", "NAME");
  ExpectSizedCopy("7bit", M_GetContentTransferEncoding, h.part);
  ExpectSizedCopy("inline", M_GetContentDisposition, h.part);
  ExpectSizedCopy("x y", M_GetCharset, h.part);
  char text[32] = "untouched";
  uint32_t room = 32;
  EXPECT_EQ(M_BodypartHeaderFieldNthValueProc(h.part, "received", 3, text, &room), -1);
  EXPECT_EQ(M_BodypartHeaderFieldNthValueProc(h.part, "received", 3, text, nullptr), -1);
  EXPECT_EQ(room, 32u);
  EXPECT_STREQ(text, "untouched");
}

// Those that answer 1 for a copy.
TEST(SizedCopy, OfHeaderTextsAnswersTheOtherWayRound) {
  char text[32] = "untouched";
  uint32_t room = 1;
  EXPECT_EQ(M_DecodeHeaderFieldValue("=?utf-8?Q?a?=", nullptr, text, &room), 0);
  EXPECT_EQ(room, 2u);
  EXPECT_STREQ(text, "untouched");
  EXPECT_EQ(M_DecodeHeaderFieldValue("=?utf-8?Q?a?=", nullptr, text, &room), 1);
  EXPECT_STREQ(text, "a");
  room = 0;
  EXPECT_EQ(M_EncodeHeaderFieldValue("\xB9", "iso-8859-2", "B", nullptr, &room), 0);
  EXPECT_EQ(M_EncodeHeaderFieldValue("\xB9", "iso-8859-2", "B", text, &room), 1);
  EXPECT_STREQ(text, "=?iso-8859-2?B?uQ==?=");
  EXPECT_EQ(room, 22u);
}

TEST(NameCopy, IsCutOrNoneByItsFunction) {
  const Handles h;
  const struct {
    const char* what;
    uint32_t size;
    int32_t cut_result;
    std::string_view cut;
    int32_t whole_result;
    std::string_view whole;
  } cases[] = {{"room to spare", 8, 0, {"n.txt\0#\0", 8}, 0, {"n.txt\0\0\0", 8}},
               {"just enough", 6, 0, {"n.txt\0##", 8}, 0, {"n.txt\0##", 8}},
               {"one too small", 5, 1, {"n.tx\0###", 8}, 1, {"\0\0\0\0\0###", 8}},
               {"nothing", 0, 1, "########", 1, "########"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    char text[9] = "########";
    EXPECT_EQ(M_GetBodypartName(h.part, text, c.size), c.cut_result);
    EXPECT_EQ(std::string_view(text, 8), c.cut);
    std::memset(text, '#', 8);
    EXPECT_EQ(M_GetBodypartName1(h.part, text, c.size, nullptr), c.whole_result);
    EXPECT_EQ(std::string_view(text, 8), c.whole);
    std::memset(text, '#', 8);
    EXPECT_EQ(M_GetAttachmentName(0, h.part, text, c.size, nullptr), c.whole_result);
    EXPECT_EQ(std::string_view(text, 8), c.whole);
  }
  char text[3] = "##";
  EXPECT_EQ(M_GetAttachmentName(1, h.part, text, 2, nullptr), 0) << "there is no such file";
  EXPECT_EQ(std::string_view(text, 3), std::string_view("\0\0\0", 3));
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

// ---- Procedures on plain data -------------------------------------------------------------------

TEST(Procedures, AnswerAndTraceTheirCalls) {
  const char in[] = "abcdabcd";
  char text[8] = {}, block[10] = {}, plain[9] = {}, date[40] = {}, sum[39] = {};
  unsigned char digest[17] = {};
  ::setenv("TZ", "UTC", 1);
  StartTrace();
  EXPECT_EQ(P_LZ_Compress(in, block, 8), 8u);
  EXPECT_EQ(P_LZ_Uncompress(block, nullptr, 8), 8u);
  EXPECT_EQ(P_LZ_Uncompress(block, plain, 8), 8u);
  EXPECT_STREQ(plain, in);
  EXPECT_EQ(P_CRC32("123456789", 9), 0x340BC6D9u);
  EXPECT_EQ(P_CRC32("123456789", 0x10009), 0x340BC6D9u) << "only 16 bits of the length count";
  EXPECT_EQ(P_CRC32("123456789", 0x10000), 0xFFFFFFFFu);
  P_MD5Sum("b", 1, sum), P_MD5SumBin("b", 1, digest);
  EXPECT_STREQ(sum, "ffff5fffffff2fff3aff1c77753157ffffff8f");
  EXPECT_EQ(digest[0] << 8 | digest[15], 0x928F);
  EXPECT_EQ(digest[16], 0);
  EXPECT_EQ(P_RFC822DateTimeStr2time_t("1 Jan 1970 0:01 GMT"), 60u);
  EXPECT_EQ(P_time_t2RFC822DateTimeStr(date, 60), date);
  EXPECT_STREQ(date, "Thu, 1 Jan 1970 0:01:00 +0000");
  P_EscapeURL("a b", text, &(size = 5)), P_UnEscapeURL("a+b", text, &(size = 4));
  EXPECT_STREQ(text, "a b");
  NameInTrace(in, "IN", "%" PRIxPTR), NameInTrace(block, "BLOCK", "%" PRIxPTR);
  EXPECT_EQ(trace,
            "P_LZ_Compress in in=IN, out=BLOCK, insize=8\nP_LZ_Compress out\n"
            "P_LZ_Uncompress in\nP_LZ_Uncompress out\nP_LZ_Uncompress in\nP_LZ_Uncompress out\n"
            "P_CRC32 in\nP_CRC32 out\nP_CRC32 in\nP_CRC32 out\nP_CRC32 in\nP_CRC32 out\n"
            "P_MD5Sum in\nP_MD5Sum out\nP_MD5SumBin in\nP_MD5SumBin out\n"
            "P_time_t2RFC822DateTimeStr in\nP_time_t2RFC822DateTimeStr out\n"
            "P_EscapeURL in\nP_EscapeURL out\nP_UnEscapeURL in\nP_UnEscapeURL out\n");
}

TEST(Procedures, OnUrlsCopyWhatFitsAndTellTheSizeOfWhatDoesNot) {
  for (const auto copy : {P_EscapeURL, P_UnEscapeURL}) {
    char text[] = "#####";
    for (char* const output : {static_cast<char*>(nullptr), text}) {
      copy("abc", output, &(size = 3));
      EXPECT_EQ(size, 4u);
    }
    copy("abc", text, nullptr);
    EXPECT_STREQ(text, "#####");
    copy("abc", text, &(size = 5));
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(std::string(text, 5), std::string("abc\0#", 5));
    copy(nullptr, text, &(size = 1));
    EXPECT_STREQ(text, "");
  }
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
  const auto name_of = [](S_OutStream* out) {
    char name[4096] = "x";
    EXPECT_EQ(S_GetOutStreamFileName(out, name, sizeof name), 0);
    const std::string whole = name;
    const auto length = static_cast<uint32_t>(whole.size());
    // The name needs room for its zero.
    EXPECT_EQ(S_GetOutStreamFileName(out, name, length), 1);
    EXPECT_EQ(name[0], '\0');
    EXPECT_EQ(S_GetOutStreamFileName(out, name, length + 1), 0);
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
  S_OutStream* missing = S_CreateOutStream("/nonexistent/file", 0, nullptr, nullptr, nullptr, 2);
  EXPECT_EQ(S_GetIOError(in), ENOENT);
  EXPECT_EQ(S_GetIOError(missing), ENOENT);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(in, out), MIMORA_E_READ);
  EXPECT_EQ(S_CopyFromInStreamToOutStream(h.in, out), MIMORA_E_WRITE);
  EXPECT_EQ(S_GetIOError(out), ENOSPC);
  S_DestroyInStream(in), S_DestroyOutStream(out), S_DestroyOutStream(missing);
}

// ---- HTML ---------------------------------------------------------------------------------------

TEST(HtmlToText, IsCopiedWhenThereIsRoomForItAndItsZero) {
  constexpr struct {
    const char* name;
    const char16_t* html;
    bool has_buffer;
    uint32_t room;
    int32_t result;
    uint32_t needed;
    std::u16string_view text;
  } kCases[] = {
      {"room", u"<p>ab", true, 4, 1, 3, u"ab"},
      {"just enough", u"<p>ab", true, 3, 1, 3, u"ab"},
      {"one short", u"<p>ab", true, 2, 0, 3, u"??"},
      {"no room", u"<p>ab", true, 0, 0, 3, u"??"},
      {"no buffer", u"<p>ab", false, 9, 0, 3, u"??"},
      {"no text", u"<title>ab</title>", true, 1, 1, 1, u""},
      {"nothing", u"", true, 1, 1, 1, u""},
      {"no document", nullptr, true, 1, 1, 1, u""},
  };
  for (const auto& c : kCases) {
    char16_t text[] = u"??";
    uint32_t length = c.room;
    EXPECT_EQ(M_HTMLToText(c.html, c.has_buffer ? text : nullptr, &length), c.result) << c.name;
    EXPECT_EQ(length, c.needed) << c.name;
    EXPECT_EQ(std::u16string_view(text), c.text) << c.name;
    EXPECT_EQ(M_HTMLToText(c.html, text, nullptr), 0) << c.name;
  }
}

// ---- Exceptions ---------------------------------------------------------------------------------

struct Broken : std::exception {
  const char* what() const noexcept override { return "broken"; }
};

int64_t ThrowOnRead(S_Context, void*, int64_t) { throw Broken(); }
int64_t ThrowOnWrite(S_Context, const void*, int64_t) { throw Broken(); }

// With one byte in its buffer.
S_OutStream* FilledThrowingStream() {
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 2);
  DripSource failing("x", 1, 1);
  S_InStream* in = S_CreateInStream(nullptr, 0, failing.Reading().context, failing.Reading().read,
                                    nullptr, nullptr, 0);
  S_CopyFromInStreamToOutStream(in, out);
  S_DestroyInStream(in);
  return out;
}

// Shows what is caught, the "out" lines of the trace, and the log.
void CallWithThrowingCallbacks() {
  const Handles h;
  S_InStream* in = S_CreateInStream(nullptr, 0, 5, ThrowOnRead, nullptr, nullptr, 0);
  S_OutStream* out = S_CreateOutStream(nullptr, 5, ThrowOnWrite, nullptr, nullptr, 1);
  S_OutStream* filled = FilledThrowingStream();
  S_OutStream* last = FilledThrowingStream();
  P_SetQQ_callback([](const char* line) {
    if (std::string_view(line).ends_with(" out")) Show(line);
  });
  const std::function<void()> calls[] = {
      [&] { M_LoadMessage(h.part, in); }, [&] { S_CopyFromInStreamToOutStream(h.in, out); },
      [&] { S_FlushBuffers(filled); }, [&] { S_FlushBuffers(filled); },
      [&] { S_DestroyOutStream(last); }};
  for (const auto& call : calls) {
    try {
      call();
    } catch (const std::exception& e) {
      Show(e.what());
    }
  }
  S_DestroyInStream(in), S_DestroyOutStream(out), S_DestroyOutStream(filled);
  P_SetQQ_callback(nullptr);
  ShowLog();
}

TEST(Exceptions, AreLoggedAndPassThroughToTheCaller) {
#define FLUSH "@<E> FlushBuffer ex_pos=1, this=*, kolik=1, IsBadReadPtr=0, gen_write=*, g_write=*\n"
  ExpectShown("", "l", CallWithThrowingCallbacks,
              "broken|broken|broken|S_FlushBuffers out|broken|"
              "S_DestroyInStream out|S_DestroyOutStream out|S_DestroyOutStream out|"
              "@<E> FillBuffer ex_pos=2, out=0\n"
              "@<E> M_LoadMessage ex_pos=1\n" FLUSH
              "@<E> WriteBlock ex_pos=2, s=*, bufpos=1, len=2, bufsize=1\n"
              "@<E> S_CopyFromInStreamToOutStream 0x1\n" FLUSH
              "@<E> S_FlushBuffers ex_pos=1\n" FLUSH
              "@<E> Moutstream\n"
              "@<E> S_DestroyOutStream ex_pos=0\n");
}

}  // namespace
}  // namespace mimora::testing

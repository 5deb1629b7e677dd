// Copyright (c) 2026 the mimora developers.
#include "faults/operations.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "faults/faults.h"
#include "mimora/mimora.h"
#include "support/certificates.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

// ---- The message --------------------------------------------------------------------------------

std::string Part(std::string_view header, std::string_view body) {
  return std::string("--edge\r\n").append(header).append("\r\n\r\n").append(body).append("\r\n");
}

std::string Example(const char* name) {
  return Part("Content-Type: message/rfc822", ReadFile(std::string(MIMORA_EXAMPLES "/") + name));
}

// One of everything.
const std::string& Mail() {
  static const std::string mail =
      "From: =?utf-8?Q?Ren=C3=A9?= <r@example.org>\r\nSubject: a long subject,\r\n folded\r\n"
      "Content-Type: multipart/mixed; boundary=edge\r\n\r\n" +
      Part(
          "Content-Type: text/html; charset=iso-2022-jp\r\nContent-Transfer-Encoding: base64\r\n"
          "Content-Disposition: attachment; filename*0*=utf-8''%C3%A9; filename*1=\"very long name "
          "with more than its share of letters.html\"",
          "PHA+GyRCRnxLXBsoQjxwPg==") +
      Part(
          "Content-Type: text/plain; charset=windows-1250; name=\"=?utf-8?B?w6k=?=\"\r\n"
          "Content-Transfer-Encoding: quoted-printable",
          "caf=E9 =\r\n" + std::string(3000, 'x')) +
      Example("tnef.eml") + Example("uuencoded.eml") + Example("forwarded.eml") + "--edge--\r\n";
  return mail;
}

constexpr char16_t kPage[] =
    u"<!DOCTYPE html><title>t</title><body style='margin:0'><p>one&eacute;&#x41;<table><tr><td "
    u"colspan=2>a<td>b<tr><td>c</table><pre> x\n y</pre><ul><li>i<ol><li>j</ol></ul><b><i>k</b>";

// ---- Handles ------------------------------------------------------------------------------------

template <auto kDestroy>
struct Destroyer {
  template <typename Handle>
  void operator()(Handle* handle) const {
    kDestroy(handle);
  }
};
using Message = std::unique_ptr<M_Bodypart, Destroyer<&M_DestroyMessage>>;
using In = std::unique_ptr<S_InStream, Destroyer<&S_DestroyInStream>>;

// As a caller has it who looks whether the last bytes were written.
struct Out {
  Answers& answers;
  S_OutStream* const stream;
  Out(Answers& to, S_OutStream* made) : answers(to), stream(to.Made(made)) {}
  Out(const Out&) = delete;
  Out& operator=(const Out&) = delete;
  ~Out() {
    try {
      S_DestroyOutStream(stream);
    } catch (const std::exception&) {
    }
  }
  void Finish() const {
    answers.Status(S_FlushBuffers(stream));
    const void* bytes = nullptr;
    uint32_t length = 0;
    if (S_GetOutStreamBuffer(stream, &bytes, &length) == 0)
      answers.Text({static_cast<const char*>(bytes), length});
  }
};

S_OutStream* MemoryOut() { return S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0); }

// ---- Callbacks ----------------------------------------------------------------------------------

struct Cursor {
  std::string_view text;
  size_t at = 0;
};

// What a callback answers that does as it is asked.
int64_t Done(int64_t length) {
  if (Happens(Fault::kCallbackThrows)) throw std::runtime_error("callback");
  if (Happens(Fault::kCallbackError)) return errno = EIO, -1;
  return Happens(Fault::kCallbackLie) ? length + 1 : length;
}

int64_t ReadPtr(S_Context context, const void** bytes, int64_t length) {
  Cursor& cursor = *reinterpret_cast<Cursor*>(context);
  int64_t count = std::min(length, std::ssize(cursor.text.substr(cursor.at)));
  if (count > 1 && Happens(Fault::kShort)) count = 1;
  const int64_t answer = Done(count);
  *bytes = cursor.text.data() + cursor.at;
  if (answer == count) cursor.at += static_cast<size_t>(count);
  return answer == count ? count : answer == -1 ? -1 : length + 1;
}

int64_t Read(S_Context context, void* destination, int64_t length) {
  const void* bytes = nullptr;
  const int64_t count = ReadPtr(context, &bytes, length);
  if (count > 0 && count <= length) std::memcpy(destination, bytes, static_cast<size_t>(count));
  return count;
}

// It cannot answer that it failed.
void Seek(S_Context context, int64_t position) {
  if (Happens(Fault::kCallbackThrows)) throw std::runtime_error("callback");
  Cursor& cursor = *reinterpret_cast<Cursor*>(context);
  cursor.at = std::min(static_cast<size_t>(position), cursor.text.size());
}

int64_t Tell(S_Context) { return 0; }

int64_t Write(S_Context context, const void* data, int64_t length) {
  const int64_t answer = Done(length);
  if (answer == length)
    reinterpret_cast<Answers*>(context)->Text(
        {static_cast<const char*>(data), static_cast<size_t>(length)});
  return answer;
}

S_Context ContextOf(void* object) { return reinterpret_cast<S_Context>(object); }

// ---- Work on parts ------------------------------------------------------------------------------

template <typename Visit>
void ForEachPart(M_Bodypart* part, const Visit& visit) {
  visit(part);
  const int32_t children = M_GetChildBodypartsCount(part);
  for (int32_t i = 0; i < children; ++i) ForEachPart(M_GetNthChildBodypart(part, i), visit);
  if (M_Bodypart* enclosed = M_GetMessageBodypartBody(part); enclosed != part)
    ForEachPart(enclosed, visit);
}

template <typename Copy>
void Sized(Answers& answers, Copy copy) {
  char buffer[8192] = "";
  uint32_t size = sizeof buffer;
  answers.Number(copy(buffer, &size));
  answers.Text(buffer);
}

void Describe(Answers& answers, M_Bodypart* part) {
  int64_t decoded = 0, raw = 0;
  M_GetBodypartSize(part, &decoded, &raw);
  answers.Number(decoded), answers.Number(raw);
  answers.Number(M_HeaderFieldsCount(part));
  const auto of_part = [&](auto copy) {
    Sized(answers, [&](char* buffer, uint32_t* size) { return copy(part, buffer, size); });
  };
  of_part(M_GetContentTransferEncoding), of_part(M_GetContentDisposition), of_part(M_GetCharset);
  Sized(answers, [&](char* buffer, uint32_t* size) {
    return M_MimeParameter(part, "Content-Disposition", "filename", buffer, size);
  });
  for (int32_t n = 0; n < 3; ++n) {
    answers.Number(M_GetAttachmentSize(n, part));
    Sized(answers, [&](char* buffer, uint32_t* size) {
      return M_GetAttachmentName(n, part, buffer, *size, "iso-8859-2");
    });
    Sized(answers, [&](char* buffer, uint32_t* size) {
      return M_GetAttachmentMimeType(n, part, buffer, *size);
    });
  }
  answers.Number(M_FindTextLetterBodypart(part) != nullptr ? 1 : 0);
}

void DescribeAll(Answers& answers, M_Bodypart* root) {
  ForEachPart(root, [&](M_Bodypart* part) { Describe(answers, part); });
}

// A tree of which only a part was loaded can be used, too; what it answers is anybody's guess.
template <typename Load>
void LoadAndDescribe(Answers& answers, Load load) {
  const Message message(answers.Made(M_CreateMessage()));
  if (message == nullptr) return;
  try {
    answers.Status(load(message.get()));
  } catch (const std::exception&) {
    const Truce truce;
    Answers unheard;
    DescribeAll(unheard, message.get());
    throw;
  }
  DescribeAll(answers, message.get());
}

void LoadBuffer(Answers& answers) {
  LoadAndDescribe(answers, [](M_Bodypart* message) {
    return M_LoadBodypartFromBuffer(message, Mail().data(), static_cast<int32_t>(Mail().size()));
  });
}

void LoadStringIntoAPart(Answers& answers) {
  LoadAndDescribe(answers, [&](M_Bodypart* message) {
    answers.Status(M_LoadBodypartFromString(message, Mail().c_str(), -1));
    M_Bodypart* const part = answers.Made(M_GetNthChildBodypart(message, 0));
    return M_LoadBodypartFromString(part, Mail().c_str(), -1);
  });
}

void LoadFrom(Answers& answers, S_InStream* made) {
  const In in(answers.Made(made));
  LoadAndDescribe(answers, [&](M_Bodypart* message) { return M_LoadMessage(message, in.get()); });
}

void LoadThroughRead(Answers& answers) {
  Cursor cursor{Mail()};
  LoadFrom(answers, S_CreateInStream(nullptr, 0, ContextOf(&cursor), Read, Seek, Tell, 900));
}

void LoadThroughReadPtr(Answers& answers) {
  Cursor cursor{Mail()};
  LoadFrom(answers, S_CreateInStream1(ContextOf(&cursor), 7, ReadPtr, Seek, Tell));
}

// A file with the message, which stays until the program ends.
const char* MailFile() {
  static const TextFile file(Mail());
  return file.Name();
}

void LoadFile(Answers& answers) {
  LoadFrom(answers, S_CreateInStream(MailFile(), -1, 0, nullptr, nullptr, nullptr, 700));
}

// ---- Bodies -------------------------------------------------------------------------------------

struct FromFile {
  In in{S_CreateInStream(MailFile(), -1, 0, nullptr, nullptr, nullptr, 700)};
};

struct FromCallbacks {
  Cursor cursor{Mail()};
  In in{S_CreateInStream(nullptr, 0, ContextOf(&cursor), Read, Seek, Tell, 700)};
};

// A message that is loaded without faults: its source meets them when bodies are read again.
template <typename Source>
struct Loaded : Source {
  Message root{M_CreateMessage()};
  Loaded() { M_LoadMessage(root.get(), this->in.get()); }
};

template <typename Source, typename Visit>
void OnEachPart(const Visit& visit) {
  std::optional<Truce> truce(std::in_place);
  const Loaded<Source> loaded;
  truce.reset();
  ForEachPart(loaded.root.get(), visit);
}

template <typename Source>
void SaveBodies(Answers& answers, const char* encoding, const char* charset) {
  OnEachPart<Source>([&](M_Bodypart* part) {
    const Out out(answers, MemoryOut());
    answers.Status(M_SaveBodypartBody(part, encoding, charset, nullptr, out.stream));
    out.Finish();
  });
}

void SaveTranslated(Answers& answers) { SaveBodies<FromFile>(answers, nullptr, "utf-16"); }
void SaveEncoded(Answers& answers) {
  SaveBodies<FromCallbacks>(answers, "quoted-printable", "utf-8");
}

void SaveAttachments(Answers& answers) {
  OnEachPart<FromFile>([&](M_Bodypart* part) {
    for (int32_t n = 0; M_GetAttachmentSize(n, part) >= 0; ++n) {
      const Out out(answers,
                    S_CreateOutStream(nullptr, ContextOf(&answers), Write, nullptr, nullptr, 50));
      answers.Status(M_SaveAttachment(n, part, nullptr, out.stream));
      out.Finish();
    }
  });
}

void GetTexts(Answers& answers) {
  OnEachPart<FromCallbacks>([&](M_Bodypart* part) {
    char buffer[10000];
    uint32_t size = sizeof buffer;
    answers.Status(M_GetBodypartText(part, nullptr, buffer, 3, &size));
    answers.Text({buffer, size});
    size = std::min<uint32_t>(sizeof buffer, M_GetBodyTextRawSize(part));
    answers.Status(M_GetBodyText(part, nullptr, buffer, 0, &size));
    answers.Text({buffer, size});
  });
}

// ---- Files --------------------------------------------------------------------------------------

const char* work_folder = nullptr;

int64_t SizeOf(const char* path) {
  struct stat status {};
  return ::stat(path, &status) == 0 ? status.st_size : -1;
}

int64_t Checksum(const char* path) {
  int64_t sum = 0;
  std::FILE* const file = std::fopen(path, "rb");
  for (int c = 0, at = 1; file != nullptr && (c = std::fgetc(file)) != EOF; ++at)
    sum += c * (at % 97);
  if (file != nullptr) std::fclose(file);
  return sum;
}

// Calls VISIT with the path of each file in the folder, and removes it.
template <typename Visit>
void TakeFiles(const Visit& visit) {
  DIR* const folder = ::opendir(work_folder);
  while (const dirent* entry = ::readdir(folder)) {
    if (entry->d_name[0] == '.') continue;
    char path[4096];
    std::snprintf(path, sizeof path, "%s/%s", work_folder, entry->d_name);
    visit(path);
    ::unlink(path);
  }
  ::closedir(folder);
}

// The files of an operation, gone with the object, also behind an exception.
struct WorkFiles {
  ~WorkFiles() {
    TakeFiles([](const char*) {});
  }
};

void DecodeFile(Answers& answers) {
  struct Told {
    Answers& answers;
    int64_t bytes = 0;
    // What was not told of was not written whole, and must not be there.
    ~Told() {
      TakeFiles([this](const char* path) { bytes -= SizeOf(path); });
      if (bytes != 0) answers.Wrong();
    }
  };
  Told told{answers};
  const auto on_part = [](S_Context context, M_Bodypart*, int32_t, const char* path, int64_t size) {
    Told& to = *reinterpret_cast<Told*>(context);
    to.bytes += size;
    to.answers.Number(Checksum(path));
  };
  uint32_t count = 0;
  answers.Status(
      M_DecodeEML(MailFile(), work_folder, "utf-8", on_part, ContextOf(&told), 0, &count));
  answers.Number(count);
}

template <typename Source>
void SaveTextToFile(Answers& answers) {
  char path[4096];
  std::snprintf(path, sizeof path, "%s/text", work_folder);
  OnEachPart<Source>([&](M_Bodypart* part) {
    const WorkFiles files;
    uint32_t count = M_GetBodypartTextRawSize(part);
    const int32_t status =
        answers.Status(M_SaveBodyOrBodypartTextToFile(part, nullptr, path, 0, 0, &count));
    answers.Number(count);
    // A file that is not whole is removed again.
    if (status == MIMORA_OK)
      answers.Number(Checksum(path));
    else if (SizeOf(path) >= 0 && SizeOf(path) < M_GetBodypartTextRawSize(part))
      answers.Wrong();
  });
}

void CodeFiles(Answers& answers) {
  const WorkFiles files;
  char encoded[4096], decoded[4096];
  std::snprintf(encoded, sizeof encoded, "%s/encoded", work_folder);
  std::snprintf(decoded, sizeof decoded, "%s/decoded", work_folder);
  answers.Status(P_EncodeBASE64(MailFile(), encoded, 76));
  answers.Status(P_DecodeBASE64(encoded, decoded));
  answers.Number(Checksum(encoded)), answers.Number(Checksum(decoded));
}

// ---- Procedures ---------------------------------------------------------------------------------

void Headers(Answers& answers) {
  const Message message(answers.Made(M_CreateMessage()));
  if (message == nullptr) return;
  answers.Status(M_AddBodypartHeaderField(message.get(), "Subject", "=?utf-8?Q?a=C3=A9?="));
  answers.Status(M_AddBodypartHeaderField(message.get(), "To", "somebody@example.org"));
  M_Bodypart* const child = answers.Made(M_CreateChildBodypart(message.get()));
  answers.Status(M_AddBodypartHeaderField(child, "A", "b"));
  Sized(answers, [&](char* buffer, uint32_t* size) {
    return M_BodypartHeaderFieldByIndex(message.get(), 1, buffer, size);
  });
  answers.Status(M_DeleteBodypartHeaderField(message.get(), 0));
  answers.Number(M_HeaderFieldsCount(message.get()));
  answers.Status(M_DeleteChildBodypart(message.get(), child));
  Sized(answers, [](char* buffer, uint32_t* size) {
    return M_DecodeHeaderFieldValue("=?utf-8?B?w6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOpw6nDqcOp?= and more",
                                    "iso-8859-1", buffer, size);
  });
  Sized(answers, [](char* buffer, uint32_t* size) {
    return M_EncodeHeaderFieldValue(
        "caf\xC3\xA9 with a value that is long enough to be folded once "
        "or twice at least, \xC3\xA9",
        nullptr, nullptr, buffer, size);
  });
}

void ShowPage(Answers& answers) {
  char16_t text[500] = u"";
  uint32_t length = std::size(text);
  answers.Status(M_HTMLToText(kPage, text, &length) == 1 ? 0 : 1);
  answers.Text({reinterpret_cast<const char*>(text), length * sizeof(char16_t)});
}

void Compress(Answers& answers) {
  static unsigned char block[70000], text[70000];
  const std::string_view mail = Mail();
  const uint32_t size = P_LZ_Compress(mail.data(), block, static_cast<uint32_t>(mail.size()));
  answers.Number(P_LZ_Uncompress(block, text, size));
  answers.Text({reinterpret_cast<const char*>(block), size});
}

void DatesAndNames(Answers& answers) {
  char date[40];
  answers.Number(P_RFC822DateTimeStr2time_t("Sat, 14 Nov 2009 10:20:30 (a comment) EST"));
  answers.Text(P_time_t2RFC822DateTimeStr(date, 1'258'190'430));
  for (const auto copy : {P_EscapeURL, P_UnEscapeURL}) {
    Sized(answers, [&](char* buffer, uint32_t* size) {
      copy("a b&c=%C3%A9 and what else is long enough to lie on the heap", buffer, size);
      return 0;
    });
  }
  Sized(answers,
        [](char* buffer, uint32_t* size) { return P_Extension2MimeType("html", buffer, *size); });
  Sized(answers, [](char* buffer, uint32_t* size) {
    return P_GetExtensionFromMimeType("image/png", buffer, *size);
  });
  answers.Number(P_GetCodePage("iso-8859-2"));
  answers.Number(
      P_GetHTMLCodePage("<meta http-equiv=content-type content='text/html; charset=koi8-r'>"));
}

void CodeStreams(Answers& answers) {
  Cursor cursor{Mail()};
  for (const auto code : {P_EncodeQuotedPrintable, P_DecodeQuotedPrintable}) {
    cursor.at = 0;
    const In in(
        answers.Made(S_CreateInStream(nullptr, 0, ContextOf(&cursor), Read, Seek, Tell, 100)));
    const Out out(answers, MemoryOut());
    code(in.get(), out.stream);
    answers.Status(S_GetIOError(in.get()));
    S_SeekReadPos(in.get(), 40);
    answers.Status(S_CopyFromInStreamToOutStream(in.get(), out.stream));
    out.Finish();
  }
}

// ---- Signing and encrypting ---------------------------------------------------------------------

// Signatures differ every time: only the status is compared.
const Store& KeyStore() {
  static const struct Filled : Store {
    Filled() {
      const Owner ada = MakeOwner("ada");
      Add("ada.pem", Pem(ada) + KeyPem(ada));
    }
  } store;
  return store;
}

void SignAndEncrypt(Answers& answers) {
  constexpr const char* kLetter = "Content-Type: text/plain\r\n\r\nhello\r\n";
  const char* const store = KeyStore().Path();
  const Out out(answers, MemoryOut());
  answers.Status(P_SignData(kLetter, store, "ada@example.org", nullptr, nullptr, 1, out.stream));
  answers.Status(
      P_EncryptData(kLetter, store, "ada@example.org\0", nullptr, 0, 0, nullptr, out.stream));
  answers.Status(S_FlushBuffers(out.stream));
}

constexpr Operation kOperations[] = {
    {"load a buffer", LoadBuffer},
    {"load a string into a part of another", LoadStringIntoAPart},
    {"load through a read callback", LoadThroughRead},
    {"load through a read-pointer callback", LoadThroughReadPtr},
    {"load a file", LoadFile},
    {"save bodies in another charset", SaveTranslated},
    {"save bodies in another encoding", SaveEncoded},
    {"save attachments into a callback", SaveAttachments},
    {"get raw texts", GetTexts},
    {"save raw texts from a file", SaveTextToFile<FromFile>},
    {"save raw texts from callbacks", SaveTextToFile<FromCallbacks>},
    {"decode a stored message", DecodeFile},
    {"encode and decode files", CodeFiles},
    {"encode and decode streams", CodeStreams},
    {"header fields", Headers},
    {"show a page", ShowPage},
    {"compress", Compress},
    {"dates, URLs and names", DatesAndNames},
    {"sign and encrypt", SignAndEncrypt},
};

}  // namespace

void SetWorkFolder(const char* folder) { work_folder = folder; }
const char* WorkFolder() { return work_folder; }

std::span<const Operation> Operations() {
  // Made here, without faults.
  KeyStore(), MailFile();
  return kOperations;
}

}  // namespace mimora::testing

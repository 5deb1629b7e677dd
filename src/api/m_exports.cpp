// Copyright (c) 2026 the mimora developers.
//
// The M_ family: messages and their parts.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "analysis/decode_eml.h"
#include "analysis/mime_types.h"
#include "analysis/names.h"
#include "analysis/raw_body.h"
#include "analysis/text_letter.h"
#include "analysis/write_body.h"
#include "api/frame.h"
#include "codec/encoded_word.h"
#include "diag/result.h"
#include "html/html_to_text.h"
#include "mime/dump.h"
#include "mime/parser.h"

using namespace mimora;

namespace {

// The values that callers see are those used inside.
static_assert(kOk == MIMORA_OK && kReadFailed == MIMORA_E_READ && kWriteFailed == MIMORA_E_WRITE &&
              kInputNotOpened == MIMORA_E_OPEN_INPUT && kOutputNotOpened == MIMORA_E_OPEN_OUTPUT &&
              kTempNotWritten == MIMORA_E_TEMP_WRITE && kTempNotCreated == MIMORA_E_TEMP_CREATE &&
              kTempNotOpened == MIMORA_E_TEMP_OPEN && kBadBodypart == MIMORA_E_BAD_PART &&
              kBadOutstream == MIMORA_E_BAD_OUTPUT && kNoBodyData == MIMORA_E_NO_BODY &&
              kNoBodyFileName == MIMORA_E_BODY_NAME && kBodyFileNotOpened == MIMORA_E_BODY_OPEN &&
              kNoBodyMemory == MIMORA_E_BODY_MEMORY && kNoSuchAttachment == MIMORA_E_NO_SUCH_FILE &&
              kUnknownCharset == MIMORA_E_CHARSET && kNotOpen == MIMORA_E_NOT_OPEN &&
              kHeaderFailed == MIMORA_E_HEADER && kHeaderCut == MIMORA_E_HEADER_CUT &&
              kHeaderOdd == MIMORA_E_HEADER_ODD && kNoBoundary == MIMORA_E_NO_BOUNDARY &&
              kUnclassified == MIMORA_E_UNCLASSIFIED);
static_assert(kReceiptRequested == MIMORA_FLAG_RECEIPT_REQUESTED && kSigned == MIMORA_FLAG_SIGNED &&
              kPkcs7 == MIMORA_FLAG_PKCS7);

// The copy of a UTF-16 text: 1 copied, 0 no buffer or too small a one. The size that is needed, in
// units, is stored in any case.
int32_t CopyUnits(const std::u16string& text, char16_t* buffer, uint32_t* size) {
  if (size == nullptr) return 0;
  const bool fits = buffer != nullptr && text.size() < *size;
  if (fits) std::copy_n(text.c_str(), text.size() + 1, buffer);
  *size = static_cast<uint32_t>(std::min<size_t>(text.size(), UINT32_MAX - 1) + 1);
  return fits ? 1 : 0;
}

// Finds an optional text of a part and copies it out.
template <typename Find>
int32_t CopyText(const char* name, M_Bodypart* part, char* buffer, uint32_t* size, Find find) {
  return RunOnBodypart(name, part, int32_t{-1}, [&](Bodypart& bodypart) {
    const auto text = find(bodypart);
    return text ? CopyOut(std::string_view(*text), buffer, size) : -1;
  });
}

// The main value of a structured field, when it has one.
std::optional<std::string> MainValue(const Bodypart& part, const char* field) {
  std::string main = part.Field(field).Main();
  if (main.empty()) return std::nullopt;
  return main;
}

// The value of the n-th field of a name. There is none without a name.
std::optional<std::string_view> FindValue(const Bodypart& part, const char* name, int n = 1) {
  return name != nullptr ? part.Header.Find(name, n) : std::nullopt;
}

int32_t CopyName(const char* name, int32_t number, M_Bodypart* part, char* buffer, uint32_t size,
                 const char* target_charset) {
  return RunExport(name, [&](int& ex_pos) {
    NoteBodypart(part);
    if (part == nullptr) {
      CopyWhole("", buffer, size);
      return 1;
    }
    ex_pos = 1;
    return CopyWhole(AttachmentName(*ToBodypart(part), number, TextOrEmpty(target_charset)), buffer,
                     size);
  });
}

int32_t SaveBody(const char* name, M_Bodypart* part, S_InStream* in4, S_OutStream* out,
                 const BodyRequest& request) {
  return RunExport(name, [&](int& ex_pos) -> int32_t {
    NoteBodypart(part);
    if (in4 != nullptr) NoteInstream(in4);
    NoteOutstream(out);
    LogTrace("%s bp = %" PRIXPTR ", in4 = %" PRIXPTR, name, reinterpret_cast<uintptr_t>(part),
             reinterpret_cast<uintptr_t>(in4));
    if (part == nullptr || out == nullptr) return kNotOpen;
    ex_pos = 1;
    return WriteBodypartBodyToStream(*ToBodypart(part), *ToOutstream(out), ToInstream(in4),
                                     request);
  });
}

const char* DataOrNull(std::optional<std::string_view> text) {
  return text ? text->data() : nullptr;
}

}  // namespace

// ---- Life -------------------------------------------------------------------------------------

M_Bodypart* M_CreateMessage() {
  return RunExport("M_CreateMessage", [](int&) { return ToHandle(new (std::nothrow) Bodypart); });
}

int32_t M_DestroyMessage(M_Bodypart* part) {
  return RunExport("M_DestroyMessage", [&](int&) {
    if (part != nullptr) NoteBodypart(part);
    const BodypartPtr destroyed(ToBodypart(part));
    return 0;
  });
}

void M_CleanMessage(M_Bodypart* part) {
  RunExport("M_CleanMessage", [&](int&) {
    NoteBodypart(part);
    if (part != nullptr) ToBodypart(part)->Clean();
  });
}

void M_CheckBodypart(M_Bodypart* part) {
  RunExport("M_CheckBodypart", [&](int&) { NoteBodypart(part); });
}

void M_PrintBodypart(M_Bodypart* part) {
  NoteBodypart(part);
  DumpBodypart(ToBodypart(part), stdout);
}

// ---- Loading ----------------------------------------------------------------------------------

int32_t M_LoadMessage(M_Bodypart* part, S_InStream* in) {
  return RunExport("M_LoadMessage", [&](int& ex_pos) -> int32_t {
    NoteBodypart(part);
    NoteInstream(in);
    if (part == nullptr || in == nullptr) return kNotOpen;
    ex_pos = 1;
    return Load(*ToBodypart(part), *ToInstream(in));
  });
}

int32_t M_LoadBodypartFromBuffer(M_Bodypart* part, const void* data, int32_t length) {
  return RunExport("M_LoadBodypartFromBuffer", [&](int& ex_pos) -> int32_t {
    NoteBodypart(part);
    if (part == nullptr || data == nullptr || length < 0) return kNotOpen;
    ex_pos = 1;
    return LoadFromMemory(*ToBodypart(part),
                          {static_cast<const char*>(data), static_cast<size_t>(length)});
  });
}

int32_t M_LoadBodypartFromString(M_Bodypart* part, const char* text, int32_t length) {
  const int64_t size =
      length == -1 && text != nullptr ? static_cast<int64_t>(std::strlen(text)) : length;
  const auto work = [&](int& ex_pos) -> int32_t {
    NoteBodypart(part);
    if (part == nullptr || text == nullptr || length < -1) return kNotOpen;
    ex_pos = 1;
    LogTraceWithData(text, size, "LoadBodypartFromString");
    ex_pos = 2;
    return LoadFromCopy(*ToBodypart(part), {text, static_cast<size_t>(size)});
  };
  return RunExport("M_LoadBodypartFromString", work, [&](int ex_pos) {
    LogError("<E> LoadBodypartFromString 0x%x exception_pos=%d, temp_int=%d, offset=%d",
             static_cast<unsigned>(ExceptionCode()), ex_pos, length, 0);
  });
}

void M_UndefineBodypartBodyStreamDefinition(M_Bodypart* part, S_InStream* in) {
  constexpr const char* kName = "M_UndefineBodypartBodyStreamDefinition";
  RunExport(kName, [&](int&) {
    NoteBodypart(part);
    if (in != nullptr) NoteInstream(in);
    if (part != nullptr) ToBodypart(part)->DetachFrom(ToInstream(in));
    NoteBodypart(part, kName);
  });
}

void M_TakeoverBodypartBodyStreamDefinition(M_Bodypart* part, S_InStream* in) {
  constexpr const char* kName = "M_TakeoverBodypartBodyStreamDefinition";
  RunExport(kName, [&](int&) {
    NoteBodypart(part);
    NoteInstream(in);
    if (part != nullptr && in != nullptr) ToBodypart(part)->AttachTo(ToInstream(in));
    NoteBodypart(part, kName);
  });
}

// ---- Tree -------------------------------------------------------------------------------------

int32_t M_GetChildBodypartsCount(M_Bodypart* part) {
  return RunOnBodypart("M_GetChildBodypartsCount", part, int32_t{0}, [](Bodypart& bodypart) {
    return static_cast<int32_t>(bodypart.Children.size());
  });
}

M_Bodypart* M_GetNthChildBodypart(M_Bodypart* part, int32_t index) {
  const auto find = [index](Bodypart& bodypart) -> M_Bodypart* {
    // As unsigned a negative index is beyond every count.
    const auto at = static_cast<uint32_t>(index);
    return at < bodypart.Children.size() ? ToHandle(bodypart.Children[at].get()) : nullptr;
  };
  return RunOnBodypart("M_GetNthChildBodypart", part, static_cast<M_Bodypart*>(nullptr), find);
}

M_Bodypart* M_GetMessageBodypartBody(M_Bodypart* part) {
  const auto find = [part](Bodypart& bodypart) {
    return bodypart.EnclosedMessage != nullptr ? ToHandle(bodypart.EnclosedMessage.get()) : part;
  };
  return RunOnBodypart("M_GetMessageBodypartBody", part, static_cast<M_Bodypart*>(nullptr), find);
}

M_Bodypart* M_CreateChildBodypart(M_Bodypart* parent) {
  // The parent reference of such a child stays null until a tree is parsed into it.
  const auto create = [](Bodypart& bodypart) {
    return ToHandle(bodypart.AppendChild(BodypartPtr(new Bodypart)));
  };
  return RunOnBodypart("M_CreateChildBodypart", parent, static_cast<M_Bodypart*>(nullptr), create);
}

int32_t M_DeleteChildBodypart(M_Bodypart* parent, M_Bodypart* child) {
  return RunExport("M_DeleteChildBodypart", [&](int&) {
    NoteBodypart(parent);
    NoteBodypart(child);
    return parent != nullptr && ToBodypart(parent)->DeleteChild(ToBodypart(child)) ? 0 : -1;
  });
}

int32_t M_GetBodypartFlags(M_Bodypart* part, uint32_t* flags) {
  return RunOnBodypart("M_GetBodypartFlags", part, int32_t{-1}, [flags](Bodypart& bodypart) {
    if (flags == nullptr) return -1;
    *flags = bodypart.Flags();
    return 0;
  });
}

int32_t M_GetMessageFlags(M_Bodypart* part, uint32_t* flags) {
  return M_GetBodypartFlags(part, flags);
}

// ---- Header fields ----------------------------------------------------------------------------

int32_t M_HeaderFieldsCount(M_Bodypart* part) {
  return RunOnBodypart("M_HeaderFieldsCount", part, int32_t{-1}, [](Bodypart& bodypart) {
    return static_cast<int32_t>(bodypart.Header.Count());
  });
}

int32_t M_BodypartHeaderFieldsCount(M_Bodypart* part) {
  return RunOnBodypart("M_BodypartHeaderFieldsCount", part, int32_t{-1}, [](Bodypart& bodypart) {
    return static_cast<int32_t>(bodypart.Header.Count());
  });
}

int32_t M_BodypartHeaderField(M_Bodypart* part, int32_t index, const char** name,
                              const char** value) {
  constexpr const char* kName = "M_BodypartHeaderField";
  return RunExport(kName, [&](int&) {
    NoteBodypart(part);
    const char* found_name = nullptr;
    const char* found_value = nullptr;
    if (part != nullptr && static_cast<uint32_t>(index) < ToBodypart(part)->Header.Count()) {
      const HeaderField field = ToBodypart(part)->Header.At(static_cast<uint32_t>(index));
      found_name = field.name.data();
      found_value = field.value.data();
    }
    if (name != nullptr) *name = found_name;
    if (value != nullptr) *value = found_value;
    NoteBodypart(part, kName);
    return found_name != nullptr ? 0 : -1;
  });
}

int32_t M_BodypartHeaderFieldByIndex(M_Bodypart* part, int32_t index, char* buffer,
                                     uint32_t* size) {
  constexpr const char* kName = "M_BodypartHeaderFieldByIndex";
  const auto copy = [&]() -> int32_t {
    const auto at = static_cast<uint32_t>(index);
    if (part == nullptr || at >= ToBodypart(part)->Header.Count()) return -1;
    if (size == nullptr) return 1;
    const HeaderField field = ToBodypart(part)->Header.At(at);
    // Its terminating zero is not counted, neither in what the buffer needs nor in what is stored.
    const size_t length = field.name.size() + 2 + field.value.size();
    const bool fits = buffer != nullptr && *size >= length;
    *size = static_cast<uint32_t>(length);
    if (!fits) return 1;
    char* next = std::copy(field.name.begin(), field.name.end(), buffer);
    *next++ = ':';
    *next++ = ' ';
    *std::copy(field.value.begin(), field.value.end(), next) = '\0';
    return 0;
  };
  return RunExport(kName, [&](int&) {
    NoteBodypart(part);
    const int32_t result = copy();
    NoteBodypart(part, kName);
    return result;
  });
}

const char* M_BodypartHeaderFieldValue(M_Bodypart* part, const char* name) {
  return RunOnBodypart(
      "M_BodypartHeaderFieldValue", part, static_cast<const char*>(nullptr),
      [name](Bodypart& bodypart) { return DataOrNull(FindValue(bodypart, name)); });
}

int32_t M_BodypartHeaderFieldValueProc(M_Bodypart* part, const char* name, char* buffer,
                                       uint32_t* size) {
  // The one export whose entry line has an argument.
  LogTrace("M_BodypartHeaderFieldValueProc in, keyname = '%s'", name != nullptr ? name : "null");
  NoteBodypart(part);
  const auto value = part != nullptr ? FindValue(*ToBodypart(part), name) : std::nullopt;
  const int32_t result = CopyOut(value, buffer, size);
  LogTrace("M_BodypartHeaderFieldValueProc out");
  return result;
}

const char* M_BodypartHeaderFieldNthValue(M_Bodypart* part, const char* name, int32_t n) {
  return RunOnBodypart(
      "M_BodypartHeaderFieldNthValue", part, static_cast<const char*>(nullptr),
      [name, n](Bodypart& bodypart) { return DataOrNull(FindValue(bodypart, name, n)); });
}

int32_t M_BodypartHeaderFieldNthValueProc(M_Bodypart* part, const char* name, int32_t n,
                                          char* buffer, uint32_t* size) {
  return CopyText("M_BodypartHeaderFieldNthValueProc", part, buffer, size,
                  [&](const Bodypart& bodypart) { return FindValue(bodypart, name, n); });
}

int32_t M_AddBodypartHeaderField(M_Bodypart* part, const char* name, const char* value) {
  return RunOnBodypart("M_AddBodypartHeaderField", part, int32_t{-1}, [&](Bodypart& bodypart) {
    return AddHeaderField(bodypart, TextOrEmpty(name), TextOrEmpty(value)) ? 0 : -1;
  });
}

int32_t M_DeleteBodypartHeaderField(M_Bodypart* part, int32_t index) {
  return RunOnBodypart("M_DeleteBodypartHeaderField", part, int32_t{-1}, [&](Bodypart& bodypart) {
    const auto at = static_cast<uint32_t>(index);
    if (at >= bodypart.Header.Count()) return -1;
    bodypart.Header.Delete(at);
    return 0;
  });
}

int32_t M_GetContentTransferEncoding(M_Bodypart* part, char* buffer, uint32_t* size) {
  return CopyText("M_GetContentTransferEncoding", part, buffer, size, [](const Bodypart& bodypart) {
    return MainValue(bodypart, "Content-Transfer-Encoding");
  });
}

int32_t M_GetContentDisposition(M_Bodypart* part, char* buffer, uint32_t* size) {
  return CopyText("M_GetContentDisposition", part, buffer, size, [](const Bodypart& bodypart) {
    return MainValue(bodypart, "Content-Disposition");
  });
}

int32_t M_GetCharset(M_Bodypart* part, char* buffer, uint32_t* size) {
  return CopyText("M_GetCharset", part, buffer, size, [](const Bodypart& bodypart) {
    return bodypart.Field("Content-Type").Parameter("charset");
  });
}

int32_t M_MimeParameter(M_Bodypart* part, const char* field, const char* parameter, char* buffer,
                        uint32_t* size) {
  return CopyText("M_MimeParameter", part, buffer, size, [&](const Bodypart& bodypart) {
    const bool named = field != nullptr && parameter != nullptr;
    return named ? bodypart.Field(field).Parameter(parameter) : std::nullopt;
  });
}

int32_t M_GetBodypartMimeContentType(M_Bodypart* part, char* buffer, uint32_t size) {
  return RunExport("M_GetBodypartMimeContentType", [&](int&) {
    NoteBodypart(part);
    if (part != nullptr) return CopyCut(ToBodypart(part)->TypeName(), buffer, size);
    CopyCut("", buffer, size);
    return 1;
  });
}

M_Bodypart* M_FindTextLetterBodypart(M_Bodypart* part) {
  return RunOnBodypart("M_FindTextLetterBodypart", part, static_cast<M_Bodypart*>(nullptr),
                       [](Bodypart& bodypart) { return ToHandle(FindTextLetter(bodypart)); });
}

// ---- Names ------------------------------------------------------------------------------------

int32_t M_GetBodypartName(M_Bodypart* part, char* buffer, uint32_t size) {
  return RunExport("M_GetBodypartName", [&](int&) {
    NoteBodypart(part);
    if (part != nullptr) return CopyCut(BodypartName(*ToBodypart(part), {}), buffer, size);
    CopyCut("", buffer, size);
    return 1;
  });
}

int32_t M_GetBodypartName1(M_Bodypart* part, char* buffer, uint32_t size,
                           const char* targetCharset) {
  return CopyName("M_GetBodypartName1", 0, part, buffer, size, targetCharset);
}

int32_t M_GetAttachmentName(int32_t number, M_Bodypart* part, char* buffer, uint32_t size,
                            const char* targetCharset) {
  return CopyName("M_GetAttachmentName", number, part, buffer, size, targetCharset);
}

// ---- Header texts -----------------------------------------------------------------------------

int32_t M_DecodeHeaderFieldValue(const char* value, const char* targetCharset, char* buffer,
                                 uint32_t* size) {
  return RunExport("M_DecodeHeaderFieldValue", [&](int& ex_pos) {
    if (value == nullptr) return 0;
    ex_pos = 1;
    return CopyOut(DecodeEncodedWords(value, TextOrEmpty(targetCharset)), buffer, size) == 0 ? 1
                                                                                             : 0;
  });
}

int32_t M_EncodeHeaderFieldValue(const char* value, const char* charset, const char* encoding,
                                 char* buffer, uint32_t* size) {
  return RunExport("M_EncodeHeaderFieldValue", [&](int& ex_pos) {
    if (value == nullptr) return 0;
    ex_pos = 1;
    const std::string text =
        EncodeWords(value, TextOrEmpty(charset), TextOrEmpty(encoding), kUnknownColumn);
    return CopyOut(text, buffer, size) == 0 ? 1 : 0;
  });
}

// ---- Bodies -----------------------------------------------------------------------------------

int32_t M_SaveBodypartBody(M_Bodypart* part, const char* targetEncoding, const char* targetCharset,
                           S_InStream* in4, S_OutStream* out) {
  return SaveBody("M_SaveBodypartBody", part, in4, out,
                  {.target_encoding = TextOrEmpty(targetEncoding),
                   .target_charset = TextOrEmpty(targetCharset)});
}

int32_t M_SaveBodypartBodyEx(M_Bodypart* part, const char* targetEncoding,
                             const char* targetCharset, S_InStream* in4, S_OutStream* out,
                             int32_t keepEmbedded) {
  return SaveBody("M_SaveBodypartBodyEx", part, in4, out,
                  {.target_encoding = TextOrEmpty(targetEncoding),
                   .target_charset = TextOrEmpty(targetCharset),
                   .keep_embedded = keepEmbedded != 0});
}

int32_t M_SaveAttachment(int32_t number, M_Bodypart* part, S_InStream* in4, S_OutStream* out) {
  return RunExport("M_SaveAttachment", [&](int& ex_pos) -> int32_t {
    if (!checkbodypart(part, "")) return kBadBodypart;
    if (in4 != nullptr) NoteInstream(in4);
    if (!checkoutstream(out, "")) return kBadOutstream;
    ex_pos = 1;
    return SaveAttachment(*ToBodypart(part), *ToOutstream(out), ToInstream(in4), number);
  });
}

int32_t M_DecodeEML(const char* fileName, const char* outputDirectory, const char* targetCharset,
                    M_DecodedPartProc onPart, S_Context context, uint32_t, uint32_t* partCount) {
  const auto tell = [=](Bodypart& part, int32_t number, const std::string& path, int64_t size) {
    onPart(context, ToHandle(&part), number, path.c_str(), size);
  };
  return RunExport("M_DecodeEML", [&](int& ex_pos) -> int32_t {
    uint32_t ignored = 0;
    uint32_t& count = partCount != nullptr ? *partCount : ignored;
    count = 0;
    if (fileName == nullptr) return kInputNotOpened;
    if (outputDirectory == nullptr) return kOutputNotOpened;
    ex_pos = 1;
    return DecodeEml(fileName, outputDirectory, TextOrEmpty(targetCharset),
                     onPart != nullptr ? OnDecodedPart(tell) : nullptr, count);
  });
}

// ---- Bodies as they stand ---------------------------------------------------------------------

int32_t M_GetBodypartSize(M_Bodypart* part, int64_t* decodedSize, int64_t* rawSize) {
  return RunOnBodypart("M_GetBodypartSize", part, int32_t{-1}, [&](Bodypart& bodypart) {
    if (decodedSize != nullptr) *decodedSize = bodypart.DecodedSize;
    if (rawSize != nullptr) *rawSize = bodypart.BodyLength;
    return 0;
  });
}

int32_t M_GetAttachmentMimeType(int32_t number, M_Bodypart* part, char* buffer, uint32_t size) {
  return RunExport("M_GetAttachmentMimeType", [&](int&) {
    NoteBodypart(part);
    const auto type = part != nullptr ? AttachmentType(*ToBodypart(part), number) : std::nullopt;
    if (type) return CopyCut(*type, buffer, size);
    CopyCut("", buffer, size);
    return 1;
  });
}

int64_t M_GetAttachmentSize(int32_t number, M_Bodypart* part) {
  return RunOnBodypart("M_GetAttachmentSize", part, int64_t{-1}, [number](Bodypart& bodypart) {
    const bool known = bodypart.DecodedSize != -1;
    if (number == 0) return known ? bodypart.DecodedSize : bodypart.BodyLength;
    const EmbeddedAttachment* file = bodypart.Embedded(number);
    return file != nullptr ? file->DecodedSize : int64_t{-1};
  });
}

uint32_t M_GetBodyTextRawSize(M_Bodypart* part) {
  return RunOnBodypart("M_GetBodyTextRawSize", part, uint32_t{0}, [](Bodypart& bodypart) {
    return static_cast<uint32_t>(bodypart.BodyLength);
  });
}

uint32_t M_GetBodypartTextRawSize(M_Bodypart* part) {
  return RunOnBodypart("M_GetBodypartTextRawSize", part, uint32_t{0}, [](Bodypart& bodypart) {
    return static_cast<uint32_t>(bodypart.BodyLength + bodypart.BodyStart - bodypart.PartStart);
  });
}

int32_t M_GetBodyText(M_Bodypart* part, S_InStream* in4, void* buffer, int32_t offset,
                      uint32_t* size) {
  return RunExport("M_GetBodyText", [&](int& ex_pos) {
    NoteBodypart(part);
    if (in4 != nullptr) NoteInstream(in4);
    ex_pos = 1;
    return ReadBodyText(ToBodypart(part), ToInstream(in4), buffer, offset, size);
  });
}

int32_t M_GetBodypartText(M_Bodypart* part, S_InStream* in4, void* buffer, int32_t offset,
                          uint32_t* size) {
  return RunExport("M_GetBodypartText", [&](int& ex_pos) {
    NoteBodypart(part);
    if (in4 != nullptr) NoteInstream(in4);
    ex_pos = 1;
    return ReadBodypartText(ToBodypart(part), ToInstream(in4), buffer, offset, size);
  });
}

int32_t M_SaveBodyOrBodypartTextToFile(M_Bodypart* part, S_InStream* in4, const char* fileName,
                                       int32_t bodyOnly, int32_t offset, uint32_t* count) {
  return RunExport("M_SaveBodyOrBodypartTextToFile", [&](int& ex_pos) {
    NoteBodypart(part);
    if (in4 != nullptr) NoteInstream(in4);
    ex_pos = 1;
    return SaveText(ToBodypart(part), ToInstream(in4), fileName, bodyOnly != 0, offset, count);
  });
}

// ---- HTML ---------------------------------------------------------------------------------------

int32_t M_HTMLToText(const char16_t* html, char16_t* text, uint32_t* textLength) {
  int ex_pos = 1;
  LogTrace("M_HTMLToText in HTML=%" PRIxPTR ", Text=%" PRIxPTR ", *TextLen=%d",
           reinterpret_cast<uintptr_t>(html), reinterpret_cast<uintptr_t>(text),
           textLength != nullptr ? static_cast<int>(*textLength) : 0);
  try {
    const std::u16string_view document = html != nullptr ? html : u"";
    ex_pos = 8;
    const std::u16string found = HtmlToText(document);
    ex_pos = 16;
    const int32_t result = CopyUnits(found, text, textLength);
    LogTrace("M_HTMLToText out");
    return result;
  } catch (...) {
    LogError("<E> M_HTMLToText 0x%x exception_pos=%d", static_cast<unsigned>(ExceptionCode()),
             ex_pos);
    throw;
  }
}

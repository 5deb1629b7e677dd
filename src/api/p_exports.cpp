// Copyright (c) 2026 the mimora developers.
//
// The P_ family: procedures on plain data.
#include <cinttypes>

#include "analysis/mime_types.h"
#include "api/frame.h"
#include "codec/charset_table.h"
#include "codec/file_coders.h"
#include "codec/quoted_printable.h"
#include "diag/global_params.h"
#include "html/html_charset.h"
#include "util/crc32.h"
#include "util/lz.h"
#include "util/md5.h"
#include "util/rfc822_date.h"
#include "util/url_escape.h"

using namespace mimora;

namespace {

template <typename Coder>
void RunStreamCoder(const char* name, S_InStream* in, S_OutStream* out, Coder coder) {
  RunExport(name, [&](int& ex_pos) {
    NoteInstream(in);
    NoteOutstream(out);
    ex_pos = 1;
    if (in != nullptr && out != nullptr) coder(*ToInstream(in), *ToOutstream(out));
  });
}

std::string_view BytesOrEmpty(const void* data, uint32_t length) {
  return data != nullptr ? std::string_view(static_cast<const char*>(data), length) : "";
}

}  // namespace

// ---- Transfer encodings -------------------------------------------------------------------------

void P_EncodeQuotedPrintable(S_InStream* in, S_OutStream* out) {
  RunStreamCoder("P_EncodeQuotedPrintable", in, out, EncodeQuotedPrintable);
}

void P_DecodeQuotedPrintable(S_InStream* in, S_OutStream* out) {
  RunStreamCoder("P_DecodeQuotedPrintable", in, out, DecodeQuotedPrintable);
}

int32_t P_EncodeBASE64(const char* inputFile, const char* outputFile, int32_t lineLength) {
  return RunExport("P_EncodeBASE64", [&](int&) -> int32_t {
    return EncodeBase64File(inputFile, outputFile, lineLength);
  });
}

int32_t P_DecodeBASE64(const char* inputFile, const char* outputFile) {
  return RunExport("P_DecodeBASE64",
                   [&](int&) -> int32_t { return DecodeBase64File(inputFile, outputFile); });
}

// ---- Character sets and types -------------------------------------------------------------------

uint32_t P_GetCodePage(const char* charset) {
  return RunExport("P_GetCodePage",
                   [&](int&) { return charset != nullptr ? LookupCodePage(charset) : 0; });
}

uint32_t P_GetHTMLCodePage(const char* html) {
  return RunExport("P_GetHTMLCodePage", [&](int&) { return HtmlCodePage(TextOrEmpty(html)); });
}

int32_t P_Extension2MimeType(const char* extension, char* buffer, uint32_t size) {
  return RunExport("P_Extension2MimeType", [&](int&) -> int32_t {
    CopyCut("", buffer, size);
    const auto type = extension != nullptr ? TypeForExtension(extension) : std::nullopt;
    if (!type) return MIMORA_TYPE_UNKNOWN;
    if (buffer == nullptr || type->size() >= size) return MIMORA_TYPE_TOO_LONG;
    return CopyCut(*type, buffer, size);
  });
}

int32_t P_GetExtensionFromMimeType(const char* contentType, char* buffer, uint32_t size) {
  return RunExport("P_GetExtensionFromMimeType", [&](int&) -> int32_t {
    const std::string_view extension =
        contentType != nullptr ? ExtensionForType(contentType) : std::string_view();
    if (buffer == nullptr || extension.size() >= size) return 1;
    return CopyCut(extension, buffer, size);
  });
}

// ---- Compression and checksums ------------------------------------------------------------------

uint32_t P_LZ_Compress(const void* in, void* out, uint32_t inSize) {
  // An entry line with arguments, and errors are logged where the position is known.
  LogTrace("P_LZ_Compress in in=%" PRIXPTR ", out=%" PRIXPTR ", insize=%d",
           reinterpret_cast<uintptr_t>(in), reinterpret_cast<uintptr_t>(out),
           static_cast<int>(inSize));
  const uint32_t result = LzCompress(BytesOrEmpty(in, inSize), static_cast<uint8_t*>(out));
  LogTrace("P_LZ_Compress out");
  return result;
}

uint32_t P_LZ_Uncompress(const void* in, void* out, uint32_t inSize) {
  return RunExport("P_LZ_Uncompress", [&](int&) {
    return LzUncompress(BytesOrEmpty(in, inSize), static_cast<uint8_t*>(out));
  });
}

uint32_t P_CRC32(const void* data, uint32_t length) {
  // Callers depend on it that only the low 16 bits of the length count.
  return RunExport("P_CRC32", [&](int&) {
    return UpdateCrc32(kCrc32Start, BytesOrEmpty(data, length & 0xFFFF));
  });
}

void P_MD5Sum(const void* data, uint32_t length, char* text) {
  RunExport("P_MD5Sum", [&](int&) { WriteMd5Text(Md5(BytesOrEmpty(data, length)), text); });
}

void P_MD5SumBin(const void* data, uint32_t length, unsigned char* digest) {
  RunExport("P_MD5SumBin", [&](int&) {
    const Md5Digest sum = Md5(BytesOrEmpty(data, length));
    std::copy(sum.begin(), sum.end(), digest);
  });
}

// ---- Dates and URLs -----------------------------------------------------------------------------

// It writes no lines into the trace.
uint32_t P_RFC822DateTimeStr2time_t(const char* text) { return ParseRfc822Date(TextOrEmpty(text)); }

char* P_time_t2RFC822DateTimeStr(char* buffer, uint32_t time) {
  return RunExport("P_time_t2RFC822DateTimeStr", [&](int&) {
    WriteRfc822Date(time, buffer);
    return buffer;
  });
}

// The answers of the sized copy go nowhere.

void P_EscapeURL(const char* input, char* output, uint32_t* size) {
  RunExport("P_EscapeURL", [&](int&) { CopyOut(EscapeUrl(TextOrEmpty(input)), output, size); });
}

void P_UnEscapeURL(const char* input, char* output, uint32_t* size) {
  RunExport("P_UnEscapeURL", [&](int&) { CopyOut(UnEscapeUrl(TextOrEmpty(input)), output, size); });
}

// ---- The library itself -------------------------------------------------------------------------

// These write no lines of their own into the trace.

void P_SetGlobalParams(const char* list) { TheGlobalParams().Set(list); }

void P_SetQQ_callback(P_TraceProc callback) { SetTraceCallback(callback); }

void P_QQ(const char* text) {
  if (text != nullptr) LogUserText(text);
}

int32_t P_MIMORATest(int32_t /*ignored*/) { return 0; }

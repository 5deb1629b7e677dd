// Copyright (c) 2026 the mimora developers.
//
// The P_ family: procedures on plain data.
#include "analysis/mime_types.h"
#include "api/frame.h"
#include "codec/charset_table.h"
#include "codec/file_coders.h"
#include "codec/quoted_printable.h"
#include "diag/global_params.h"
#include "html/html_charset.h"

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

// ---- The library itself -------------------------------------------------------------------------

// These write no lines of their own into the trace.

void P_SetGlobalParams(const char* list) { TheGlobalParams().Set(list); }

void P_SetQQ_callback(P_TraceProc callback) { SetTraceCallback(callback); }

void P_QQ(const char* text) {
  if (text != nullptr) LogUserText(text);
}

int32_t P_MIMORATest(int32_t /*ignored*/) { return 0; }

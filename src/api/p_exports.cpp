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
#include "smime/sign_encrypt.h"
#include "smime/smime_orv.h"
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

static_assert(kStoreUnreadable == MIMORA_E_STORE && kCertificateNotFound == MIMORA_E_CERTIFICATE &&
              kNoPrivateKey == MIMORA_E_PRIVATE_KEY && kWrongPassword == MIMORA_E_PASSWORD &&
              kCertificateOutsideTime == MIMORA_E_CERTIFICATE_TIME &&
              kAlgorithmRefused == MIMORA_E_ALGORITHM && kEngineFailed == MIMORA_E_ENGINE &&
              kCertificatePurpose == MIMORA_E_CERTIFICATE_PURPOSE);

P_Algorithm ToPublic(const Algorithm& algorithm) {
  P_Algorithm made = {};
  CopyCut(algorithm.name, made.name, sizeof made.name);
  made.keyBits = algorithm.bits;
  made.kind = static_cast<uint32_t>(algorithm.kind);
  return made;
}

// Cuts in front of a character of UTF-8, not in it.
template <size_t kSize>
void CopyCharacters(std::string_view text, char (&buffer)[kSize]) {
  if (text.size() >= kSize) {
    size_t size = kSize - 1;
    while (size > 0 && (text[size] & 0xC0) == 0x80) --size;
    text = text.substr(0, size);
  }
  CopyCut(text, buffer, kSize);
}

P_Certificate ToPublic(const StoredCertificate& stored) {
  const X509& x509 = *stored.certificate;
  P_Certificate made = {};
  CopyCharacters(stored.id, made.id);
  CopyCharacters(NameText(X509_get_subject_name(&x509)), made.subject);
  CopyCharacters(NameText(X509_get_issuer_name(&x509)), made.issuer);
  if (!stored.addresses.empty()) CopyCharacters(stored.addresses.front(), made.email);
  made.notBefore = stored.validity.not_before;
  made.notAfter = stored.validity.not_after;
  made.flags = (stored.has_key ? MIMORA_CERTIFICATE_KEY : 0) |
               (MaySign(x509) ? MIMORA_CERTIFICATE_SIGN : 0) |
               (MayEncrypt(x509) ? MIMORA_CERTIFICATE_ENCRYPT : 0) |
               (stored.validity.IncludesNow() ? 0 : MIMORA_CERTIFICATE_OUTSIDE_TIME);
  return made;
}

bool Serves(const P_Certificate& certificate, uint32_t purpose) {
  constexpr uint32_t kSigner = MIMORA_CERTIFICATE_KEY | MIMORA_CERTIFICATE_SIGN;
  switch (purpose) {
    case MIMORA_PURPOSE_ANY:
      return true;
    case MIMORA_PURPOSE_SIGN:
      return (certificate.flags & kSigner) == kSigner;
    case MIMORA_PURPOSE_ENCRYPT:
      return (certificate.flags & MIMORA_CERTIFICATE_ENCRYPT) != 0;
    default:
      return false;
  }
}

// Zero-terminated names one after the other, an empty one at the end.
std::vector<std::string_view> SplitNames(const char* names) {
  std::vector<std::string_view> split;
  for (; names != nullptr && *names != '\0'; names += split.back().size() + 1)
    split.emplace_back(names);
  return split;
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
  LogTrace("P_LZ_Compress in in=%" PRIxPTR ", out=%" PRIxPTR ", insize=%d",
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

// ---- Signing and encrypting --------------------------------------------------------------------

int32_t P_GetAlgorithmList(uint32_t kind, P_Algorithm** list) {
  return RunExport("P_GetAlgorithmList", [&](int&) -> int32_t {
    if (list == nullptr) return -1;
    *list = nullptr;
    if (kind > MIMORA_ALGORITHM_CIPHER) return -1;
    int32_t count = 0;
    *list = new P_Algorithm[std::size(kAlgorithms)]();
    for (const Algorithm& algorithm : kAlgorithms) {
      const auto algorithm_kind = static_cast<uint32_t>(algorithm.kind);
      if (kind == MIMORA_ALGORITHM_ANY || kind == algorithm_kind)
        (*list)[count++] = ToPublic(algorithm);
    }
    return count;
  });
}

void P_FreeAlgorithmList(P_Algorithm* list) {
  RunExport("P_FreeAlgorithmList", [list](int&) { delete[] list; });
}

int32_t P_GetCertificatesList(const char* store, uint32_t purpose, P_Certificate** list,
                              uint32_t* count) {
  return RunExport("P_GetCertificatesList", [&](int&) -> int32_t {
    if (list == nullptr || count == nullptr) return kUnclassified;
    *list = nullptr;
    *count = 0;
    SMimeOrv engine(store);
    if (const Result result = engine.Open()) return result;
    const auto& certificates = engine.Store().Certificates();
    auto found = std::make_unique<P_Certificate[]>(certificates.size());
    uint32_t size = 0;
    for (const StoredCertificate& certificate : certificates) {
      found[size] = ToPublic(certificate);
      size += Serves(found[size], purpose) ? 1 : 0;
    }
    *list = found.release();
    *count = size;
    return kOk;
  });
}

void P_FreeCertificatesList(P_Certificate* list, uint32_t) {
  RunExport("P_FreeCertificatesList", [list](int&) { delete[] list; });
}

int32_t P_SMimeGetCertInfo(const char* store, const char* certificate, char* buffer,
                           uint32_t* size) {
  return RunExport("P_SMimeGetCertInfo", [&](int&) -> int32_t {
    SMimeOrv engine(store);
    const StoredCertificate* found = nullptr;
    if (engine.Open() == kOk) engine.Store().Find(TextOrEmpty(certificate), Purpose::kAny, found);
    if (found == nullptr) return -1;
    return CopyOut(DescribeCertificate(*found->certificate, found->id, found->has_key), buffer,
                   size);
  });
}

int32_t P_SignData(const char* message, const char* store, const char* signer, const char* password,
                   const char* hashName, int32_t detached, S_OutStream* out) {
  return RunExport("P_SignData", [&](int& ex_pos) -> int32_t {
    NoteOutstream(out);
    ex_pos = 1;
    if (out == nullptr || !ToOutstream(out)->IsOpen()) return kNotOpen;
    const SignOptions options = {store, password, TextOrEmpty(signer), TextOrEmpty(hashName),
                                 detached != 0};
    return SignData(TextOrEmpty(message), options, *ToOutstream(out));
  });
}

int32_t P_EncryptData(const char* message, const char* store, const char* recipients,
                      const char* cipherName, uint32_t keyBits, uint32_t flags,
                      uint32_t* failedRecipient, S_OutStream* out) {
  return RunExport("P_EncryptData", [&](int& ex_pos) -> int32_t {
    NoteOutstream(out);
    ex_pos = 1;
    uint32_t failed = MIMORA_NO_RECIPIENT;
    Result result = kNotOpen;
    if (out != nullptr && ToOutstream(out)->IsOpen()) {
      const EncryptOptions options = {store, SplitNames(recipients), TextOrEmpty(cipherName),
                                      keyBits, (flags & MIMORA_ENCRYPT_OAEP) != 0};
      result = EncryptData(TextOrEmpty(message), options, failed, *ToOutstream(out));
    }
    if (failedRecipient != nullptr) *failedRecipient = failed;
    return result;
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

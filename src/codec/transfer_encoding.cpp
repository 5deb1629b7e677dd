// Copyright (c) 2026 the mimora developers.
#include "codec/transfer_encoding.h"

#include <cinttypes>
#include <string>

#include "codec/base64.h"
#include "codec/quoted_printable.h"
#include "codec/run_coder.h"
#include "codec/uuencode.h"
#include "diag/result.h"
#include "platform/ascii.h"
#include "stream/copy_stream.h"

namespace mimora {
namespace {

template <typename Coder>
int32_t Decode(Minstream& in, Moutstream& out) {
  Coder coder(out);
  return RunCoder(in, out, coder);
}

int32_t Copy(Minstream& in, Moutstream& out) {
  switch (CopyStream(in, out, kWholeStream)) {
    case kOk:
      return 0;
    case kReadFailed:
      return -1;
    default:
      return -2;
  }
}

int32_t DecodeAs(TransferEncoding encoding, Minstream& in, Moutstream& out) {
  switch (encoding) {
    case TransferEncoding::kBase64:
      return out.Counts() ? Decode<Base64Counter>(in, out) : Decode<Base64Decoder>(in, out);
    case TransferEncoding::kQuotedPrintable:
      return Decode<QuotedPrintableDecoder>(in, out);
    case TransferEncoding::kUuencode:
      return Decode<UuDecoder>(in, out);
    case TransferEncoding::kIdentity:
      break;
  }
  return Copy(in, out);
}

}  // namespace

TransferEncoding FindTransferEncoding(std::string_view name) {
  if (EqualIgnoringCase(name, "base64")) return TransferEncoding::kBase64;
  if (EqualIgnoringCase(name, "quoted-printable")) return TransferEncoding::kQuotedPrintable;
  if (EqualIgnoringCase(name, "x-uuencode")) return TransferEncoding::kUuencode;
  return TransferEncoding::kIdentity;
}

int32_t TransferEncodingDecode(Minstream& in, Moutstream& out, std::string_view name) {
  int ex_pos = 1;
  try {
    const TransferEncoding encoding = FindTransferEncoding(name);
    ex_pos = 2;
    return DecodeAs(encoding, in, out);
  } catch (...) {
    LogError("<E> TransferEncodingDecode ex_pos=%d, TransferEncoding=%" PRIXPTR, ex_pos,
             reinterpret_cast<uintptr_t>(name.data()));
    LogError("<E> TransferEncodingDecode '%s' at %" PRId64, OneLine(name).c_str(), in.Position());
    throw;
  }
}

}  // namespace mimora

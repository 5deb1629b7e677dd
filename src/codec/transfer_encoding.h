// Copyright (c) 2026 the mimora developers.
//
// Content transfer encodings by name (RFC 2045 6).
#ifndef MIMORA_CODEC_TRANSFER_ENCODING_H_
#define MIMORA_CODEC_TRANSFER_ENCODING_H_

#include <cstdint>
#include <string_view>

#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// 7bit, 8bit, binary and every unknown name are kIdentity.
enum class TransferEncoding { kIdentity, kBase64, kQuotedPrintable, kUuencode };

TransferEncoding FindTransferEncoding(std::string_view name);

// Decodes the rest of IN, as far as it delivers. Into a counting stream nothing is decoded, only
// counted. Answers 0, -1 when reading failed, -2 when writing did.
int32_t TransferEncodingDecode(Minstream& in, Moutstream& out, std::string_view name);

}  // namespace mimora

#endif  // MIMORA_CODEC_TRANSFER_ENCODING_H_

// Copyright (c) 2026 the mimora developers.
//
// UTF-8 (RFC 3629) and UTF-16 (RFC 2781).
#ifndef MIMORA_CODEC_CHARSET_UNICODE_CODER_H_
#define MIMORA_CODEC_CHARSET_UNICODE_CODER_H_

#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

// What is no character becomes U+FFFD: one for as many bytes as could have been the beginning of a
// character, a second byte that rules it out included. A byte-order mark is a character.
std::unique_ptr<CharsetDecoder> MakeUtf8Decoder();

// Half a surrogate pair becomes U+FFFD.
std::unique_ptr<CharsetEncoder> MakeUtf8Encoder();

enum class ByteOrder { kLittle, kBig };

// A byte-order mark at the start decides the order, whatever is given here, and is no character.
// Half a unit at the end becomes U+FFFD.
std::unique_ptr<CharsetDecoder> MakeUtf16Decoder(ByteOrder order);

// The text begins with a byte-order mark, unless it is empty.
std::unique_ptr<CharsetEncoder> MakeUtf16Encoder(ByteOrder order);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_UNICODE_CODER_H_

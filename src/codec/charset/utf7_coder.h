// Copyright (c) 2026 the mimora developers.
//
// UTF-7 (RFC 2152), page 65000.
#ifndef MIMORA_CODEC_CHARSET_UTF7_CODER_H_
#define MIMORA_CODEC_CHARSET_UTF7_CODER_H_

#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeUtf7Decoder();
std::unique_ptr<CharsetEncoder> MakeUtf7Encoder();

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_UTF7_CODER_H_

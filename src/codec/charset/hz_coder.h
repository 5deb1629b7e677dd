// Copyright (c) 2026 the mimora developers.
//
// HZ (RFC 1843), page 52936, over page 936.
#ifndef MIMORA_CODEC_CHARSET_HZ_CODER_H_
#define MIMORA_CODEC_CHARSET_HZ_CODER_H_

#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeHzDecoder();
std::unique_ptr<CharsetEncoder> MakeHzEncoder();

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_HZ_CODER_H_

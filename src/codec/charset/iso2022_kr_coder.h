// Copyright (c) 2026 the mimora developers.
//
// ISO-2022-KR (RFC 1557), page 50225, over page 949.
#ifndef MIMORA_CODEC_CHARSET_ISO2022_KR_CODER_H_
#define MIMORA_CODEC_CHARSET_ISO2022_KR_CODER_H_

#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeIso2022KrDecoder();
std::unique_ptr<CharsetEncoder> MakeIso2022KrEncoder();

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_ISO2022_KR_CODER_H_

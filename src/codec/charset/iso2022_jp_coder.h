// Copyright (c) 2026 the mimora developers.
//
// ISO-2022-JP (RFC 1468) over page 932. The pages differ only in how half-width kana are written:
// 50220 makes them full-width, 50221 selects them by an escape sequence, 50222 by a shift code.
#ifndef MIMORA_CODEC_CHARSET_ISO2022_JP_CODER_H_
#define MIMORA_CODEC_CHARSET_ISO2022_JP_CODER_H_

#include <cstdint>
#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeIso2022JpDecoder();
std::unique_ptr<CharsetEncoder> MakeIso2022JpEncoder(uint32_t code_page);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_ISO2022_JP_CODER_H_

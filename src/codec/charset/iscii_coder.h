// Copyright (c) 2026 the mimora developers.
//
// ISCII: the scripts of India side by side in eight bits, pages 57002 to 57011.
#ifndef MIMORA_CODEC_CHARSET_ISCII_CODER_H_
#define MIMORA_CODEC_CHARSET_ISCII_CODER_H_

#include <cstdint>
#include <memory>

#include "codec/charset/charset_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeIsciiDecoder(uint32_t code_page);
std::unique_ptr<CharsetEncoder> MakeIsciiEncoder(uint32_t code_page);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_ISCII_CODER_H_

// Copyright (c) 2026 the mimora developers.
//
// EBCDIC in which 0E and 0F switch between bytes and pairs: the pages of the kind kMixed.
#ifndef MIMORA_CODEC_CHARSET_EBCDIC_CODER_H_
#define MIMORA_CODEC_CHARSET_EBCDIC_CODER_H_

#include <memory>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeEbcdicDecoder(const CodePage& page);
std::unique_ptr<CharsetEncoder> MakeEbcdicEncoder(const CodePage& page);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_EBCDIC_CODER_H_

// Copyright (c) 2026 the mimora developers.
//
// The character sets that mail names, as numbered code pages.
#ifndef MIMORA_CODEC_CHARSET_TABLE_H_
#define MIMORA_CODEC_CHARSET_TABLE_H_

#include <cstdint>
#include <string_view>

namespace mimora {

// The code page of a character set, whose name may be in any case; 0 when it is not known.
uint32_t LookupCodePage(std::string_view charset);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_TABLE_H_

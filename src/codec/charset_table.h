// Copyright (c) 2026 the mimora developers.
//
// The character sets that mail names, as numbered code pages.
#ifndef MIMORA_CODEC_CHARSET_TABLE_H_
#define MIMORA_CODEC_CHARSET_TABLE_H_

#include <cstdint>
#include <string_view>

namespace mimora {

constexpr uint32_t kUtf16Page = 1200;
constexpr uint32_t kUtf16BigEndianPage = 1201;
constexpr uint32_t kUtf7Page = 65000;
constexpr uint32_t kUtf8Page = 65001;

constexpr bool IsUtf16Page(uint32_t page) {
  return page == kUtf16Page || page == kUtf16BigEndianPage;
}

// The code page of a character set, whose name may be in any case; 0 when it is not known.
uint32_t LookupCodePage(std::string_view charset);

// The same, and besides the other names that mail uses for these pages ("utf8", "latin1", "gbk",
// "cp1250"): what text is converted by.
uint32_t PageOfCharset(std::string_view charset);

// The name that mail has for a page; empty for a page that no name stands for.
std::string_view CharsetOfPage(uint32_t page);

bool IsUnicodeCharset(std::string_view charset);

// Whether both names are known and stand for one page.
bool SameCodePage(std::string_view a, std::string_view b);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_TABLE_H_

// Copyright (c) 2026 the mimora developers.
//
// The character set that an HTML text says it is in.
#ifndef MIMORA_HTML_HTML_CHARSET_H_
#define MIMORA_HTML_HTML_CHARSET_H_

#include <cstdint>
#include <string_view>

namespace mimora {

// The code page that the text declares: by a byte-order mark, an XML declaration, or a META element
// outside of comments; the first that is known counts, and 0 is none. Markup that could be read
// this far is not UTF-16, whatever it says: it is taken for UTF-8, as browsers do.
uint32_t HtmlCodePage(std::string_view html);

}  // namespace mimora

#endif  // MIMORA_HTML_HTML_CHARSET_H_

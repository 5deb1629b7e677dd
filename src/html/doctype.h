// Copyright (c) 2026 the mimora developers.
//
// Document types, which tell old documents from those that follow the standard.
#ifndef MIMORA_HTML_DOCTYPE_H_
#define MIMORA_HTML_DOCTYPE_H_

#include <string_view>

namespace mimora {

// Whether browsers show a document of this type as they did before there was a standard. TEXT is
// what stands between "<!doctype" and ">".
bool IsQuirksDoctype(std::u16string_view text);

}  // namespace mimora

#endif  // MIMORA_HTML_DOCTYPE_H_

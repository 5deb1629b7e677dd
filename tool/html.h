// Copyright (c) 2026 the mimora developers.
//
// HTML as people see it.
#ifndef MIMORA_TOOL_HTML_H_
#define MIMORA_TOOL_HTML_H_

#include <mimora/mimora.h>

#include <string>
#include <string_view>

namespace mimora::tool {

// The visible text of a document, in the character set of that name. FROM is the one that the
// document is in; when it is empty or not known, the document's own word counts, and without that
// it is UTF-8 if it is proper UTF-8, else windows-1252. Throws MessageError.
std::string RenderHtml(std::string_view html, const std::string& from, const char* to);

// The first part of a message that is HTML to be read; NULL when there is none.
M_Bodypart* FindHtmlLetter(M_Bodypart* part);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_HTML_H_

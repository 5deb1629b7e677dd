// Copyright (c) 2026 the mimora developers.
//
// The text of an HTML document as a reader sees it.
#ifndef MIMORA_HTML_HTML_TO_TEXT_H_
#define MIMORA_HTML_HTML_TO_TEXT_H_

#include <string>
#include <string_view>

namespace mimora {

// The visible text of the body, laid out as browsers do for their innerText without style sheets
// and scripts: white space is folded, blocks and rows are lines, paragraphs have empty lines around
// them, cells are parted by tabs. Line ends are LF. Broken markup is repaired as browsers repair
// it. Time is linear in the document, memory in the text.
std::u16string HtmlToText(std::u16string_view html);

}  // namespace mimora

#endif  // MIMORA_HTML_HTML_TO_TEXT_H_

// Copyright (c) 2026 the mimora developers.
#include "html/html_to_text.h"

#include "html/text_sink.h"
#include "html/tree_reader.h"

namespace mimora {

std::u16string HtmlToText(std::u16string_view html) {
  if (html.starts_with(u'\xFEFF')) html.remove_prefix(1);
  TextSink sink;
  TreeReader(html, sink).Read();
  return sink.Take();
}

}  // namespace mimora

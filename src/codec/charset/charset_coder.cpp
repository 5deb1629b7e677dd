// Copyright (c) 2026 the mimora developers.
#include "codec/charset/charset_coder.h"

#include "codec/charset/code_page.h"
#include "codec/charset/table_coder.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeDecoder(uint32_t code_page) {
  const CodePage* page = FindCodePage(code_page);
  if (page == nullptr) return nullptr;
  switch (page->kind) {
    case CodePageKind::kSingle:
    case CodePageKind::kDouble:
      return std::make_unique<TableDecoder>(*page);
    case CodePageKind::kMixed:
    case CodePageKind::kIscii:
      return nullptr;
  }
  return nullptr;
}

std::unique_ptr<CharsetEncoder> MakeEncoder(uint32_t code_page, EncodeOptions options) {
  const CodePage* page = FindCodePage(code_page);
  if (page == nullptr) return nullptr;
  switch (page->kind) {
    case CodePageKind::kSingle:
    case CodePageKind::kDouble:
      return std::make_unique<TableEncoder>(*page, options);
    case CodePageKind::kMixed:
    case CodePageKind::kIscii:
      return nullptr;
  }
  return nullptr;
}

}  // namespace mimora

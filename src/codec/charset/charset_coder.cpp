// Copyright (c) 2026 the mimora developers.
#include "codec/charset/charset_coder.h"

#include "codec/charset/code_page.h"
#include "codec/charset/table_coder.h"
#include "codec/charset/unicode_coder.h"
#include "codec/charset_table.h"

namespace mimora {

std::unique_ptr<CharsetDecoder> MakeDecoder(uint32_t code_page) {
  switch (code_page) {
    case kUtf8Page:
      return MakeUtf8Decoder();
    case kUtf16Page:
      return MakeUtf16Decoder(ByteOrder::kLittle);
    case kUtf16BigEndianPage:
      return MakeUtf16Decoder(ByteOrder::kBig);
    default:
      break;
  }
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
  switch (code_page) {
    case kUtf8Page:
      return MakeUtf8Encoder();
    case kUtf16Page:
      return MakeUtf16Encoder(ByteOrder::kLittle);
    case kUtf16BigEndianPage:
      return MakeUtf16Encoder(ByteOrder::kBig);
    default:
      break;
  }
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

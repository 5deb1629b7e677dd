// Copyright (c) 2026 the mimora developers.
#include "codec/charset/charset_coder.h"

#include "codec/charset/code_page.h"
#include "codec/charset/ebcdic_coder.h"
#include "codec/charset/hz_coder.h"
#include "codec/charset/iscii_coder.h"
#include "codec/charset/iso2022_jp_coder.h"
#include "codec/charset/iso2022_kr_coder.h"
#include "codec/charset/table_coder.h"
#include "codec/charset/unicode_coder.h"
#include "codec/charset/utf7_coder.h"
#include "codec/charset_table.h"

namespace mimora {
namespace {

// The pages that have no tables of their own.
std::unique_ptr<CharsetDecoder> MakeDecoderByRules(uint32_t code_page) {
  switch (code_page) {
    case kUtf16Page:
      return MakeUtf16Decoder(ByteOrder::kLittle);
    case kUtf16BigEndianPage:
      return MakeUtf16Decoder(ByteOrder::kBig);
    case 50220:
    case 50221:
    case 50222:
      return MakeIso2022JpDecoder();
    case 50225:
      return MakeIso2022KrDecoder();
    case 52936:
      return MakeHzDecoder();
    case kUtf7Page:
      return MakeUtf7Decoder();
    case kUtf8Page:
      return MakeUtf8Decoder();
    default:
      return nullptr;
  }
}

std::unique_ptr<CharsetEncoder> MakeEncoderByRules(uint32_t code_page) {
  switch (code_page) {
    case kUtf16Page:
      return MakeUtf16Encoder(ByteOrder::kLittle);
    case kUtf16BigEndianPage:
      return MakeUtf16Encoder(ByteOrder::kBig);
    case 50220:
    case 50221:
    case 50222:
      return MakeIso2022JpEncoder(code_page);
    case 50225:
      return MakeIso2022KrEncoder();
    case 52936:
      return MakeHzEncoder();
    case kUtf7Page:
      return MakeUtf7Encoder();
    case kUtf8Page:
      return MakeUtf8Encoder();
    default:
      return nullptr;
  }
}

}  // namespace

std::unique_ptr<CharsetDecoder> MakeDecoder(uint32_t code_page) {
  const CodePage* page = FindCodePage(code_page);
  if (page == nullptr) return MakeDecoderByRules(code_page);
  switch (page->kind) {
    case CodePageKind::kSingle:
    case CodePageKind::kDouble:
      return std::make_unique<TableDecoder>(*page);
    case CodePageKind::kMixed:
      return MakeEbcdicDecoder(*page);
    case CodePageKind::kIscii:
      return MakeIsciiDecoder(code_page);
  }
  return nullptr;
}

std::unique_ptr<CharsetEncoder> MakeEncoder(uint32_t code_page, EncodeOptions options) {
  const CodePage* page = FindCodePage(code_page);
  if (page == nullptr) return MakeEncoderByRules(code_page);
  switch (page->kind) {
    case CodePageKind::kSingle:
    case CodePageKind::kDouble:
      return std::make_unique<TableEncoder>(*page, options);
    case CodePageKind::kMixed:
      return MakeEbcdicEncoder(*page);
    case CodePageKind::kIscii:
      return MakeIsciiEncoder(code_page);
  }
  return nullptr;
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
//
// The pages whose bytes mean the same wherever they stand: single bytes and pairs behind a lead.
#ifndef MIMORA_CODEC_CHARSET_TABLE_CODER_H_
#define MIMORA_CODEC_CHARSET_TABLE_CODER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"

namespace mimora {

class TableDecoder final : public CharsetDecoder {
 public:
  explicit TableDecoder(const CodePage& page) : page_(page) {}

  char16_t* Decode(std::string_view bytes, char16_t* wide) override;
  char16_t* Finish(char16_t* wide) override;

 private:
  bool DecodeBlock(const char* p, char16_t* wide) const;
  char16_t* DecodeSome(const char*& p, const char* end, char16_t* wide);
  char16_t FromPair(uint8_t lead, char trail);
  char16_t CheckSingle(char16_t character);

  const CodePage page_;
  uint8_t lead_ = 0;  // held back; 0 leads in no page
};

class TableEncoder final : public CharsetEncoder {
 public:
  TableEncoder(const CodePage& page, EncodeOptions options);

  char* Encode(std::u16string_view wide, char* bytes) override;
  char* Finish(char* bytes) override { return bytes; }

 private:
  bool EncodeBlock(const char16_t* p, char* bytes) const;
  char* EncodeSome(const char16_t*& p, const char16_t* end, char* bytes);

  const CodePage page_;
  const bool best_fit_;
  const uint16_t default_char_;
};

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_TABLE_CODER_H_

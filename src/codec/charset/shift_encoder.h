// Copyright (c) 2026 the mimora developers.
//
// Encoding of text in which shift codes switch between single bytes and pairs.
#ifndef MIMORA_CODEC_CHARSET_SHIFT_ENCODER_H_
#define MIMORA_CODEC_CHARSET_SHIFT_ENCODER_H_

#include <algorithm>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"

namespace mimora {

inline char* PutBytes(std::string_view text, char* bytes) {
  return std::copy(text.begin(), text.end(), bytes);
}

// RULES has
//   kHeader:         what stands once in front of the first pair,
//   kOpen, kClose:   what stands in front of pairs and behind them,
//   kDoubled:        a single byte that is written twice, or 0,
//   Code:            the byte of a character, its pair, or CodePage::kNone.
// The longest sequences together have to leave room for the pair in EncodedRoom(1).
template <typename Rules>
class ShiftEncoder final : public CharsetEncoder {
  static_assert(Rules::kHeader.size() + Rules::kOpen.size() + 2 <= EncodedRoom(1) - EncodedRoom(0));

 public:
  explicit ShiftEncoder(const CodePage& page) : page_(page) {}

  char* Encode(std::u16string_view wide, char* bytes) override {
    for (const char16_t unit : wide) bytes = Put(Rules::Code(page_, unit), bytes);
    return bytes;
  }

  char* Finish(char* bytes) override {
    has_header_ = false;
    return Close(bytes);
  }

 private:
  char* Put(uint16_t code, char* bytes) {
    if (code == CodePage::kNone) {
      used_default_ = true;
      code = page_.default_char;
    }
    if (code > 0xFF) return PutPair(code, bytes);
    bytes = Close(bytes);
    if (Rules::kDoubled != 0 && code == Rules::kDoubled) *bytes++ = static_cast<char>(code);
    *bytes++ = static_cast<char>(code);
    return bytes;
  }

  char* PutPair(uint16_t code, char* bytes) {
    if (!has_header_) bytes = PutBytes(Rules::kHeader, bytes);
    has_header_ = true;
    if (!in_pairs_) bytes = PutBytes(Rules::kOpen, bytes);
    in_pairs_ = true;
    *bytes++ = static_cast<char>(code >> 8);
    *bytes++ = static_cast<char>(code & 0xFF);
    return bytes;
  }

  char* Close(char* bytes) {
    if (!in_pairs_) return bytes;
    in_pairs_ = false;
    return PutBytes(Rules::kClose, bytes);
  }

  const CodePage& page_;
  bool has_header_ = false;
  bool in_pairs_ = false;
};

// The code of a character in seven bits: that of ASCII, or a pair of the page both bytes of which
// have their high bit, without it.
inline uint16_t SevenBitCode(const CodePage& page, char16_t unit, uint8_t last_lead) {
  if (unit < 0x80) return unit;
  const uint16_t code = page.EncodeUnit(unit);
  const int lead = code >> 8, trail = code & 0xFF;
  if (code < 0x80) return code;
  if (lead < 0xA1 || lead > last_lead || trail < 0xA1 || trail > 0xFE) return CodePage::kNone;
  return code & 0x7F7F;
}

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_SHIFT_ENCODER_H_

// Copyright (c) 2026 the mimora developers.
//
// The constant tables of the code pages. The build makes them from the text files in pages/.
#ifndef MIMORA_CODEC_CHARSET_CODE_PAGE_H_
#define MIMORA_CODEC_CHARSET_CODE_PAGE_H_

#include <cstddef>
#include <cstdint>

namespace mimora {

enum class CodePageKind : uint8_t {
  kSingle,  // a byte is a character
  kDouble,  // some bytes lead a pair
  kMixed,   // EBCDIC: shift codes switch between bytes and pairs
  kIscii,   // bytes; some pairs are one character
};

// All tables are cut into leaves of this size, each of which is stored once however many tables
// share it.
constexpr size_t kLeafBits = 6;
constexpr size_t kLeafSize = size_t{1} << kLeafBits;

extern const uint16_t kCodePageLeaves[];

struct CodePage {
  // In a decoding table: no character, and the first byte of a pair. In the encoding table: no
  // encoding.
  static constexpr uint16_t kNone = 0xFFFF;
  static constexpr uint16_t kLead = 0xFFFE;

  uint32_t number;
  CodePageKind kind;
  bool has_ascii;          // whether the bytes below 80 are what they are in ASCII
  char16_t undefined;      // stands for bytes that are no character
  uint16_t default_char;   // stands for a character that has no encoding
  const uint16_t* bytes;   // by byte: the character, kLead or kNone
  const uint16_t* pairs;   // leaves by pair; null for a page without pairs
  const uint16_t* encode;  // leaves by character

  static uint16_t At(const uint16_t* leaves, uint16_t index) {
    return kCodePageLeaves[(size_t{leaves[index >> kLeafBits]} << kLeafBits) |
                           (index & (kLeafSize - 1))];
  }

  // The character of a byte, kLead or kNone.
  uint16_t DecodeByte(uint8_t byte) const { return bytes[byte]; }

  // The character of a pair, or kNone.
  uint16_t DecodePair(uint8_t lead, uint8_t trail) const {
    return At(pairs, static_cast<uint16_t>(lead << 8 | trail));
  }

  // The byte, or the pair, of a character: its own, or the best fit; kNone when there is neither.
  uint16_t EncodeUnit(char16_t unit) const { return At(encode, unit); }

  // The character of such a byte or pair: the one that was encoded, or the one it is similar to.
  uint16_t DecodeCode(uint16_t code) const {
    const auto low = static_cast<uint8_t>(code);
    return code < 0x100 ? DecodeByte(low) : DecodePair(static_cast<uint8_t>(code >> 8), low);
  }
};

// By number.
extern const CodePage kCodePages[];
extern const size_t kCodePageCount;

// The tables of a page, or null when it has none. 51936 and 38598 have those of 936 and 28598. The
// Unicode pages, 50220 to 50225 and 52936 have none of their own.
const CodePage* FindCodePage(uint32_t number);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_CODE_PAGE_H_

// Copyright (c) 2026 the mimora developers.
#include "codec/charset/table_coder.h"

#include <algorithm>

#include "codec/charset/ascii_run.h"

namespace mimora {
namespace {

// Below are neither the marks of the tables nor the characters for private use.
constexpr char16_t kFirstSpecial = 0xE000;
constexpr char16_t kLastPrivate = 0xF8FF;

}  // namespace

char16_t TableDecoder::FromPair(uint8_t lead, char trail) {
  const char16_t character = page_.DecodePair(lead, static_cast<uint8_t>(trail));
  if (character != CodePage::kNone) return character;
  invalid_ = true;
  return page_.undefined;
}

// The characters for private use stand for bytes that have no character; for pairs they are the
// user's own.
char16_t TableDecoder::CheckSingle(char16_t character) {
  if (character == CodePage::kNone || character <= kLastPrivate) invalid_ = true;
  return character == CodePage::kNone ? page_.undefined : character;
}

// A block of single bytes, if all of them are plain characters.
bool TableDecoder::DecodeBlock(const char* p, char16_t* wide) const {
  bool plain = true;
  for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) {
    wide[i] = page_.DecodeByte(static_cast<uint8_t>(p[i]));
    plain &= wide[i] < kFirstSpecial;
  }
  return plain;
}

// A stretch that is not all ASCII.
char16_t* TableDecoder::DecodeSome(const char*& p, const char* end, char16_t* wide) {
  if (page_.pairs == nullptr && end - p >= kAsciiBlock && DecodeBlock(p, wide)) {
    p += kAsciiBlock;
    return wide + kAsciiBlock;
  }
  for (const char* stop = p + std::min(end - p, kAsciiBlock); p < stop;) {
    const auto byte = static_cast<uint8_t>(*p++);
    const uint16_t character = page_.DecodeByte(byte);
    if (character < kFirstSpecial) {
      *wide++ = character;
    } else if (character != CodePage::kLead) {
      *wide++ = CheckSingle(character);
    } else if (p < end) {
      *wide++ = FromPair(byte, *p++);
    } else {
      lead_ = byte;
    }
  }
  return wide;
}

char16_t* TableDecoder::Decode(std::string_view bytes, char16_t* wide) {
  const char* p = bytes.data();
  const char* const end = p + bytes.size();
  if (lead_ != 0 && p < end) {
    *wide++ = FromPair(lead_, *p++);
    lead_ = 0;
  }
  while (p < end) {
    if (page_.has_ascii) CopyAsciiBlocks(p, end, wide);
    wide = DecodeSome(p, end, wide);
  }
  return wide;
}

char16_t* TableDecoder::Finish(char16_t* wide) {
  if (lead_ == 0) return wide;
  lead_ = 0;
  *wide++ = CheckSingle(CodePage::kNone);
  return wide;
}

TableEncoder::TableEncoder(const CodePage& page, EncodeOptions options)
    : page_(page),
      best_fit_(options.best_fit),
      default_char_(options.default_char != 0 ? options.default_char : page.default_char) {}

// A block of characters that are single bytes.
bool TableEncoder::EncodeBlock(const char16_t* p, char* bytes) const {
  uint16_t all = 0;
  for (ptrdiff_t i = 0; i < kAsciiBlock; ++i) {
    const uint16_t code = page_.EncodeUnit(p[i]);
    bytes[i] = static_cast<char>(code);
    all |= code;
  }
  return all < 0x100;
}

char* TableEncoder::EncodeSome(const char16_t*& p, const char16_t* end, char* bytes) {
  if (page_.pairs == nullptr && best_fit_ && end - p >= kAsciiBlock && EncodeBlock(p, bytes)) {
    p += kAsciiBlock;
    return bytes + kAsciiBlock;
  }
  for (const char16_t* stop = p + std::min(end - p, kAsciiBlock); p < stop; ++p) {
    uint16_t code = page_.EncodeUnit(*p);
    if (code == CodePage::kNone || (!best_fit_ && page_.DecodeCode(code) != *p)) {
      code = default_char_;
      used_default_ = true;
    }
    if (code > 0xFF) *bytes++ = static_cast<char>(code >> 8);
    *bytes++ = static_cast<char>(code);
  }
  return bytes;
}

char* TableEncoder::Encode(std::u16string_view wide, char* bytes) {
  const char16_t* p = wide.data();
  const char16_t* const end = p + wide.size();
  while (p < end) {
    if (page_.has_ascii) CopyAsciiBlocks(p, end, bytes);
    bytes = EncodeSome(p, end, bytes);
  }
  return bytes;
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "codec/charset/table_coder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace mimora::testing {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// In pieces of SIZE.
std::u16string Decoded(CharsetDecoder& decoder, std::string_view bytes, size_t size) {
  std::u16string wide(DecodedRoom(bytes.size()), u'\0');
  char16_t* end = wide.data();
  for (; !bytes.empty(); bytes.remove_prefix(std::min(size, bytes.size())))
    end = decoder.Decode(bytes.substr(0, size), end);
  end = decoder.Finish(end);
  wide.resize(static_cast<size_t>(end - wide.data()));
  return wide;
}

std::string Encoded(CharsetEncoder& encoder, std::u16string_view wide, size_t size) {
  std::string bytes(EncodedRoom(wide.size()), '\0');
  char* end = bytes.data();
  for (; !wide.empty(); wide.remove_prefix(std::min(size, wide.size())))
    end = encoder.Encode(wide.substr(0, size), end);
  end = encoder.Finish(end);
  bytes.resize(static_cast<size_t>(end - bytes.data()));
  return bytes;
}

struct DecodeCase {
  const char* name;
  uint32_t page;
  std::string_view bytes;
  std::u16string_view want;
  bool invalid;
};

constexpr DecodeCase kDecodeCases[] = {
    {"nothing", 1250, "", u"", false},
    {"long ASCII between letters", 1250, "\x8Ekrsbcdefghijklmnopqrstuvwxyz0123456789\x9E",
     u"Žkrsbcdefghijklmnopqrstuvwxyz0123456789ž", false},
    {"a byte without a letter is a control", 1252, "\x81", u"\u0081", false},
    {"a byte for private use", 1253, "a\xAA", u"a\uF8F9", true},
    {"a byte for private use among pairs", 932, "\xA0", u"\uF8F0", true},
    {"a pair for private use", 932, "\xF0\x40", u"\uE000", false},
    {"half-width katakana", 932, "\xB1\xDD", u"ｱﾝ", false},
    {"the one of two codes that is read only", 932, "\x81\xE6\x87\x9A\xFA\x5B", u"∵∵∵", false},
    {"a pair without a character", 932, "\x81\xADz", u"\u30FBz", true},
    {"a second byte that cannot be one", 932, "\x82\x20z", u"\u30FBz", true},
    {"a lead alone at the end", 932, "z\x82", u"z\u30FB", true},
    {"an undefined pair of other pages", 936, "\x81\xFFz", u"?z", true},
    {"ASCII under EBCDIC", 37, "\xC1\x25", u"A\n", false},
    {"seven bits", 20127, "\xC1\xBF\xFF", u"A?\x7F", false},
    {"no byte above seven bits", 20106, "{\x80", u"ä?", true},
    {"a right-to-left page of another number", 38598, "\xE0", u"א", false},
    {"Hangul by letters", 1361, "\x88\x61", u"가", false},
};

TEST(TableDecoder, DecodesAlikeInPiecesOfAnySize) {
  for (const DecodeCase& c : kDecodeCases) {
    for (const size_t size : {1u, 2u, 3u, 1000u}) {
      const auto decoder = MakeDecoder(c.page);
      EXPECT_EQ(Decoded(*decoder, c.bytes, size), c.want) << c.name;
      EXPECT_EQ(decoder->FoundInvalid(), c.invalid) << c.name;
    }
  }
}

struct EncodeCase {
  const char* name;
  uint32_t page;
  EncodeOptions options;
  std::u16string_view wide;
  std::string_view want;
  bool used_default;
};

constexpr EncodeOptions kExact = {.best_fit = false, .default_char = 0};
constexpr EncodeOptions kTwoBytes = {.best_fit = true, .default_char = 0x8145};

constexpr EncodeCase kEncodeCases[] = {
    {"long ASCII between letters",
     1250,
     {},
     u"Žkrsbcdefghijklmnopqrstuvwxyz0123456789ž",
     "\x8Ekrsbcdefghijklmnopqrstuvwxyz0123456789\x9E",
     false},
    {"a similar letter", 1250, {}, u"\u0100", "A", false},
    {"a similar letter is not wanted", 1250, kExact, u"\u0100\u0104", "?\xA5", true},
    {"no similar letter", 1252, {}, u"\u0416", "?", true},
    {"the page's own substitute", 37, {}, u"\u0416", "\x6F", true},
    {"a question mark is no substitute", 1252, {}, u"?", "?", false},
    {"a full-width question mark would be one", 870, {}, u"\uFF1F", "\x6F", true},
    {"a substitute of two bytes", 932, kTwoBytes, u"\u0E01", "\x81\x45", true},
    {"two for a surrogate pair", 932, {}, u"\U0001F600", "??", true},
    {"one for half of it", 1252, {}, u"\xDE00", "?", true},
    {"the code to be written of several", 932, kExact, u"∵≒纊￢",
     "\x81\xE6\x81\xE0\xFA\x5C\x81\xCA", false},
    {"a control for a byte without a letter", 1252, kExact, u"\u0081", "\x81", false},
    {"a similar sign of two bytes", 51932, {}, u"\u00A2", "\xA1\xF1", false},
    {"the similar sign is not wanted", 51932, kExact, u"\u00A2", "?", true},
};

TEST(TableEncoder, EncodesAlikeInPiecesOfAnySize) {
  for (const EncodeCase& c : kEncodeCases) {
    for (const size_t size : {1u, 2u, 1000u}) {
      const auto encoder = MakeEncoder(c.page, c.options);
      EXPECT_EQ(Encoded(*encoder, c.wide, size), c.want) << c.name;
      EXPECT_EQ(encoder->UsedDefault(), c.used_default) << c.name;
    }
  }
}

std::u16string DecodedOneByOne(const CodePage& page, std::string_view bytes) {
  std::u16string wide;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<uint8_t>(bytes[i]);
    uint16_t character = page.DecodeByte(byte);
    if (character == CodePage::kLead) {
      ++i;
      character = i < bytes.size() ? page.DecodePair(byte, static_cast<uint8_t>(bytes[i]))
                                   : CodePage::kNone;
    }
    wide += character == CodePage::kNone ? page.undefined : static_cast<char16_t>(character);
  }
  return wide;
}

std::string EncodedOneByOne(const CodePage& page, std::u16string_view wide) {
  std::string bytes;
  for (const char16_t unit : wide) {
    const uint16_t code = page.EncodeUnit(unit);
    const uint16_t written = code == CodePage::kNone ? page.default_char : code;
    if (written > 0xFF) bytes += static_cast<char>(written >> 8);
    bytes += static_cast<char>(written);
  }
  return bytes;
}

TEST(TableCoders, AgreeWithSimpleOnesOnAnyBytesOfEveryPage) {
  std::mt19937 random(1);
  for (size_t i = 0; i < kCodePageCount; ++i) {
    const CodePage& page = kCodePages[i];
    if (page.kind != CodePageKind::kSingle && page.kind != CodePageKind::kDouble) continue;
    for (const uint32_t ascii_of_8 : {0u, 7u, 8u}) {
      std::string bytes(300, '\0');
      for (char& byte : bytes)
        byte = static_cast<char>(random() & (random() % 8 < ascii_of_8 ? 0x7F : 0xFF));
      const size_t size = 1 + random() % 100;
      const std::u16string wide = Decoded(*MakeDecoder(page.number), bytes, size);
      ASSERT_EQ(wide, DecodedOneByOne(page, bytes)) << page.number;
      ASSERT_EQ(Encoded(*MakeEncoder(page.number), wide, size), EncodedOneByOne(page, wide))
          << page.number;
    }
  }
}

TEST(MakeCoder, KnowsNoOtherPages) {
  for (const uint32_t number : {0u, 3u, 12345u, 0xFFFFFFFFu}) {
    EXPECT_EQ(MakeDecoder(number), nullptr) << number;
    EXPECT_EQ(MakeEncoder(number), nullptr) << number;
  }
}

}  // namespace
}  // namespace mimora::testing

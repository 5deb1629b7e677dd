// Copyright (c) 2026 the mimora developers.
#include "codec/charset/conversion.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

constexpr int32_t kRoom = 64;

int32_t Size(std::u16string_view text) { return static_cast<int32_t>(text.size()); }
int32_t Size(std::string_view text) { return static_cast<int32_t>(text.size()); }

// Converts into every room there can be. Answers what the largest one got.
template <typename Unit, typename Convert>
std::basic_string<Unit> InAnyRoom(Convert convert) {
  constexpr auto kUntouched = static_cast<Unit>(0xEE);
  std::basic_string<Unit> want(kRoom, kUntouched);
  const int32_t count = convert(want.data(), kRoom);
  const uint32_t error = LastConversionError();
  want.resize(static_cast<size_t>(count));
  EXPECT_EQ(convert(nullptr, 0), count);
  EXPECT_EQ(LastConversionError(), error);
  for (int32_t room = 1; error == kConverted && room <= count; ++room) {
    std::basic_string<Unit> small(kRoom, kUntouched);
    EXPECT_EQ(convert(small.data(), room), room < count ? 0 : count);
    EXPECT_EQ(LastConversionError(), room < count ? kBufferTooSmall : kConverted);
    const size_t written = small.find_last_not_of(kUntouched) + 1;
    EXPECT_LE(written, static_cast<size_t>(room));
    EXPECT_EQ(small.substr(0, written), want.substr(0, written)) << room;
  }
  return want;
}

struct WideCase {
  const char* name;
  uint32_t page;
  uint32_t flags;
  std::string_view bytes;
  std::u16string_view want;
  ConversionError error = kConverted;
};

constexpr WideCase kWideCases[] = {
    {"an overlong form", 65001, 0, "\xC0\x80", u"\uFFFD\uFFFD"},
    {"a sequence cut off", 65001, 0, "\xE2\x82", u"\uFFFD"},
    {"a surrogate in UTF-8", 65001, 0, "\xED\xA0\x80", u"\uFFFD\uFFFD"},
    {"beyond Unicode", 65001, 0, "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
    {"a pair in UTF-16 is never cut", 65001, 0, "\xF0\x9F\x98\x80z", u"\U0001F600z"},
    {"broken UTF-8 is invalid", 65001, kFailOnInvalid, "a\xE2\x82", u"", kNoTranslation},
    {"no other flag for UTF-8", 65001, kPrecomposed, "a", u"", kInvalidFlags},
    {"no flag with escapes", 50220, kFailOnInvalid, "a", u"", kInvalidFlags},
    {"a control for a byte without a letter", 1252, 0, "a\x81", u"a\u0081"},
    {"that is not invalid", 1252, kFailOnInvalid, "a\x81", u"a\u0081"},
    {"a byte for private use", 1253, 0, "\xAA", u"\uF8F9"},
    {"that is invalid", 1253, kFailOnInvalid, "\xAA", u"", kNoTranslation},
    {"a byte for private use among pairs", 932, 0, "\xA0", u"\uF8F0"},
    {"that is invalid too", 932, kFailOnInvalid, "\xA0", u"", kNoTranslation},
    {"a pair for private use is not", 932, kFailOnInvalid, "\xF0\x40", u"\uE000"},
    {"lone lead, bad trail, unassigned pair", 932, 0, "\x82\x20\x81\xAD\x82",
     u"\u30FB\u30FB\u30FB"},
    {"a lone lead is invalid", 932, kFailOnInvalid, "a\x82", u"", kNoTranslation},
    {"a bad trail is invalid", 932, kFailOnInvalid, "\x82\x20", u"", kNoTranslation},
    {"an unassigned pair is invalid", 932, kFailOnInvalid, "\x81\xAD", u"", kNoTranslation},
    {"seven bits", 20127, 0, "\xC1\xBF", u"A?"},
    {"those are not invalid", 20127, kFailOnInvalid, "\xC1\xBF", u"A?"},
    {"letters in one piece", 1250, kPrecomposed, "\xE8\x9A", u"čš"},
    {"letters and marks", 1250, kDecompose, "\xE8z\xD6", u"c\u030CzO\u0308"},
    {"a letter with two marks", 1253, kDecompose, "\xC0", u"\u03B9\u0308\u0301"},
    {"letters not both ways", 1250, kPrecomposed | kDecompose, "a", u"", kInvalidFlags},
    {"controls on a screen", 437, kGlyphsForControls, "\x01\x7F\x1F\x82"sv, u"☺⌂▼é"},
    {"controls on no screen", 1252, kGlyphsForControls, "\x01\x7F", u"\u0001\u007F"},
    {"a zero is a character", 1252, 0, "a\0b"sv, u"a\0b"sv},
    {"an unknown flag", 1252, 0x10, "a", u"", kInvalidFlags},
    {"nothing", 1252, 0, "", u"", kInvalidParameter},
    {"an unknown page", 12345, 0, "a", u"", kInvalidParameter},
    {"an unknown page goes before an unknown flag", 12345, 0x10, "a", u"", kInvalidParameter},
    {"no default page", 0, 0, "a", u"", kInvalidParameter},
    {"UTF-16 is no page", 1200, 0, "ab", u"", kInvalidParameter},
    {"nor is the swapped one", 1201, 0, "ab", u"", kInvalidParameter},
};

TEST(MultiByteToWide, AnswersAndFailsAsCallersExpect) {
  for (const WideCase& c : kWideCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(InAnyRoom<char16_t>([&](char16_t* wide, int32_t room) {
                return MultiByteToWide(c.page, c.flags, c.bytes.data(), Size(c.bytes), wide, room);
              }),
              c.want);
    MultiByteToWide(c.page, c.flags, c.bytes.data(), Size(c.bytes), nullptr, 0);
    EXPECT_EQ(LastConversionError(), c.error);
  }
}

struct ByteCase {
  const char* name;
  uint32_t page;
  uint32_t flags;
  std::u16string_view wide;
  const char* default_char;
  std::string_view want;
  int32_t used;
  ConversionError error = kConverted;
};

// Pages that take no used flag have -1 there.
constexpr ByteCase kByteCases[] = {
    {"a lone surrogate", 65001, 0, u"\xD800", nullptr, "\xEF\xBF\xBD", -1},
    {"that is invalid", 65001, kFailOnLoneSurrogate, u"\xD800", nullptr, "", -1, kNoTranslation},
    {"no other flag for UTF-8", 65001, kCompose, u"a", nullptr, "", -1, kInvalidFlags},
    {"no default for UTF-8", 65001, 0, u"a", "#", "", -1, kInvalidParameter},
    {"nor with escapes", 50220, 0, u"a", "#", "", -1, kInvalidParameter},
    {"a similar letter", 1250, 0, u"\u0100", nullptr, "A", 0},
    {"similar letters are not wanted", 1250, kNoSimilar, u"\u0100č", nullptr, "?\xE8", 1},
    {"no letter", 1250, 0, u"\u0416z", nullptr, "?z", 1},
    {"the caller's default", 1250, 0, u"\u0416z", "#", "#z", 1},
    {"only a byte of it", 1250, 0, u"\u0416z", "#-", "#z", 1},
    {"an empty one", 1250, 0, u"\u0416z", "", "?z", 1},
    {"a default of two bytes", 932, 0, u"a\u0E01", "\x81\x45", "a\x81\x45", 1},
    {"half of one", 932, 0, u"\u0E01", "\x81", "\x81", 1},
    {"the default of EBCDIC", 37, 0, u"a\u0E01", nullptr, "\x81\x6F", 1},
    {"a surrogate pair", 1252, 0, u"\U0001F600", nullptr, "??", 1},
    {"a surrogate pair among pairs", 932, 0, u"\U0001F600", "\x81\x45", "\x81\x45\x81\x45", 1},
    {"pairs are not cut", 932, 0, u"日本 go", nullptr, "\x93\xFA\x96\x7B go", 0},
    {"a mark alone becomes a similar character", 1252, 0, u"e\u0301", nullptr, "e\xB4", 0},
    {"composed", 1252, kCompose, u"e\u0301x", nullptr, "\xE9x", 0},
    {"composed at the end", 1252, kCompose, u"xe\u0301", nullptr, "x\xE9", 0},
    {"composed twice", 1253, kCompose, u"\u03B9\u0308\u0301", nullptr, "\xC0", 0},
    {"composed kana", 932, kCompose, u"か\u3099", nullptr, "\x82\xAA", 0},
    {"as far as the page goes", 1258, kCompose, u"a\u0302\u0301", nullptr, "\xE2\xEC", 0},
    {"composed as a similar letter", 1252, kCompose, u"a\u0304", nullptr, "a", 0},
    {"that is not wanted", 1252, kCompose | kNoSimilar, u"a\u0304", nullptr, "a?", 1},
    {"an exception, separate", 1252, kCompose | kSeparateMarks, u"b\u0301.", nullptr, "b\xB4.", 0},
    {"an exception without its mark", 1252, kCompose | kDiscardMarks, u"b\u0301\u0302.", nullptr,
     "b.", 0},
    {"an exception as default", 1252, kCompose | kDefaultForMarks, u"b\u0301\u0302.", "#", "#.", 1},
    {"no exception", 1252, kCompose | kDefaultForMarks | kDiscardMarks, u"e\u0301.", "#", "\xE9.",
     0},
    {"exceptions count with composing only", 1252, kDefaultForMarks, u"b\u0301", "#", "b\xB4", 0},
    {"a zero is a character", 1252, 0, u"a\0b"sv, nullptr, "a\0b"sv, 0},
    {"an unknown flag", 1252, 0x800, u"a", nullptr, "", -1, kInvalidFlags},
    {"a flag of UTF-8", 1252, kFailOnLoneSurrogate, u"a", nullptr, "", -1, kInvalidFlags},
    {"nothing", 1252, 0, u"", nullptr, "", -1, kInvalidParameter},
    {"an unknown page", 12345, 0x800, u"a", nullptr, "", -1, kInvalidParameter},
    {"UTF-16 is no page", 1200, 0, u"a", nullptr, "", -1, kInvalidParameter},
    {"nor is the swapped one", 1201, 0, u"a", nullptr, "", -1, kInvalidParameter},
};

TEST(WideToMultiByte, AnswersAndFailsAsCallersExpect) {
  for (const ByteCase& c : kByteCases) {
    SCOPED_TRACE(c.name);
    int32_t used = -1;
    EXPECT_EQ(InAnyRoom<char>([&](char* bytes, int32_t room) {
                return WideToMultiByte(c.page, c.flags, c.wide.data(), Size(c.wide), bytes, room,
                                       c.default_char, nullptr);
              }),
              c.want);
    WideToMultiByte(c.page, c.flags, c.wide.data(), Size(c.wide), nullptr, 0, c.default_char,
                    c.used < 0 ? nullptr : &used);
    EXPECT_EQ(used, c.used);
    EXPECT_EQ(LastConversionError(), c.error);
  }
}

TEST(WideToMultiByte, WritesWholeCharactersOfWhatDoesNotFit) {
  char bytes[4] = "***";
  EXPECT_EQ(WideToMultiByte(932, 0, u"日本", 2, bytes, 3, nullptr, nullptr), 0);
  EXPECT_EQ(LastConversionError(), kBufferTooSmall);
  EXPECT_STREQ(bytes, "\x93\xFA*");
}

TEST(Conversions, TakeTextsUpToTheirTerminator) {
  char16_t wide[8];
  EXPECT_EQ(MultiByteToWide(1250, 0, "a\xE8", -1, wide, 8), 3);
  EXPECT_EQ(std::u16string_view(wide), u"ač");
  char bytes[8];
  EXPECT_EQ(WideToMultiByte(1250, 0, u"ač", -1, bytes, 8, nullptr, nullptr), 3);
  EXPECT_STREQ(bytes, "a\xE8");
  EXPECT_EQ(WideToMultiByte(1250, 0, u"", -1, bytes, 0, nullptr, nullptr), 1);
}

TEST(Conversions, RefusePlacesThatAreNone) {
  char16_t wide[8] = u"abc";
  char bytes[8] = "abc";
  const auto* same_bytes = reinterpret_cast<const char*>(wide);
  EXPECT_EQ(MultiByteToWide(1250, 0, nullptr, 3, wide, 8), 0);
  EXPECT_EQ(MultiByteToWide(1250, 0, bytes, 3, nullptr, 8), 0);
  EXPECT_EQ(MultiByteToWide(1250, 0, bytes, 3, wide, -1), 0);
  EXPECT_EQ(MultiByteToWide(1250, 0, same_bytes, 3, wide, 8), 0);
  EXPECT_EQ(LastConversionError(), kInvalidParameter);
  EXPECT_EQ(WideToMultiByte(1250, 0, nullptr, -1, bytes, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideToMultiByte(1250, 0, wide, 3, nullptr, 8, nullptr, nullptr), 0);
  EXPECT_EQ(WideToMultiByte(1250, 0, wide, 3, bytes, -8, nullptr, nullptr), 0);
  EXPECT_EQ(LastConversionError(), kInvalidParameter);
}

// Kana with voiced marks, so many that they lie on every bound of a piece.
TEST(Conversions, TakeTextsOfAnyLength) {
  std::u16string composed, apart;
  std::string bytes;
  for (int i = 0; i < 3000; ++i) {
    const bool voiced = i % 7 < 4;
    composed += voiced ? u"が" : u"z";
    apart += voiced ? u"か\u3099" : u"z";
    bytes += voiced ? "\x82\xAA" : "z";
  }
  std::string to(bytes.size(), '\0');
  std::u16string wide(apart.size(), u'\0');
  EXPECT_EQ(WideToMultiByte(932, kCompose, apart.data(), Size(apart), to.data(), Size(to), nullptr,
                            nullptr),
            Size(bytes));
  EXPECT_EQ(to, bytes);
  EXPECT_EQ(MultiByteToWide(932, kDecompose, bytes.data(), Size(bytes), wide.data(), Size(wide)),
            Size(apart));
  EXPECT_EQ(wide, apart);
  EXPECT_EQ(MultiByteToWide(932, 0, bytes.data(), Size(bytes), wide.data(), Size(wide)),
            Size(composed));
  EXPECT_EQ(wide.substr(0, composed.size()), composed);
}

TEST(Conversions, KeepTheErrorsOfThreadsApart) {
  EXPECT_EQ(MultiByteToWide(12345, 0, "a", 1, nullptr, 0), 0);
  std::thread([] { EXPECT_EQ(LastConversionError(), kConverted); }).join();
  EXPECT_EQ(LastConversionError(), kInvalidParameter);
  EXPECT_EQ(MultiByteToWide(1250, 0, "a", 1, nullptr, 0), 1);
  EXPECT_EQ(LastConversionError(), kConverted);
}

}  // namespace
}  // namespace mimora::testing

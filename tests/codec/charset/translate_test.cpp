// Copyright (c) 2026 the mimora developers.
#include "codec/charset/translate.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "codec/charset_table.h"
#include "support/coders.h"

namespace mimora::testing {
namespace {

struct Case {
  const char* name;
  const char* from;
  const char* to;
  std::string_view text;
  std::string_view want;
};

using namespace std::string_view_literals;

constexpr Case kCases[] = {
    {"letters", "iso-8859-2", "utf-8", "a\xB9z", "a\xC5\xA1z"},
    {"and back", "utf-8", "windows-1250", "a\xC5\xA1z", "a\x9Az"},
    {"what has no place", "utf-8", "iso-8859-2", "\xE6\xBC\xA2.", "?."},
    {"what is similar", "utf-8", "iso-8859-2", "\xE2\x80\x99", "'"},
    {"what has no meaning", "shift_jis", "utf-8", "\x81\x01.", "\xE3\x83\xBB."},
    {"half a character at the end", "shift_jis", "utf-8", "a\x81", "a\xE3\x83\xBB"},
    {"broken UTF-8", "utf-8", "utf-8", "\xC0\x80|\xE2\x82|\xED\xA0\x80|\xF4\x90\x80\x80",
     "\xEF\xBF\xBD\xEF\xBF\xBD|\xEF\xBF\xBD|\xEF\xBF\xBD\xEF\xBF\xBD|"
     "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"beyond the BMP", "utf-8", "utf-16", "\xF0\x9F\x98\x80", "\xFF\xFE\x3D\xD8\x00\xDE"sv},
    {"half a pair", "utf-16", "utf-8", "\x3D\xD8z\0\x00\xDE"sv, "\xEF\xBF\xBDz\xEF\xBF\xBD"},
    {"little-endian by default", "utf-16", "utf-8", "a\0"sv, "a"},
    {"little-endian by its mark", "unicodeFFFE", "utf-8",
     "\xFF\xFE"
     "a\0"sv,
     "a"},
    {"big-endian by its mark", "utf-16", "utf-8", "\xFE\xFF\0a"sv, "a"},
    {"big-endian by its name", "unicodeFFFE", "utf-8", "\0a"sv, "a"},
    {"only the first mark is one", "utf-16", "utf-8", "\xFF\xFE\xFF\xFE"sv, "\xEF\xBB\xBF"},
    {"half a unit", "utf-16", "utf-8", "a\0b"sv, "a\xEF\xBF\xBD"},
    {"a mark in UTF-8", "utf-8", "iso-8859-2",
     "\xEF\xBB\xBF"
     "a",
     "a"},
    {"shift states end with the text", "utf-8", "iso-2022-jp", "\xE3\x81\x82", "\x1B$B$\"\x1B(B"},
    {"nothing", "utf-8", "utf-16", "", ""},
};

TEST(TranslateStream, TranslatesAlikeFromEverySource) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&c](Minstream& in) {
      Moutstream out(MemorySink{});
      EXPECT_EQ(TranslateStream(in, out, LookupCodePage(c.from), LookupCodePage(c.to)), 0);
      EXPECT_EQ(TextOf(out), c.want);
    });
  }
  ExpectErrorsToBeReportedAndKept(
      [](Minstream& in, Moutstream& out) {
        return TranslateStream(in, out, kUtf8Page, LookupCodePage("iso-2022-jp"));
      },
      "a\xE3\x81\x82z");
}

// Blocks, single characters and cut ones take different ways through the coders.
TEST(TranslateStream, TranslatesAlikeInPiecesOfAnySize) {
  constexpr std::string_view kPieces[] = {"a",
                                          "sixteen or more of ASCII",
                                          "\xC5\xA1",
                                          "\xE6\xBC\xA2",
                                          "\xED\x9F\xBF",
                                          "\xEE\x80\x80",
                                          "\xF0\x9F\x98\x80",
                                          "\xE2\x82",
                                          "\xF0\x9F",
                                          "\xC0",
                                          "\xFF"};
  std::mt19937 random(2);
  for (int round = 0; round < 300; ++round) {
    const std::string text = RandomText(random, 1 + random() % 200, kPieces);
    for (const uint32_t page : {kUtf8Page, kUtf16Page, uint32_t{1250}, uint32_t{932}}) {
      const std::string want = TranslateText(text, kUtf8Page, page);
      Translator translator(kUtf8Page, page, 40);
      std::string got;
      for (std::string_view rest = text; !rest.empty();) {
        const std::string_view piece = rest.substr(0, 1 + random() % 40);
        got += translator.Translate(piece);
        rest.remove_prefix(piece.size());
      }
      got += translator.Finish();
      ASSERT_EQ(got, want) << page;
    }
  }
}

TEST(PageOfCharset, KnowsTheNamesOfRealMail) {
  const struct {
    const char* charset;
    uint32_t page;
  } cases[] = {{"UTF8", 65001},
               {"latin1", 28591},
               {"ISO_8859-1:1987", 28591},
               {"iso8859-2", 28592},
               {"koi8_r", 20866},
               {"cp1251", 1251},
               {"IBM-852", 852},
               {"windows-936", 936},
               {"GBK", 936},
               {"ms_kanji", 932},
               {"ansi_x3.4-1968", 1250},
               {"cp99999", 0},
               {"cp", 0},
               {"cp123456789", 0},
               {"iso8859-99", 0},
               {"utf-8//IGNORE", 0},
               {"", 0}};
  for (const auto& c : cases) EXPECT_EQ(PageOfCharset(c.charset), c.page) << c.charset;
  EXPECT_TRUE(SameCodePage("windows-1250", "us-ascii"));
  EXPECT_FALSE(SameCodePage("x-none", "x-none"));
  EXPECT_TRUE(IsUnicodeCharset("UTF-16"));
  EXPECT_FALSE(IsUnicodeCharset("unicodeFFFE"));
}

TEST(PageOfCharset, FindsOnlyPagesThatCanBeConverted) {
  for (uint32_t number = 0; number <= 70'000; ++number) {
    const uint32_t page = PageOfCharset("cp" + std::to_string(number));
    if (page == 0) continue;
    EXPECT_NE(MakeDecoder(page), nullptr) << page;
    EXPECT_NE(MakeEncoder(page), nullptr) << page;
  }
}

}  // namespace
}  // namespace mimora::testing

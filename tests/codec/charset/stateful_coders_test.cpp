// Copyright (c) 2026 the mimora developers.
//
// The character sets in which the meaning of a byte depends on those before it.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

// The way that a text takes: from bytes, to bytes, or both.
enum Way { kDecode, kEncode, kBoth };

struct CoderCase {
  const char* name;
  uint32_t page;
  Way way;
  std::string_view bytes;
  std::u16string_view wide;
  bool substituted = false;
};

constexpr CoderCase kCases[] = {
    // UTF-7.
    {"all that is direct", 65000, kBoth, "azAZ09 '(),-./:?\t\r\n", u"azAZ09 '(),-./:?\t\r\n"},
    {"the rest of ASCII is read as it is", 65000, kDecode, "!\"#~\\=\x7F\0"sv, u"!\"#~\\=\x7F\0"sv},
    {"a run", 65000, kBoth, "A+ImIDkQ-.", u"A\u2262\u0391."},
    {"a run without its hyphen", 65000, kDecode, "A+ImIDkQ.+AOk", u"A\u2262\u0391.\u00E9"},
    {"a hyphen behind a run", 65000, kBoth, "-+Jjo--+-", u"-\u263A-+"},
    {"a plus sign in a run and a pair of surrogates", 65000, kBoth, "+ZeVnLIqeAOkAKwDp2D3eAA-",
     u"日本語é+é😀"},
    {"plus signs that begin nothing", 65000, kDecode, "1+1=2 C++ +AB- +", u"1+1=2 C++ +AB- +"},
    {"bits that are left", 65000, kDecode, "+AOl-+AOkAB.", u"é\uFFFDé\uFFFD.", true},
    {"zero bits that are left", 65000, kDecode, "+AOkAA-.", u"é."},
    {"bytes above seven bits", 65000, kDecode, "\xE9+AOk\xE9-", u"\uFFFDé\uFFFD-", true},

    // ISO-2022-JP.
    {"lines begin in ASCII", 50220, kBoth, "a\x1B$B$\"\x1B(B\r\n\x1B$BF|\x1B(Bb", u"aあ\r\n日b"},
    {"the older sets", 50221, kDecode, "\x1B$@$\"\x1B(H\\\x1B$(DF|\x1B(I1", u"あ\\日ｱ"},
    {"the announcement of a revision", 50222, kDecode, "\x1B&@\x1B$B$\"\x1B&@$\"", u"ああ"},
    {"half-width kana of all kinds", 50220, kDecode,
     "\xB1\x1B(I1\xB1_\0162\017\x1B(B\0163\017a\x1B$B*1", u"ｱｱｱﾟｲｳaｱ"},
    {"a shift returns to the set before", 50222, kDecode, "\x1B$B$\"\0161\017$\"", u"あｱあ"},
    {"a shift returns to the set of a sequence in between", 50222, kDecode,
     "\x1B$B\0161\x1B(B1\0171", u"ｱ11"},
    {"half-width kana become full-width", 50220, kEncode,
     "\x1B$B!#!V!W!\"!&%r%!%#%%%'%)%c%e%g%C!<%\"%$%&%(%*%+%-%/%1%3%5%7%9%;%=%?%A%D%F%H%J%K%L%M%N%O"
     "%R%U%X%[%^%_%`%a%b%d%f%h%i%j%k%l%m%o%s!+!,\x1B(B",
     u"｡｢｣､･ｦｧｨｩｪｫｬｭｮｯｰｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜﾝﾞﾟ"},
    {"half-width kana by a sequence", 50221, kBoth, "a\x1B(I1\x1B$B$\"\x1B(I6^\x1B(B", u"aｱあｶﾞ"},
    {"half-width kana by a shift", 50222, kBoth,
     "\0161\017\x1B$B$\"\0166^\017$\"\0161\017\x1B(Ba \0161\017", u"ｱあｶﾞあｱa ｱ"},
    {"the rows of the makers", 50220, kBoth, "\x1B$B-!|q|||}y!|n\"L\x1B(B", u"①ⅰ￤＇纊黑￢"},
    {"what has no code of seven bits", 50220, kEncode, "?\\???\x1B$B$\"\x1B(B?",
     u"\uE000¥\u00A0😀あ\uE000", true},
    {"line ends and blanks among pairs", 50220, kDecode, "\x1B$B$\"\r\n $\"\t\x7F$\"",
     u"あ\r\n あ\t\x7Fあ"},
    {"a line end inside a pair", 50220, kDecode, "\x1B$B$\r\n$\"", u"・\r\nあ", true},
    {"a sequence inside a pair", 50220, kDecode, "\x1B$B$\x1B(Ba", u"・a", true},
    {"half a pair at the end", 50220, kDecode, "\x1B$B$\"$", u"あ・", true},
    {"pairs without a character", 50220, kDecode, "\x1B$B)!*`$\xB1$\"", u"・・・あ", true},
    {"bytes above seven bits", 50220, kDecode, "\x80\xE0\x1B$B\xB1$\"\x1B(I\xFF`1",
     u"・・・あ・・ｱ", true},
    {"unknown sequences are text", 50220, kDecode, "\x1B$A\x1B(K\x1B[m\x1B\x1B(\r\n\x1B$\xB1",
     u"\x1B$A\x1B(K\x1B[m\x1B\x1B(\r\n\x1B$ｱ"},
    {"an unknown sequence among pairs", 50220, kDecode, "\x1B$B$\"\x1B(K$\"", u"あ\x1B(Kあ"},
    {"a sequence that the text ends", 50220, kDecode, "\x1B$B$\"\x1B$(", u"あ\x1B$("},

    // ISO-2022-KR.
    {"the header comes before the first shift", 50225, kBoth,
     "a\x1B$)C\016GQ1[\017 b\r\n\0160!0\"\017", u"a한글 b\r\n가각"},
    {"no header, or in the middle of pairs", 50225, kDecode, "\016GQ\x1B$)C1[\017", u"한글"},
    {"pairs of the larger page", 50225, kEncode, "?", u"갂", true},
    {"pairs with high bits", 50225, kDecode, "\016\xB0\xA1\x81\x41\xB0!", u"가\uACB5가"},
    {"white space keeps its meaning among pairs", 50225, kDecode, "\016GQ \t\r\n1[",
     u"한 \t\r\n글"},
    {"what is no pair", 50225, kDecode, "\xB0\016G\017G\016!\x7Fz", u"??G??", true},
    {"unknown sequences", 50225, kDecode, "\x1B$)A\x1B$B\x1B", u"\x1B$)A\x1B$B\x1B"},

    // HZ.
    {"pairs between tildes", 52936, kBoth, "a~~~{VPND~}~~\r\n~{VP~}", u"a~中文~\r\n中"},
    {"line ends do not end the pairs, or are joined", 52936, kDecode, "~{VP\r\n ND~\nVP~}~\na~\r\n",
     u"中\r\n 文中a~\r\n"},
    {"a tilde in front of anything else", 52936, kDecode, "~a~~{~{~VP~~}~}~", u"~a~{~中~~"},
    {"pairs that end in a tilde", 52936, kBoth, "~{!~~}", u"〓"},
    {"pairs with high bits", 52936, kDecode, "~{\xD6\xD0V\xD0", u"中中"},
    {"pairs outside the set", 52936, kEncode, "???", u"丂€\uE234", true},
    {"what is no pair", 52936, kDecode, "\xD6~{x!V\n~}\x80)", u"???\n?)", true},

    // EBCDIC.
    {"bytes and pairs", 50930, kBoth, "\x62\016\x43\x81\x45\x5C\017\x40\x63", u"aア中 b"},
    {"a byte goes before a pair", 50931, kBoth, "\x81\016\x44\x81\017\x82", u"aあb"},
    {"no code", 50937, kEncode, "\x6F\016\x4C\x84\017\x6F\x6F", u"\u0E01中😀", true},
    {"shift codes are obeyed wherever they are", 50930, kDecode,
     "\017\016\016\x45\x5C\x45\017\x62\016\x45\016\x45\x5C\016", u"中?a?中", true},
    {"zeros are halves of pairs", 50930, kDecode, "\016\0\x45\x45\x5C\0"sv, u"?中?", true},

    // ISCII.
    {"letters and ASCII", 57002, kBoth, "\xC6\xCC\xD7\xE8\xC2\xE1 a", u"नमस्ते a"},
    {"letters with nukta", 57002, kBoth, "\xB3\xE9\xB3\xA1\xE9", u"\u0958\u0915\u0950"},
    {"rare signs", 57002, kBoth, "\xF0\xB8\xF0\xBF", u"\u0952\u0970"},
    {"joiners behind a virama", 57002, kBoth, "\xB3\xE8\xE8\xB3\xE8\xE9\xB3", u"क्\u200Cक्\u200Dक"},
    {"joiners behind anything else", 57002, kEncode, "?\xB3?", u"\u200Cक\u200D", true},
    {"other scripts", 57002, kBoth, "\xA4\xEF\x43\xA4\xEF\x42\xA4\xEF\x4B\xA4\xEF\x42", u"अঅअਅ"},
    {"Assamese is written as Bengali", 57006, kBoth, "\xEF\x43\xA4 \xEF\x46", u"অ "},
    {"the way back to the page's own script", 57003, kDecode,
     "\xA4\xEF\x42\xA4\xEF\x40\xA4\xEF\x42\xEF\x41\xA4", u"অअঅঅ"},
    {"no script", 57002, kDecode, "\xEF\x4C\xEF\xEF\x43\xA4\xEF", u"?L?অ?", true},
    {"signs that there are not", 57002, kDecode, "\xF0\xB3\xE9\xA0\xF0", u"?\u0958??", true},
    {"signs of another page", 57003, kDecode, "\xF0\xB8", u"?\u099A", true},
    {"a danda twice has no code", 57002, kEncode, "\xEA?", u"।॥", true},
};

// Every piece gets exactly the room that it is promised, so that going beyond it is noticed.
template <typename Unit, typename Write>
void Append(std::basic_string<Unit>& text, size_t room, Write write) {
  std::vector<Unit> piece(room);
  const Unit* end = write(piece.data());
  ASSERT_LE(end - piece.data(), std::ssize(piece));
  text.append(static_cast<const Unit*>(piece.data()), end);
}

std::vector<char> Copied(std::string_view bytes) { return {bytes.begin(), bytes.end()}; }

// In pieces of SIZE, the first of which has FIRST.
std::u16string Decoded(CharsetDecoder& decoder, std::string_view bytes, size_t first, size_t size) {
  std::u16string wide;
  for (size_t at = 0; at < bytes.size();) {
    const std::vector<char> piece = Copied(bytes.substr(at, at == 0 ? first : size));
    Append(wide, DecodedRoom(piece.size()), [&](char16_t* out) {
      return decoder.Decode({piece.data(), piece.size()}, out);
    });
    at += piece.size();
  }
  Append(wide, DecodedRoom(0), [&](char16_t* out) { return decoder.Finish(out); });
  return wide;
}

std::string Encoded(CharsetEncoder& encoder, std::u16string_view wide, size_t first, size_t size) {
  std::string bytes;
  for (size_t at = 0; at < wide.size();) {
    const std::u16string_view piece = wide.substr(at, at == 0 ? first : size);
    Append(bytes, EncodedRoom(piece.size()), [&](char* out) { return encoder.Encode(piece, out); });
    at += piece.size();
  }
  Append(bytes, EncodedRoom(0), [&](char* out) { return encoder.Finish(out); });
  return bytes;
}

// Cut once at every place, then everywhere; one coder for all, which is as new after each.
TEST(StatefulCoders, CodeAlikeHoweverTheTextIsCut) {
  constexpr size_t kWhole = 1000;
  for (const CoderCase& c : kCases) {
    SCOPED_TRACE(c.name);
    if (c.way != kEncode) {
      const auto decoder = MakeDecoder(c.page);
      for (size_t cut = 1; cut <= c.bytes.size(); ++cut)
        EXPECT_EQ(Decoded(*decoder, c.bytes, cut, kWhole), c.wide) << "cut at " << cut;
      EXPECT_EQ(Decoded(*decoder, c.bytes, 1, 1), c.wide);
      EXPECT_EQ(decoder->FoundInvalid(), c.substituted);
    }
    if (c.way != kDecode) {
      const auto encoder = MakeEncoder(c.page);
      for (size_t cut = 1; cut <= c.wide.size(); ++cut)
        EXPECT_EQ(Encoded(*encoder, c.wide, cut, kWhole), c.bytes) << "cut at " << cut;
      EXPECT_EQ(Encoded(*encoder, c.wide, 1, 1), c.bytes);
      EXPECT_EQ(encoder->UsedDefault(), c.way == kEncode && c.substituted);
    }
  }
}

constexpr uint32_t kPages[] = {50220, 50221, 50222, 50225, 50930, 50931, 50933, 50935,
                               50937, 50939, 52936, 57002, 57003, 57004, 57005, 57006,
                               57007, 57008, 57009, 57010, 57011, 65000};

TEST(StatefulCoders, DecodeAnyBytesAlikeInAnyPieces) {
  constexpr std::string_view kPieces[] = {"\x1B$B", "\x1B(I", "\x1B(B", "\x1B$", "\x0E", "\x0F",
                                          "~{",     "~}",     "~",      "+",     "-",    "\xEF\x43",
                                          "\xE8",   "\xE9",   "\xF0",   "\r\n",  "$\"",  "\x45"};
  std::mt19937 random(1);
  for (const uint32_t page : kPages) {
    for (int i = 0; i < 300; ++i) {
      std::string bytes;
      for (int count = 30; count > 0; --count) {
        if (random() % 3 == 0) bytes += static_cast<char>(random());
        bytes += kPieces[random() % std::size(kPieces)];
      }
      const auto decoder = MakeDecoder(page);
      const std::u16string whole = Decoded(*decoder, bytes, bytes.size(), 1);
      ASSERT_EQ(Decoded(*decoder, bytes, 1 + random() % 20, 1 + random() % 4), whole) << page;
      const auto encoder = MakeEncoder(page);
      const std::string again = Encoded(*encoder, whole, whole.size(), 1);
      ASSERT_EQ(Encoded(*encoder, whole, 1 + random() % 20, 1 + random() % 4), again) << page;
    }
  }
}

constexpr char16_t kVirama = 0x4D;  // of each script of ISCII, in its block of 80

bool IsIndic(char16_t unit) { return unit >= 0x900 && unit < 0xD80; }
bool IsIscii(uint32_t page) { return page >= 57002 && page <= 57011; }

uint32_t TableOf(uint32_t page, char16_t unit) {
  if (page >= 50220 && page <= 50222) return 932;
  if (page == 50225) return 949;
  if (page == 52936) return 936;
  constexpr uint32_t kOfBlock[] = {57002, 57003, 57011, 57010, 57007, 57004, 57005, 57008, 57009};
  return IsIscii(page) && IsIndic(unit) ? kOfBlock[(unit - 0x900) / 0x80] : page;
}

// What becomes of a character by way of the table.
char16_t ThroughTable(uint32_t page, char16_t unit) {
  const CodePage* table = FindCodePage(TableOf(page, unit));
  if (table == nullptr) return unit;
  const uint16_t code = table->EncodeUnit(unit);
  return code < 0x100 ? table->DecodeByte(static_cast<uint8_t>(code))
                      : table->DecodePair(static_cast<uint8_t>(code >> 8),
                                          static_cast<uint8_t>(code & 0xFF));
}

// Characters that are shift codes themselves, or change meaning when they are doubled.
bool IsShift(uint32_t page, char16_t unit) {
  if (page < 50226) return unit == 0x0E || unit == 0x0F || unit == 0x1B;
  return IsIscii(page) && IsIndic(unit) && unit % 0x80 == kVirama;
}

// Page 50220 writes others for the half-width kana.
bool IsReplaced(uint32_t page, char16_t unit) {
  return page == 50220 && unit >= 0xFF61 && unit <= 0xFF9F;
}

TEST(StatefulCoders, ReadWhatTheyWriteForEveryCharacter) {
  for (const uint32_t page : kPages) {
    size_t count = 0;
    for (uint32_t c = 0; c < 0x10000; ++c) {
      const auto unit = static_cast<char16_t>(c);
      const auto encoder = MakeEncoder(page);
      const std::string bytes = Encoded(*encoder, std::u16string{unit, unit, u'a', unit}, 4, 1);
      if (encoder->UsedDefault() || IsShift(page, unit) || IsReplaced(page, unit)) continue;
      const auto decoder = MakeDecoder(page);
      const char16_t read = ThroughTable(page, unit);
      ASSERT_EQ(Decoded(*decoder, bytes, 1000, 1), (std::u16string{read, read, u'a', read}))
          << page << ", character " << c;
      ASSERT_FALSE(decoder->FoundInvalid()) << page << ", character " << c;
      ++count;
    }
    EXPECT_GT(count, 600u) << page;
  }
}

}  // namespace
}  // namespace mimora::testing

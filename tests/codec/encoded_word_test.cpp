// Copyright (c) 2026 the mimora developers.
#include "codec/encoded_word.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "support/coders.h"

namespace mimora::testing {
namespace {

struct DecodeCase {
  const char* name;
  const char* value;
  const char* want;
};

constexpr DecodeCase kDecodeCases[] = {
    {"nothing", "", ""},
    {"plain text", "a =b? c", "a =b? c"},
    {"folding goes", "a\r\n b\n\tc", "a b\tc"},
    {"base64", "=?utf-8?B?xaE=?=", "\xC5\xA1"},
    {"quoted", "=?iso-8859-2?q?a_=B9=3F?=", "a \xC5\xA1?"},
    {"a language", "=?us-ascii*en?Q?a?=", "a"},
    {"blanks between words go", "=?utf-8?Q?a?= \r\n =?utf-8?B?Yg==?= c", "ab c"},
    {"blanks around words stay", "x =?utf-8?Q?a?= y", "x a y"},
    {"words without a gap", "=?utf-8?Q?a?==?utf-8?Q?b?=", "ab"},
    {"a character cut between words", "=?UTF-8?Q?=C5?= =?utf-8?Q?=A1?=", "\xC5\xA1"},
    {"a group of four cut between words", "=?utf-8?B?xa?= =?utf-8?B?E=?=", "\xC5\xA1"},
    {"not between charsets", "=?utf-8?Q?=C5?= =?iso-8859-2?Q?=B9?=", "\xEF\xBF\xBD\xC5\xA1"},
    {"inside a quoted string", "\"=?utf-8?Q?a_b?=\" <x@y>", "\"a b\" <x@y>"},
    {"inside a word", "x=?utf-8?Q?a?=y", "xay"},
    {"blanks inside", "=?utf-8?Q?a b\r\n c?=", "a b c"},
    {"a question mark inside", "=?utf-8?Q?what?\?=", "what?"},
    {"shift states end with the word", "=?iso-2022-jp?B?GyRCJCI=?= =?iso-2022-jp?Q?b?=",
     "\xE3\x81\x82"
     "b"},
    {"a word of another name for its charset",
     "=?latin2?Q?=B9?= =?koi8_r?Q?=C1?=", "\xC5\xA1\xD0\xB0"},
    {"a zero", "=?utf-8?Q?a=00b?=", "ab"},
    {"line ends", "=?utf-8?Q?a=0D=0ABcc:_x?=", "a  Bcc: x"},
    {"an unknown charset", "=?x-none?Q?a?= b", "=?x-none?Q?a?= b"},
    {"beside one that is known", "=?x-none?Q?a?= =?utf-8?Q?b?=", "=?x-none?Q?a?= b"},
    {"an unknown encoding", "=?utf-8?X?a?=", "=?utf-8?X?a?="},
    {"never closed", "=?utf-8?Q?a", "=?utf-8?Q?a"},
    {"never closed, then another", "=?utf-8?Q?a =?utf-8?Q?b?=", "=?utf-8?Q?a b"},
    {"not even begun", "=?utf-8?Q", "=?utf-8?Q"},
    {"broken escapes stay", "=?utf-8?Q?=4_=x=?=", "=4 =x="},
    {"UTF-16 in base64", "=?utf-16be?B?AWE=?=", "\xC5\xA1"},
};

TEST(DecodeEncodedWords, TakesWordsAsMailHasThem) {
  for (const DecodeCase& c : kDecodeCases) {
    EXPECT_EQ(DecodeEncodedWords(c.value, ""), c.want) << c.name;
  }
  EXPECT_EQ(DecodeEncodedWords("\xB9 =?utf-8?Q?=C5=A1?=", "iso-8859-2"), "\xB9 \xB9");
  EXPECT_EQ(DecodeEncodedWords("=?utf-8?Q?=C5=A1?=", "utf-16"), "\xC5\xA1") << "it has zeros";
}

struct EncodeCase {
  const char* name;
  const char* value;
  const char* charset;
  const char* encoding;
  const char* want;
};

constexpr EncodeCase kEncodeCases[] = {
    {"plain ASCII", "a \"b\"\r\n c", "", "", "a \"b\"\r\n c"},
    {"UTF-8 by itself", "\xC5\xA1", "", "", "=?utf-8?B?xaE=?="},
    {"what is no UTF-8", "\xB9", "", "", "=?windows-1250?Q?=B9?="},
    {"an unknown charset", "\xB9", "x-none", "", "=?windows-1250?Q?=B9?="},
    {"the shorter one", "\xC5\xA1\xC5\xA1\xC5\xA1\xC5\xA1", "", "", "=?utf-8?B?xaHFocWhxaE=?="},
    {"the one asked for", "\xC5\xA1\xC5\xA1\xC5\xA1\xC5\xA1", "utf-8", "q",
     "=?utf-8?Q?=C5=A1=C5=A1=C5=A1=C5=A1?="},
    {"only words that need it", "a \xB9 <x@y>", "iso-8859-2", "Q", "a =?iso-8859-2?Q?=B9?= <x@y>"},
    {"neighbours with what is between them", "\xB9  \xB9", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?=B9__=B9?="},
    {"a quoted string is one word", "\"a \xB9\" <x@y>", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?=22a_=B9=22?= <x@y>"},
    {"escapes are no ASCII", "\x1B$B$\"\x1B(B", "iso-2022-jp", "B",
     "=?iso-2022-jp?B?GyRCJCIbKEI=?="},
    {"folding is done anew", "a\r\n \xB9\r\n \xB9\n.", "iso-8859-2", "Q",
     "a =?iso-8859-2?Q?=B9_=B9?= ."},
    {"a quotation mark in a quoted string", "\"a\\\" \xB9\" b", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?=22a=5C=22_=B9=22?= b"},
    {"an address stays one", "\xB9<x@y>", "iso-8859-2", "Q", "=?iso-8859-2?Q?=B9?= <x@y>"},
    {"what is glued in front", "a<\xB9>", "iso-8859-2", "Q", "=?iso-8859-2?Q?a=3C=B9=3E?="},
    {"all that is glued in front", "\xB9<<\xB9", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?=B9=3C=3C=B9?="},
    {"what looks like an encoded word", "=?x?= b \xB9", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?=3D=3Fx=3F=3D?= b =?iso-8859-2?Q?=B9?="},
    {"a control character", "a\x01 b \xB9", "iso-8859-2", "Q",
     "=?iso-8859-2?Q?a=01?= b =?iso-8859-2?Q?=B9?="},
    {"the charset by its proper name", "\xB9", "ISO8859-2:\r\nBcc: x", "Q", "=?iso-8859-2?Q?=B9?="},
    {"more than ASCII", "\xB9", "us-ascii", "Q", "=?windows-1250?Q?=B9?="},
    {"bytes without a meaning", "a\xEE z", "x-IA5", "Q", "a? z"},
};

TEST(EncodeWords, EncodesWhatIsNotAscii) {
  for (const EncodeCase& c : kEncodeCases) {
    EXPECT_EQ(EncodeWords(c.value, c.charset, c.encoding, 0), c.want) << c.name;
  }
}

// Minutes, if every word were looked at once for each word behind it.
TEST(EncodeWords, TakesTimeInProportionToTheText) {
  std::string text(500'000, 'a');
  for (int i = 0; i < 200'000; ++i) text += " \xC5\xA1";
  EXPECT_EQ(DecodeEncodedWords(EncodeWords(text, "", "", 0), ""), text);
}

TEST(EncodeWords, KeepsWordsAndLinesShortAndComesBack) {
  constexpr std::string_view kPieces[] = {
      "a",        "bc",           "long-word-in-ascii", " ",  " ",
      "\xC5\xA1", "\xE6\xBC\xA2", "\xF0\x9F\x98\x80",   "\"", "=?",
      "_"};
  constexpr size_t kColumn = 9;
  std::mt19937 random(1);
  for (int round = 0; round < 500; ++round) {
    const std::string text = RandomText(random, random() % 200, kPieces);
    const std::string value = EncodeWords(text, "", round % 2 == 0 ? "B" : "Q", kColumn);
    EXPECT_EQ(DecodeEncodedWords(value, ""), text) << value;
    std::istringstream lines(std::string(kColumn, ' ') + value);
    for (std::string line; std::getline(lines, line);) {
      const bool encoded = line.find("=?utf-8?") != std::string::npos;
      const size_t length = line.find_last_not_of(" \r") + 1;
      EXPECT_TRUE(!encoded || length <= 76) << line;
      for (size_t at = 0; (at = line.find("=?utf-8?", at)) != std::string::npos; ++at) {
        EXPECT_LE(line.find("?=", at + 10) + 2 - at, 75u) << line;
        const std::string word = line.substr(at, line.find("?=", at + 10) + 2 - at);
        EXPECT_EQ(DecodeEncodedWords(word, "").find("\xEF\xBF\xBD"), std::string::npos) << word;
      }
    }
  }
}

}  // namespace
}  // namespace mimora::testing

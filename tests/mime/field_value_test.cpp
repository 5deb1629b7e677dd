// Copyright (c) 2026 the mimora developers.
#include "mime/field_value.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "diag/limits.h"

namespace mimora {
namespace {

std::string TypeIn(const std::string& text) {
  std::string scratch;
  const auto type = FieldValue(text).Type(scratch);
  return type ? type->Full() : "";
}

TEST(FieldValue, GivesTheMainValueWithoutCommentsAndFolding) {
  const std::pair<const char*, const char*> cases[] = {
      {"base64", "base64"},
      {" 8bit\t (why not) ", "8bit"},
      {"(a (nested) one) 7bit ; x=y", "7bit"},
      {"attach\r\n ment", "attach ment"},
      {"base(c)64", "base64"},
      {"in(open", "in(open"},
      {"(open 7bit", "(open 7bit"},
      {"", ""},
  };
  for (const auto& [text, want] : cases) EXPECT_EQ(FieldValue(text).Main(), want) << text;
}

TEST(FieldValue, GivesParameters) {
  const struct {
    const char* name;
    const char* text;
    std::optional<std::string> want;  // of the parameter "p"
  } cases[] = {
      {"token", "t; p=abc", "abc"},
      {"case and blanks", "t ;\r\n P = abc ; q=1", "abc"},
      {"absent", "t; q=p", std::nullopt},
      {"without a value", "t; p; q=1", std::nullopt},
      {"empty", "t; p=", ""},
      {"first of two", "t; p=1; p=2", "1"},
      {"quoted", "t; p=\"a;b (c) \\\"d\\\\\"; q=1", "a;b (c) \"d\\"},
      {"path in quotes", "t; p=\"C:\\temp\\x.txt\"", "C:\\temp\\x.txt"},
      {"folded in quotes", "t; p=\"a\r\n b\"", "a b"},
      {"quotes never closed", "t; p=\"a; q=b", "a"},
      {"inches, not quotes", "t; r=5\"disk; p=1; q=\"x\"", "1"},
      {"quotes that are never closed in another one", "t; r=\"x; p=a", "a"},
      {"quotes behind a second equals sign", "t; r=http://x/?q=\"; p=1; q=\"x\"", "1"},
      {"quotes and a parenthesis in a word", "t; p=a=\"b(c\"", "a=\"b(c\""},
      {"a zero", "t; p*=''a%00b", "ab"},
      {"comment behind", "t; p=abc (a; b)", "abc"},
      {"comment glued on", "t; p=abc(x)", "abc"},
      {"comments around the name", "t; (x) p(a=b) (y)=1", "1"},
      {"comment in front of the value", "t; p=(x;) \"a\"", "a"},
      {"parentheses in a word", "t; p=photo(1).jpg", "photo(1).jpg"},
      {"parenthesis never closed", "t; p=a(b; q=1", "a(b"},
      {"blanks in a word", "t; p=a b.txt; q=1", "a b.txt"},
      {"semicolons in a row", "t;; p=1;", "1"},
      {"extended", "t; p*=iso-8859-1'en'caf%e9", "caf\xC3\xA9"},
      {"extended beats plain", "t; p=cafe; p*=utf-8''caf%C3%A9", "caf\xC3\xA9"},
      {"extended without a charset", "t; p*=''a%20b", "a b"},
      {"extended with an unknown charset", "t; p*=x-none''%E9", "\xE9"},
      {"extended with bad bytes", "t; p*=utf-8''a%FF.", "a\xEF\xBF\xBD."},
      {"broken percent signs", "t; p*=utf-8''100%;q=1", "100%"},
      {"continued", "t; p*1=b; p*0=\"a;\"; p*2=c", "a;bc"},
      {"continued and encoded", "t; p*0*=utf-8''%C3; p*1*=%A9; p*2=%41", "\xC3\xA9%41"},
      {"continued with a gap", "t; p*0=a; p*2=c", "a"},
      {"continued, counted from 1", "t; p*1=a; p*2=b", "ab"},
      {"a plain one beats one without its beginning", "t; p=a; p*1=b", "a"},
      {"whole and continued", "t; p*0=a; p*1=b; p*=''whole", "whole"},
      {"continued ten times",
       "t; p*10=k; p*0=a; p*1=b; p*2=c; p*3=d; p*4=e; p*5=f; p*6=g; p*7=h; p*8=i; p*9=j",
       "abcdefghijk"},
      {"not a piece", "t; p*x=1", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(FieldValue(c.text).Parameter("p"), c.want);
  }
}

// Most fields are read in one pass. A mark behind it or a blank in front of it leaves a field
// to the full analysis, which must find the same.
TEST(FieldValue, ReadsPlainFieldsAsAnyOthers) {
  constexpr const char* kPieces[] = {
      "p",  "q",   "P",   "*",    "=",  "=", "=\"", "\"", ";",    "; ",  ";", "\r\n ", " ",
      "\t", "a.b", "x-1", ";p=1", "\\", "(", ")",   "/",  "\xC3", "%20", "'", ",",     ";q=\"a\""};
  std::mt19937 random(1);
  for (int round = 0; round < 200000; ++round) {
    std::string text = "t";
    for (size_t left = random() % 12; left > 0; --left)
      text += kPieces[random() % std::size(kPieces)];
    for (const char* name : {"p", "q"}) {
      ASSERT_EQ(FieldValue(text).Parameter(name), FieldValue(text + ";z*=1").Parameter(name))
          << text;
    }
    ASSERT_EQ(TypeIn(text), TypeIn(" " + text)) << text;
  }
}

TEST(FieldValue, HasATypeOfMajorAndSub) {
  const std::pair<const char*, const char*> cases[] = {
      {"text/plain", "TEXT/PLAIN"},
      {" Text / HTML (x); a=b", "TEXT/HTML"},
      {"text(c)/(d)html(e)(f)", "TEXT/HTML"},
      {"multipart/mixed boundary=b", "MULTIPART/MIXED"},
      {"text", ""},
      {"text/", ""},
      {"/plain", ""},
      {"", ""},
  };
  for (const auto& [text, want] : cases) EXPECT_EQ(TypeIn(text), want) << text;
}

TEST(FieldValue, JoinsAsManyPiecesAsTheLimitSays) {
  for (const size_t pieces :
       {kMostParameterPieces - 1, kMostParameterPieces, kMostParameterPieces + 1}) {
    std::string text = "t";
    for (size_t i = 0; i < pieces; ++i) text += ";p*" + std::to_string(i) + "=x";
    EXPECT_EQ(FieldValue(text).Parameter("p")->size(), std::min(pieces, kMostParameterPieces));
  }
}

TEST(FieldValue, AFloodOfPiecesHidesNoneThatIsJoined) {
  std::string text = "t";
  for (size_t i = 0; i <= 5 * kMostParameterPieces; ++i)
    text += i % 2 == 0 ? ";p*9=x" : ";p*" + std::to_string(10 + i) + "=x";
  EXPECT_EQ(FieldValue(text + ";p*1=b;p*0=a").Parameter("p"), "ab");
}

// Whatever stands a hundred thousand times in a value behind as many blanks, it is read in one go.
TEST(FieldValue, TakesLinearTime) {
  for (const char* piece :
       {"(", ")", "\"", "\\", "; p*", "; p=1", "; p*1=a", "=", "a(\"(", "(a)"}) {
    SCOPED_TRACE(piece);
    std::string text = "t; p=" + std::string(100'000, ' ');
    for (int i = 0; i < 100'000; ++i) text += piece;
    const auto start = std::chrono::steady_clock::now();
    const FieldValue value(text);
    value.Main();
    value.Parameter("p");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  }
}

}  // namespace
}  // namespace mimora

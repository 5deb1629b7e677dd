// Copyright (c) 2026 the mimora developers.
#include "html/character_reference.h"

#include <gtest/gtest.h>

namespace mimora::testing {
namespace {

TEST(ReadCharacterReference, TakesWhatBelongsToIt) {
  constexpr struct {
    std::u16string_view markup;
    size_t length;
    std::u16string_view text;
  } kCases[] = {
      {u"&amp;lt;", 5, u"&"},
      {u"&eacute", 7, u"\xE9"},
      {u"&Eacute;", 8, u"\xC9"},
      {u"&notit;", 4, u"\xAC"},
      {u"&notin;", 7, u"\x2209"},
      {u"&notin", 4, u"\xAC"},
      {u"&NotEqualTilde;", 15, u"\x2242\x338"},
      {u"&Afr;", 5, u"\xD835\xDD04"},
      {u"&CounterClockwiseContourIntegral;", 33, u"\x2233"},
      {u"&CounterClockwiseContourIntegralx;", 0, u""},
      {u"&gt", 3, u">"},
      {u"&Abreve", 0, u""},
      {u"&x;", 0, u""},
      {u"&;", 0, u""},
      {u"&", 0, u""},
      {u"&#65;B", 5, u"A"},
      {u"&#65B", 4, u"A"},
      {u"&#x1F600;", 9, u"\xD83D\xDE00"},
      {u"&#X41g", 5, u"A"},
      {u"&#128;&#159;", 6, u"\x20AC"},
      {u"&#x9f;", 6, u"\x178"},
      {u"&#x81;", 6, u"\x81"},
      {u"&#0;", 4, u"\xFFFD"},
      {u"&#xD800;", 8, u"\xFFFD"},
      {u"&#1114112;", 10, u"\xFFFD"},
      {u"&#99999999999999999999", 22, u"\xFFFD"},
      {u"&#;", 0, u""},
      {u"&#x;", 0, u""},
      {u"&#", 0, u""},
  };
  for (const auto& c : kCases) {
    const CharacterReference reference = ReadCharacterReference(c.markup);
    const std::string name(c.markup.begin(), c.markup.end());
    EXPECT_EQ(reference.length, c.length) << name;
    EXPECT_EQ(reference.Text(), c.text) << name;
  }
}

TEST(DecodeAttribute, LeavesParametersOfAddressesAlone) {
  EXPECT_EQ(DecodeAttribute(u"a&amp;b&lt=c&lt;d&ltx&gt&#65=&"), u"a&b&lt=c<d&ltx>A=&");
}

}  // namespace
}  // namespace mimora::testing

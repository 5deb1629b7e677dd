// Copyright (c) 2026 the mimora developers.
#include "codec/quoted_printable.h"

#include <cctype>

#include "diag/limits.h"
#include "support/coders.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

const StreamCoder kDecoder = DecoderOf("QUOTED-PRINTABLE");

// The decoder as one would write it down, a whole line at a time.
std::string DecodeLineByLine(std::string_view text) {
  std::string out;
  const auto value = [](char c) { return std::isdigit(c) ? c - '0' : std::toupper(c) - 'A' + 10; };
  while (!text.empty()) {
    std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(line.size());
    const size_t line_end = text.starts_with("\r\n") ? 2 : std::min<size_t>(text.size(), 1);
    text.remove_prefix(line_end);
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    bool soft = false;
    for (size_t i = 0; i < line.size(); ++i) {
      if (line[i] != '=') {
        out += line[i];
        continue;
      }
      size_t stop = i + 1;
      while (stop < std::min(i + 3, line.size()) && line[stop] > 0 && std::isalnum(line[stop]))
        ++stop;
      if (stop == i + 3) {
        out += static_cast<char>(16 * value(line[i + 1]) + value(line[i + 2]));
        i += 2;
        continue;
      }
      // What ended the escape is text.
      soft = i + 1 == line.size();
      if (!soft) out += line.substr(i, stop + 1 - i);
      i = stop;
    }
    if (line_end > 0 && !soft) out += "\r\n";
  }
  return out;
}

constexpr CoderCase kDecodeCases[] = {
    {"nothing", "", ""},
    {"digits in upper and lower case", "=41=7e=c3=A9", "A~\xC3\xA9"},
    {"soft breaks join lines", "=41=\r\nB=\nc=\rd", "ABcd"},
    {"soft break with blanks around it", "a \t= \t \r\nb", "a \tb"},
    {"soft break at the end of the data", "a=", "a"},
    {"line ends of all kinds become CR LF", "a\n\nb\r\r\n\n\r", "a\r\n\r\nb\r\n\r\n\r\n\r\n"},
    {"blanks before a line end go", "a \t\r\nb\t \nc \rd", "a\r\nb\r\nc\r\nd"},
    {"blanks at the end of the data go", "a \t", "a"},
    {"a line of blanks is empty", " \t \r\n  ", "\r\n"},
    {"escaped blanks and line ends are bytes", "a=20\r\n=0D=0Ab=0A", "a \r\n\r\nb\n"},
    {"half an escape passes as it stands", "=4 x\r\n=4 \r\n", "=4 x\r\n=4\r\n"},
    {"an escape without digits", "=!=-1= x=\t41", "=!=-1= x=\t41"},
    {"an equals sign ends an escape and begins none", "==41=4=41", "==41=4=41"},
    {"the third equals sign begins one", "===41", "==A"},
    {"an equals sign that ends an escape is no soft break", "=4=\r\na==\t \r\nB",
     "=4=\r\na==\r\nB"},
    {"blanks between two equals signs", "= =41=4\t=42", "= A=4\tB"},
    {"letters behind F go on with the digits", "=GZ=zz=g0", "#S\0"sv},
    {"other bytes pass and end an escape", "\0\xFF\x7F=\xC3=4\xC3"sv, "\0\xFF\x7F=\xC3=4\xC3"sv},
};

TEST(DecodeQuotedPrintable, DecodesAlikeFromEverySource) { ExpectAllCoded(kDecoder, kDecodeCases); }

TEST(DecodeQuotedPrintable, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  constexpr std::string_view kMarks = "==4Fg \t\r\n\r\n!";
  constexpr std::string_view kWords[] = {
      "Some longer words ",
      "a whole line of words as it stands in a letter to a friend of mine\r\n",
      "  ",
      "=C3=A9",
      "=\r\n",
      "\r\n",
      " \n",
      "=\n",
      "=",
      "."};
  std::mt19937 random(1);
  for (int i = 0; i < 6000; ++i) {
    std::string text = i % 2 == 0 ? RandomText(random, random() % 40, kMarks)
                                  : RandomText(random, random() % 80, kWords);
    Damage(random, text);
    const std::string want = DecodeLineByLine(text);
    const auto seed = static_cast<uint32_t>(random());
    ForEveryCpuLevel([&] {
      Moutstream out(MemorySink{}), counting(CountingSink{});
      QuotedPrintableDecoder decoder(out), counter(counting);
      std::mt19937 cuts(seed);
      FeedInPieces(cuts, 1 + cuts() % (i % 4 < 2 ? 40 : 600), text, decoder, counter);
      ASSERT_EQ(TextOf(out), want) << "text " << i << ": " << text;
      ASSERT_EQ(counting.WritePos(), std::ssize(want)) << "text " << i << ": " << text;
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

// Of more blanks than are held back every full piece is text.
TEST(DecodeQuotedPrintable, BlanksBeforeALineEndGoUpToTheLimit) {
  constexpr size_t kLimit = kLongestHeldBlanks;
  for (const size_t count : {kLimit - 1, kLimit, kLimit + 1, 2 * kLimit - 1, 2 * kLimit}) {
    SCOPED_TRACE(::testing::Message() << count << " blanks");
    std::string blanks(count, ' ');
    for (size_t i = 0; i < count; i += 3) blanks[i] = '\t';
    const std::string kept = blanks.substr(0, count / kLimit * kLimit);
    ExpectCoded(kDecoder, "a" + blanks + "\r\nb", "a" + kept + "\r\nb");
    ExpectCoded(kDecoder, "a=4" + blanks + "\r\nb" + blanks, "a=4" + kept + "\r\nb" + kept);
    // A soft break is one only while what stands behind it is dropped.
    ExpectCoded(kDecoder, "a=" + blanks + "\r\nb", kept.empty() ? "ab" : "a=" + kept + "\r\nb");
    ExpectCoded(kDecoder, "a" + blanks + "=\r\nb", "a" + blanks + "b");
    ExpectCoded(kDecoder, "a=" + blanks + "=41", "a=" + blanks + "A");
  }
}

#define A68 "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
static_assert(sizeof A68 == 68 + 1);

constexpr CoderCase kEncodeCases[] = {
    {"nothing", "", ""},
    {"the last blank before a line end", "a \t \r\nc\t\r\n \r\n", "a \t=20\r\nc=09\r\n=20\r\n"},
    {"blank at the end of the data", "a b ", "a b "},
    {"dot at the start of a line", ".x\r\n.\r\n..", "=2Ex\r\n=2E\r\n=2E."},
    {"lone LF ends a line", "a\n\nb\n", "a\r\n\r\nb\r\n"},
    {"lone CR", "a\rb\r\xE9\r.", "a=0Db=0D=E9=0D."},
    {"CR in front of CR LF", "a\r\r\nb", "a=0D\r\nb"},
    {"CR at the end of the data", "a\r", "a=0D"},
    {"tab inside a line and 0x7F", "a\tb\x7F", "a\tb\x7F"},
    {"control and 8-bit characters", "\0\x1F\v\x80=\xFF"sv, "=00=1F=0B=80=3D=FF"},
    {"71 characters", A68 "bcd\r\n", A68 "bcd\r\n"},
    {"72 characters", A68 "bcde\r\n", A68 "bcde=\r\n\r\n"},
    {"escape up to column 71", A68 "=\r\n", A68 "=3D\r\n"},
    {"escape up to column 74", A68 "bcd\xE9.", A68 "bcd=E9=\r\n=2E"},
    {"dot in column 72 and the next", A68 "bcd..", A68 "bcd.=\r\n=2E"},
    {"blank in column 71", A68 "bc \r\n", A68 "bc=20\r\n"},
    {"blank in column 72", A68 "bcd \r\n", A68 "bcd =\r\n\r\n"},
};

TEST(EncodeQuotedPrintable, EncodesAlikeFromEverySource) {
  ExpectAllCoded(EncodeQuotedPrintable, kEncodeCases);
}

TEST(EncodeQuotedPrintable, KeepsLinesShortAndIsUndoneByTheDecoder) {
  constexpr std::string_view kWords[] = {
      "\r\n", "\r", " ", "\t", "=", ".", "\xE9", "\x7F", "\x01", "aaaaaaaaaa", "words and blanks"};
  std::mt19937 random(2);
  for (int i = 0; i < 3000; ++i) {
    const size_t longest = i % 100 == 0 ? 3000 : 300;
    const std::string text = RandomText(random, random() % longest, kWords) + "end";
    std::string portable;
    ForEveryCpuLevel([&] {
      const std::string encoded = Coded(EncodeQuotedPrintable, text);
      ASSERT_EQ(Coded(DecodeQuotedPrintable, encoded), text) << encoded;
      for (size_t at = 0; at < encoded.size();) {
        const size_t end = std::min(encoded.find("\r\n", at), encoded.size());
        ASSERT_LE(end - at, 76u) << encoded;
        ASSERT_NE(encoded[at], '.') << encoded;
        at = end + 2;
      }
      if (portable.empty()) portable = encoded;
      ASSERT_EQ(encoded, portable);
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TEST(QuotedPrintableCoders, ReportAndKeepErrorsAtAnyByte) {
  for (const auto coder : {DecodeQuotedPrintable, EncodeQuotedPrintable})
    ExpectErrorsToBeReportedAndKept(coder, "a=41 \r\n= \r\n=4 x\t\r\nx=C3\r\n b=\r\n c= ==1");
}

}  // namespace
}  // namespace mimora::testing

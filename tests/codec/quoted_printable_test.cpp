// Copyright (c) 2026 the mimora developers.
#include "codec/quoted_printable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>

#include "codec/transfer_encoding.h"
#include "diag/limits.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

struct Case {
  const char* name;
  std::string_view text;
  std::string_view want;
};

Minstream Reading(std::string_view text) {
  return Minstream(MemorySource{.data = text.data(), .length = std::ssize(text)});
}

std::string Decode(std::string_view text) {
  Minstream in = Reading(text);
  Moutstream out(MemorySink{});
  EXPECT_EQ(DecodeQuotedPrintable(in, out), 0);
  return TextOf(out);
}

std::string Encode(std::string_view text) {
  Minstream in = Reading(text);
  Moutstream out(MemorySink{});
  EXPECT_EQ(EncodeQuotedPrintable(in, out), 0);
  return TextOf(out);
}

// Decodes the text from every source, into memory and into a stream that only counts.
void ExpectDecoded(std::string_view text, std::string_view want) {
  ForEverySource(text, [&](Minstream& in) {
    Moutstream out(MemorySink{});
    EXPECT_EQ(TransferEncodingDecode(in, out, "QUOTED-PRINTABLE"), 0);
    EXPECT_EQ(TextOf(out), want);
    in.Seek(0);
    Moutstream counting(CountingSink{});
    EXPECT_EQ(TransferEncodingDecode(in, counting, "QUOTED-PRINTABLE"), 0);
    EXPECT_EQ(counting.WritePos(), std::ssize(want));
  });
}

std::string RandomText(std::mt19937& random, size_t count,
                       std::initializer_list<std::string_view> pieces) {
  std::string text;
  while (count-- > 0) text += pieces.begin()[random() % pieces.size()];
  return text;
}

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
      // What ended the escape is text, unless it is the "=" that ends the line.
      soft = line.back() == '=' && stop + 1 >= line.size();
      out += line.substr(i, stop + 1 - i);
      if (soft) out.pop_back();
      i = stop;
    }
    if (line_end > 0 && !soft) out += "\r\n";
  }
  return out;
}

constexpr Case kDecodeCases[] = {
    {"nothing", "", ""},
    {"an escape", "=41=7e", "A~"},
    {"lower case digits", "=c3=a9=C3=a9", "\xC3\xA9\xC3\xA9"},
    {"soft break joins lines", "=41=\r\nB", "AB"},
    {"soft break at LF and lone CR", "a=\nb=\rc", "abc"},
    {"soft break with blanks behind it", "a= \t \r\nb", "ab"},
    {"blanks in front of a soft break stay", "a \t=\r\nb", "a \tb"},
    {"soft break at the end of the data", "a=", "a"},
    {"lone LF becomes CR LF", "a\n\nb", "a\r\n\r\nb"},
    {"lone CR becomes CR LF", "a\r\rb", "a\r\n\r\nb"},
    {"line ends of all kinds", "\r\r\n\n\r", "\r\n\r\n\r\n\r\n"},
    {"no line end is added", "a\r\nb", "a\r\nb"},
    {"blanks before a line end go", "a \t\r\nb\t \nc \rd", "a\r\nb\r\nc\r\nd"},
    {"blanks at the end of the data go", "a \t", "a"},
    {"a line of blanks is empty", " \t \r\n  ", "\r\n"},
    {"escaped blanks stay", "a=20\r\n=09\r\n", "a \r\n\t\r\n"},
    {"escaped line ends are bytes", "a=0D=0Ab=0Ac", "a\r\nb\nc"},
    {"half an escape passes as it stands", "=4 x", "=4 x"},
    {"half an escape at a line end", "=4\r\nx=4 \r\n", "=4\r\nx=4\r\n"},
    {"an escape without digits", "=!=-1= x=\t41", "=!=-1= x=\t41"},
    {"an equals sign ends an escape and begins none", "==41", "==41"},
    {"the third equals sign begins one", "===41", "==A"},
    {"an equals sign ends half an escape", "=4=41", "=4=41"},
    {"half an escape in front of a soft break", "=4=\r\nB", "=4B"},
    {"an equals sign in front of a soft break", "a==\r\nB", "a=B"},
    {"and with blanks behind it", "a==\t \r\nB", "a=B"},
    {"blanks between two equals signs", "= =41=4\t=42", "= A=4\tB"},
    {"letters behind F go on with the digits", "=GZ=zz=g0", "#S\0"sv},
    {"other bytes pass", "\0\x80\xFF\x7F\f"sv, "\0\x80\xFF\x7F\f"sv},
    {"a high byte ends an escape", "=\xC3=4\xC3", "=\xC3=4\xC3"},
};

TEST(DecodeQuotedPrintable, DecodesAlikeFromEverySource) {
  for (const Case& c : kDecodeCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(DecodeLineByLine(c.text), c.want) << "the simple decoder of this test";
    ExpectDecoded(c.text, c.want);
  }
}

TEST(DecodeQuotedPrintable, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  std::mt19937 random(1);
  for (int i = 0; i < 6000; ++i) {
    const std::string text =
        i % 2 == 0 ? RandomText(random, random() % 40,
                                {"=", "=", "4", "F", "g", " ", "\t", "\r", "\n", "\r\n", "!"})
                   : RandomText(random, random() % 80,
                                {"Some longer words ", "=C3=A9", "=\r\n", "\r\n", " \n", "=", "."});
    Moutstream out(MemorySink{});
    QuotedPrintableDecoder decoder(out);
    const size_t piece = 1 + random() % 40;
    for (std::string_view left = text; !left.empty();) {
      const std::string_view cut = left.substr(0, 1 + random() % piece);
      decoder.Feed(cut);
      left.remove_prefix(cut.size());
    }
    decoder.Finish();
    ASSERT_EQ(TextOf(out), DecodeLineByLine(text)) << "text " << i << ": " << text;
    ASSERT_EQ(Decode(text), TextOf(out)) << "text " << i << ": " << text;
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
    ExpectDecoded("a" + blanks + "\r\nb", "a" + kept + "\r\nb");
    ExpectDecoded("a=4" + blanks + "\r\nb" + blanks, "a=4" + kept + "\r\nb" + kept);
    // A soft break is one only while what stands behind it is dropped.
    ExpectDecoded("a=" + blanks + "\r\nb", kept.empty() ? "ab" : "a=" + kept + "\r\nb");
    ExpectDecoded("a" + blanks + "=\r\nb", "a" + blanks + "b");
    ExpectDecoded("a=" + blanks + "=41", "a=" + blanks + "A");
  }
}

#define A68 "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"
static_assert(sizeof A68 == 68 + 1);

constexpr Case kEncodeCases[] = {
    {"nothing", "", ""},
    {"plain text without a line end", "a b", "a b"},
    {"blank at a line end", "a b \r\nc\t\r\n \r\n", "a b=20\r\nc=09\r\n=20\r\n"},
    {"only the last of several blanks", "a \t \r\n", "a \t=20\r\n"},
    {"blank at the end of the data", "a ", "a "},
    {"dot at the start of a line", ".x\r\n.\r\n..", "=2Ex\r\n=2E\r\n=2E."},
    {"dot behind a lone CR", "\r.", "=0D."},
    {"lone LF ends a line", "a\n\nb\n", "a\r\n\r\nb\r\n"},
    {"lone CR", "a\rb\r\xE9", "a=0Db=0D=E9"},
    {"CR in front of CR LF", "a\r\r\nb", "a=0D\r\nb"},
    {"CR at the end of the data", "a\r", "a=0D"},
    {"tab inside a line and 0x7F", "a\tb\x7F", "a\tb\x7F"},
    {"control characters", "\0\x1F\v"sv, "=00=1F=0B"},
    {"8-bit characters and =", "\x80\xE9=\xFF", "=80=E9=3D=FF"},
    {"71 characters", A68 "bcd\r\n", A68 "bcd\r\n"},
    {"72 characters", A68 "bcde\r\n", A68 "bcde=\r\n\r\n"},
    {"escape up to column 71", A68 "=\r\n", A68 "=3D\r\n"},
    {"escape up to column 74", A68 "bcd\xE9.", A68 "bcd=E9=\r\n=2E"},
    {"dot in column 72 and the next", A68 "bcd..", A68 "bcd.=\r\n=2E"},
    {"blank in column 71", A68 "bc \r\n", A68 "bc=20\r\n"},
    {"blank in column 72", A68 "bcd \r\n", A68 "bcd =\r\n\r\n"},
    {"line end in column 72", A68 "bcd\ne", A68 "bcd\r\ne"},
};

TEST(EncodeQuotedPrintable, EncodesAlikeFromEverySource) {
  for (const Case& c : kEncodeCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&](Minstream& in) {
      Moutstream out(MemorySink{});
      EXPECT_EQ(EncodeQuotedPrintable(in, out), 0);
      EXPECT_EQ(TextOf(out), c.want);
    });
  }
}

TEST(EncodeQuotedPrintable, KeepsLinesShortAndIsUndoneByTheDecoder) {
  std::mt19937 random(2);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = RandomText(random, random() % 300,
                                        {"\r\n", "\r", " ", "\t", "=", ".", "\xE9", "\x7F", "\x01",
                                         "aaaaaaaaaa", "words and blanks", "x"}) +
                             "end";
    const std::string encoded = Encode(text);
    ASSERT_EQ(Decode(encoded), text) << encoded;
    for (size_t at = 0; at < encoded.size();) {
      const size_t end = std::min(encoded.find("\r\n", at), encoded.size());
      ASSERT_LE(end - at, 76u) << encoded;
      ASSERT_NE(encoded[at], '.') << encoded;
      at = end + 2;
    }
  }
}

TEST(QuotedPrintableCoders, ReadErrorAtAnyByteIsReportedAndKept) {
  constexpr std::string_view kText = "a=41 \r\n= \r\n=4 x\t\r\n";
  for (int64_t at = 0; at <= std::ssize(kText); ++at) {
    for (const auto coder : {DecodeQuotedPrintable, EncodeQuotedPrintable}) {
      SCOPED_TRACE(::testing::Message() << "fails after " << at << " bytes");
      DripSource source(kText, 4, at);
      Minstream in(source.Reading(), 16);
      Moutstream out(MemorySink{});
      EXPECT_EQ(coder(in, out), -1);
      EXPECT_EQ(in.GetError(), EIO);
    }
  }
}

int64_t WriteWhileThereIsRoom(intptr_t context, const void*, int64_t length) {
  int64_t& room = *reinterpret_cast<int64_t*>(context);
  if (length > room) return errno = ENOSPC, -1;
  room -= length;
  return length;
}

TEST(QuotedPrintableCoders, WriteErrorAtAnyByteIsReportedAndKept) {
  constexpr std::string_view kText = "=4 \t x=C3\r\n b=\r\n c= ==1";
  for (const auto coder : {DecodeQuotedPrintable, EncodeQuotedPrintable}) {
    Minstream whole = Reading(kText);
    Moutstream counting(CountingSink{});
    EXPECT_EQ(coder(whole, counting), 0);
    for (int64_t room = 0; room <= counting.WritePos(); ++room) {
      SCOPED_TRACE(::testing::Message() << "room for " << room);
      Minstream in = Reading(kText);
      int64_t left = room;
      const auto context = reinterpret_cast<intptr_t>(&left);
      Moutstream out(CallbackSink{.context = context, .write = WriteWhileThereIsRoom}, 7);
      EXPECT_EQ(coder(in, out), room < counting.WritePos() ? -2 : 0);
      EXPECT_EQ(out.GetError(), room < counting.WritePos() ? ENOSPC : 0);
    }
  }
}

}  // namespace
}  // namespace mimora::testing

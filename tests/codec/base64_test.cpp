// Copyright (c) 2026 the mimora developers.
#include "codec/base64.h"

#include "support/coders.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

StreamCoder EncoderInLinesOf(int32_t length) {
  return [length](Minstream& in, Moutstream& out) { return EncodeBase64(in, out, length); };
}

// The decoder as one would write it down: bits in, bytes out as soon as there are eight.
std::string DecodeBitByBit(std::string_view text) {
  std::string bytes;
  std::string bits;
  bool padded = false;
  for (const char c : text) {
    if (c == '\r' || c == '\n') padded = false;
    if (c == '=') {
      padded = true;
      bits.clear();
    }
    const size_t value = kAlphabet.find(c);
    if (padded || value == std::string_view::npos) continue;
    for (int bit = 5; bit >= 0; --bit) bits += (value >> bit & 1) != 0 ? '1' : '0';
    if (bits.size() < 8) continue;
    bytes += static_cast<char>(std::stoi(bits.substr(0, 8), nullptr, 2));
    bits.erase(0, 8);
  }
  return bytes;
}

constexpr CoderCase kDecodeCases[] = {
    {"nothing", "", ""},
    {"a group goes on over line ends of all kinds", "T\nW\r\n\r\nF\ru\n", "Man"},
    {"foreign characters are dropped", "\0T-W*F\t_\x80u \xFF"sv, "Man"},
    {"padding ends the line", "TQ==TWFu\r\nTWFu", "MMan"},
    {"padding ends the line up to LF or CR", "TQ=TWFu\nTWE=TWFu\rTWFu", "MMaMan"},
    {"padding in front of everything", "=TWFu\nTWFu", "Man"},
    {"padding alone in the next line", "TWE\r\n=\r\nTWFu", "MaMan"},
    {"padding behind a whole group", "TWFu=TWFu\nTWFu", "ManMan"},
    {"padding behind one character drops it", "TWFuT=\nTWFu", "ManMan"},
    {"no padding at the end, two characters", "TWFuTQ\r\n", "ManM"},
    {"no padding at the end, three characters", "TWFuTWE", "ManMa"},
    {"one character at the end is no byte", "TWFuT", "Man"},
    {"bits behind the last byte do not matter", "TR==\nTWH=", "MMa"},
    {"every character of the alphabet", kAlphabet,
     "\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B\x71\xD7"
     "\x9F\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3"
     "\xDF\xBF"sv},
};

TEST(DecodeBase64, DecodesAlikeFromEverySource) {
  ExpectAllCoded(DecoderOf("base64"), kDecodeCases);
}

// As encoders write it: most lines alike, the last one padded.
std::string RandomLines(std::mt19937& random, size_t size) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  std::string lines = Coded(EncoderInLinesOf(static_cast<int32_t>(random() % 81)), bytes);
  if (random() % 2 == 0) std::erase(lines, '\r');
  return lines;
}

TEST(DecodeBase64, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  const std::string clean = std::string(kAlphabet) + std::string(kAlphabet) + "\r\n";
  const std::string marks = "AZaz09+/AZaz09+/==\r\n\r\n -\x80";
  std::mt19937 random(1);
  for (int i = 0; i < 6000; ++i) {
    const size_t longest = i % 100 == 0 ? 20000 : 300;
    const size_t size = random() % longest;
    std::string text = i % 3 == 0   ? RandomText(random, size, clean)
                       : i % 3 == 1 ? RandomText(random, size, marks)
                                    : RandomLines(random, size);
    Damage(random, text);
    const std::string want = DecodeBitByBit(text);
    const auto seed = static_cast<uint32_t>(random());
    ForEveryCpuLevel([&] {
      Moutstream out(MemorySink{}), counting(CountingSink{});
      Base64Decoder decoder(out);
      Base64Counter counter(counting);
      std::mt19937 cuts(seed);
      FeedInPieces(cuts, 1 + cuts() % (i % 4 == 0 ? 8 : longest), text, decoder, counter);
      ASSERT_EQ(TextOf(out), want) << "text " << i << ": " << text;
      ASSERT_EQ(counting.WritePos(), std::ssize(want)) << "text " << i << ": " << text;
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

constexpr CoderCase kEncodeCases[] = {
    {"nothing", "", ""},
    {"one byte", "M", "TQ==\r\n"},
    {"two bytes", "Ma", "TWE=\r\n"},
    {"line ends and zeros are bytes like others", "\r\n\0"sv, "DQoA\r\n"},
    {"a full line and more", "\xFF\xFB\xEF\xBE Man", "//vvviBN\r\nYW4=\r\n"},
};

TEST(EncodeBase64, EncodesAlikeFromEverySource) {
  ExpectAllCoded(EncoderInLinesOf(8), kEncodeCases);
}

TEST(EncodeBase64, CutsLinesAtTheLengthThatIsAskedForUpTo80AndIsUndoneByTheDecoder) {
  for (const int32_t line_length : {0, 1, 8, 75, 76, 80, 81, INT32_MIN}) {
    const auto cut_at = static_cast<size_t>(std::clamp(line_length, 0, 80));
    for (const size_t size : {0u, 1u, 56u, 60u, 241u, 10001u}) {
      SCOPED_TRACE(::testing::Message() << size << " bytes, lines of " << line_length);
      std::mt19937 random(3);
      std::string bytes(size, '\0');
      for (char& byte : bytes) byte = static_cast<char>(random());
      ForEveryCpuLevel([&] {
        std::string left = Coded(EncoderInLinesOf(0), bytes);
        EXPECT_EQ(left.size(), (size + 2) / 3 * 4);
        EXPECT_EQ(DecodeBitByBit(left), bytes);
        std::string lines;
        for (; cut_at != 0 && !left.empty(); left.erase(0, cut_at))
          lines += left.substr(0, cut_at) + "\r\n";
        EXPECT_EQ(Coded(EncoderInLinesOf(line_length), bytes), lines + left);
        EXPECT_EQ(Coded(DecoderOf("base64"), lines + left), bytes);
      });
    }
  }
}

constexpr std::string_view kText = "TWFu \r\nTWFuTQ==\r\nTWFu";

TEST(Base64Coders, ReportAndKeepErrorsAtAnyByte) {
  for (const StreamCoder& coder : {DecoderOf("base64"), DecoderOf("8bit"), EncoderInLinesOf(8)})
    ExpectErrorsToBeReportedAndKept(coder, kText);
}

TEST(TransferEncodingDecode, KnowsThreeNamesInAnyCaseAndCopiesForAllOthers) {
  constexpr CoderCase kCases[] = {
      {"base64", "bAsE64", "ManManMMan"},
      {"quoted-printable", "QUOTED-printable", "TWFu\r\nTWFuTQ==\r\nTWFu"},
      {"uuencoded", "x-uuencode", ""},
      {"no name", "", kText},
      {"a name with a blank", "base64 ", kText},
  };
  for (const CoderCase& c : kCases) EXPECT_EQ(Coded(DecoderOf(c.text), kText), c.want) << c.name;
}

}  // namespace
}  // namespace mimora::testing

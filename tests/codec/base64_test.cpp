// Copyright (c) 2026 the mimora developers.
#include "codec/base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "codec/transfer_encoding.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Case {
  const char* name;
  std::string_view text;
  std::string_view want;
};

Minstream Reading(std::string_view text) {
  return Minstream(MemorySource{.data = text.data(), .length = std::ssize(text)});
}

int32_t Decode(Minstream& in, Moutstream& out) { return TransferEncodingDecode(in, out, "base64"); }

int32_t Copy(Minstream& in, Moutstream& out) { return TransferEncodingDecode(in, out, "8bit"); }

int32_t EncodeInLinesOf8(Minstream& in, Moutstream& out) { return EncodeBase64(in, out, 8); }

std::string Encode(std::string_view bytes, int32_t line_length) {
  Minstream in = Reading(bytes);
  Moutstream out(MemorySink{});
  EXPECT_EQ(EncodeBase64(in, out, line_length), 0);
  return TextOf(out);
}

std::string RandomText(std::mt19937& random, size_t length, std::string_view letters) {
  std::string text(length, '\0');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
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

constexpr Case kDecodeCases[] = {
    {"nothing", "", ""},
    {"one group", "TWFu", "Man"},
    {"a group goes on in the next line", "TW\r\nFu", "Man"},
    {"a group over four lines", "T\nW\r\nF\ru\n", "Man"},
    {"an empty line inside a group", "TWF\r\n\r\nu", "Man"},
    {"foreign characters are dropped", "\0T-W*F\t_\x80u \xFF"sv, "Man"},
    {"only foreign characters", "?! -_\r\n", ""},
    {"padding ends the line", "TQ==TWFu\r\nTWFu", "MMan"},
    {"padding ends the line up to LF", "TQ==TWFu\nTWFu", "MMan"},
    {"padding ends the line up to a lone CR", "TQ==TWFu\rTWFu", "MMan"},
    {"one padding character is enough", "TQ=\nTWE=\n", "MMa"},
    {"padding in front of everything", "=TWFu\nTWFu", "Man"},
    {"padding alone in the next line", "TWE\r\n=\r\nTWFu", "MaMan"},
    {"padding behind a whole group", "TWFu=TWFu\nTWFu", "ManMan"},
    {"padding behind one character drops it", "TWFuT=\nTWFu", "ManMan"},
    {"lines with their own padding", "TQ==\r\nTWE=\r\nTWFu\r\n", "MMaMan"},
    {"no padding at the end, two characters", "TWFuTQ", "ManM"},
    {"no padding at the end, three characters", "TWFuTWE", "ManMa"},
    {"no padding in front of the last line end", "TWFuTQ\r\n", "ManM"},
    {"one character at the end is no byte", "TWFuT", "Man"},
    {"bits behind the last byte do not matter", "TR==\nTWH=", "MMa"},
    {"every character of the alphabet", kAlphabet,
     "\x00\x10\x83\x10\x51\x87\x20\x92\x8B\x30\xD3\x8F\x41\x14\x93\x51\x55\x97\x61\x96\x9B\x71\xD7"
     "\x9F\x82\x18\xA3\x92\x59\xA7\xA2\x9A\xAB\xB2\xDB\xAF\xC3\x1C\xB3\xD3\x5D\xB7\xE3\x9E\xBB\xF3"
     "\xDF\xBF"sv},
};

TEST(DecodeBase64, DecodesAlikeFromEverySource) {
  for (const Case& c : kDecodeCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&](Minstream& in) {
      Moutstream out(MemorySink{});
      EXPECT_EQ(Decode(in, out), 0);
      EXPECT_EQ(TextOf(out), c.want);
      in.Seek(0);
      Moutstream counting(CountingSink{});
      EXPECT_EQ(Decode(in, counting), 0);
      EXPECT_EQ(counting.WritePos(), std::ssize(c.want));
    });
  }
}

TEST(DecodeBase64, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  const std::string clean = std::string(kAlphabet) + std::string(kAlphabet) + "\r\n";
  const std::string damaged = "AZaz09+/AZaz09+/==\r\n\r\n -\x80";
  std::mt19937 random(1);
  for (int i = 0; i < 6000; ++i) {
    const size_t longest = i % 100 == 0 ? 20000 : 120;
    const std::string text = RandomText(random, random() % longest, i % 2 == 0 ? clean : damaged);
    const std::string want = DecodeBitByBit(text);
    Moutstream out(MemorySink{}), counting(CountingSink{});
    Base64Decoder decoder(out);
    Base64Counter counter(counting);
    const size_t piece = 1 + random() % (i % 3 == 0 ? 8 : longest);
    for (std::string_view left = text; !left.empty();) {
      const std::string_view cut = left.substr(0, 1 + random() % piece);
      decoder.Feed(cut);
      counter.Feed(cut);
      left.remove_prefix(cut.size());
    }
    decoder.Finish();
    counter.Finish();
    ASSERT_EQ(TextOf(out), want) << "text " << i << ": " << text;
    ASSERT_EQ(counting.WritePos(), std::ssize(want)) << "text " << i << ": " << text;
  }
}

constexpr Case kEncodeCases[] = {
    {"nothing", "", ""},
    {"one byte", "M", "TQ==\r\n"},
    {"two bytes", "Ma", "TWE=\r\n"},
    {"three bytes", "Man", "TWFu\r\n"},
    {"line ends and zeros are bytes like others", "\r\n\0"sv, "DQoA\r\n"},
    {"a full line and more", "\xFF\xFB\xEF\xBE Man", "//vvviBN\r\nYW4=\r\n"},
};

TEST(EncodeBase64, EncodesAlikeFromEverySource) {
  for (const Case& c : kEncodeCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&](Minstream& in) {
      Moutstream out(MemorySink{});
      EXPECT_EQ(EncodeInLinesOf8(in, out), 0);
      EXPECT_EQ(TextOf(out), c.want);
    });
  }
}

TEST(EncodeBase64, CutsLinesAtTheLengthThatIsAskedForUpTo80) {
  struct LengthCase {
    int32_t line_length;
    size_t want;  // 0: no line ends
  };
  constexpr LengthCase kCases[] = {{0, 0},   {-5, 0},  {1, 1},   {4, 4},    {75, 75},
                                   {76, 76}, {79, 79}, {80, 80}, {200, 80}, {INT32_MIN, 0}};
  for (const LengthCase& c : kCases) {
    for (const size_t size : {0u, 1u, 56u, 60u, 241u, 10001u}) {
      SCOPED_TRACE(::testing::Message() << size << " bytes, lines of " << c.line_length);
      std::string left = Encode(std::string(size, '\xA5'), 0);
      EXPECT_EQ(left.size(), (size + 2) / 3 * 4);
      std::string lines;
      for (; c.want != 0 && !left.empty(); left.erase(0, c.want))
        lines += left.substr(0, c.want) + "\r\n";
      EXPECT_EQ(Encode(std::string(size, '\xA5'), c.line_length), lines + left);
    }
  }
}

TEST(EncodeBase64, IsUndoneByTheDecoderForEveryLength) {
  std::string all_bytes(256, '\0');
  for (size_t i = 0; i < 256; ++i) all_bytes[i] = static_cast<char>(i);
  std::mt19937 random(3);
  for (size_t size = 0; size <= 200; ++size) {
    const std::string bytes = RandomText(random, size, all_bytes);
    const std::string text = Encode(bytes, static_cast<int32_t>(size % 90));
    Minstream in = Reading(text);
    Moutstream out(MemorySink{});
    EXPECT_EQ(Decode(in, out), 0);
    EXPECT_EQ(TextOf(out), bytes);
    EXPECT_EQ(DecodeBitByBit(text), bytes);
  }
}

constexpr std::string_view kText = "TWFu\r\nTWFuTQ==\r\nTWFu";

TEST(Base64Coders, ReadErrorAtAnyByteIsReportedAndKept) {
  for (const auto coder : {Decode, Copy, EncodeInLinesOf8}) {
    for (int64_t at = 0; at <= std::ssize(kText); ++at) {
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

TEST(Base64Coders, WriteErrorAtAnyByteIsReportedAndKept) {
  for (const auto coder : {Decode, Copy, EncodeInLinesOf8}) {
    Minstream whole = Reading(kText);
    Moutstream counting(CountingSink{});
    EXPECT_EQ(coder(whole, counting), 0);
    for (int64_t room = 0; room <= counting.WritePos(); ++room) {
      SCOPED_TRACE(::testing::Message() << "room for " << room);
      Minstream in = Reading(kText);
      int64_t left = room;
      const auto context = reinterpret_cast<intptr_t>(&left);
      Moutstream out(CallbackSink{.context = context, .write = WriteWhileThereIsRoom}, 5);
      EXPECT_EQ(coder(in, out), room < counting.WritePos() ? -2 : 0);
      EXPECT_EQ(out.GetError(), room < counting.WritePos() ? ENOSPC : 0);
    }
  }
}

TEST(TransferEncodingDecode, KnowsThreeNamesInAnyCaseAndCopiesForAllOthers) {
  constexpr Case kCases[] = {
      {"base64", "bAsE64", "ManManMMan"},
      {"quoted-printable", "QUOTED-printable", "TWFu\r\nTWFuTQ=TWFu"},
      {"uuencoded", "x-uuencode", ""},
      {"7bit", "7bit", kText},
      {"no name", "", kText},
      {"a longer name", "base64x", kText},
      {"a name with a blank", "base64 ", kText},
  };
  for (const Case& c : kCases) {
    Minstream in = Reading(kText);
    Moutstream out(MemorySink{});
    EXPECT_EQ(TransferEncodingDecode(in, out, c.text), 0) << c.name;
    EXPECT_EQ(TextOf(out), c.want) << c.name;
  }
}

}  // namespace
}  // namespace mimora::testing

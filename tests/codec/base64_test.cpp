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

// Decodes the rest of IN twice: into memory, and into a stream that only counts.
void ExpectDecoded(Minstream& in, std::string_view encoding, std::string_view want) {
  const int64_t start = in.Position();
  Moutstream out(MemorySink{});
  EXPECT_EQ(TransferEncodingDecode(in, out, encoding), 0);
  EXPECT_EQ(TextOf(out), want);
  in.Seek(start);
  Moutstream counting(CountingSink{});
  EXPECT_EQ(TransferEncodingDecode(in, counting, encoding), 0);
  EXPECT_EQ(counting.WritePos(), std::ssize(want));
}

std::string Encode(std::string_view bytes, int32_t line_length) {
  Minstream in(MemorySource{.data = bytes.data(), .length = std::ssize(bytes)});
  Moutstream out(MemorySink{});
  EXPECT_EQ(EncodeBase64(in, out, line_length), 0);
  return TextOf(out);
}

std::string RandomText(std::mt19937& random, size_t length, std::string_view letters) {
  std::string text(length, '\0');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
}

std::string RandomBytes(std::mt19937& random, size_t length) {
  std::string bytes(length, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

// Takes ROOM bytes, then refuses.
struct FullSink {
  int64_t room;
  CallbackSink Sink() { return {.context = reinterpret_cast<intptr_t>(this), .write = Write}; }
  static int64_t Write(intptr_t context, const void*, int64_t length) {
    int64_t& room = reinterpret_cast<FullSink*>(context)->room;
    if (length > room) {
      errno = ENOSPC;
      return -1;
    }
    room -= length;
    return length;
  }
};

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
    ForEverySource(c.text, [&](Minstream& in) { ExpectDecoded(in, "base64", c.want); });
  }
}

TEST(DecodeBase64, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  // Mostly clean text in one half, mostly damaged text in the other.
  const std::string clean = std::string(kAlphabet) + std::string(kAlphabet) + "\r\n";
  const std::string damaged = "AZaz09+/AZaz09+/==\r\n\r\n -\x80";
  std::mt19937 random(1);
  for (int i = 0; i < 6000; ++i) {
    const size_t longest = i % 100 == 0 ? 20000 : 120;
    const std::string text = RandomText(random, random() % longest, i % 2 == 0 ? clean : damaged);
    const std::string want = DecodeBitByBit(text);
    Moutstream out(MemorySink{});
    Moutstream counting(CountingSink{});
    Base64Decoder decoder(out);
    Base64Counter counter(counting);
    const size_t piece = 1 + random() % (i % 3 == 0 ? 8 : longest);
    for (size_t at = 0; at < text.size();) {
      const std::string_view cut = std::string_view(text).substr(at, 1 + random() % piece);
      decoder.Feed(cut);
      counter.Feed(cut);
      at += cut.size();
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
    {"line ends are bytes like others", "\r\n\0"sv, "DQoA\r\n"},
    {"high bytes", "\xFF\xFB\xEF\xBE", "//vvvg==\r\n"},
    {"one full line", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
     "YWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFh\r\n"},
};

TEST(EncodeBase64, EncodesAlikeFromEverySource) {
  for (const Case& c : kEncodeCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&](Minstream& in) {
      Moutstream out(MemorySink{});
      EXPECT_EQ(EncodeBase64(in, out, 76), 0);
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
  std::mt19937 random(2);
  for (const LengthCase& c : kCases) {
    for (const size_t size : {size_t{1}, size_t{56}, size_t{60}, size_t{241}, size_t{10001}}) {
      SCOPED_TRACE(::testing::Message() << size << " bytes, lines of " << c.line_length);
      const std::string bytes = RandomBytes(random, size);
      std::string text = Encode(bytes, c.line_length);
      EXPECT_EQ(DecodeBitByBit(text), bytes);
      std::string in_lines;
      std::erase_if(text, [](char ch) { return ch == '\r' || ch == '\n'; });
      EXPECT_EQ(text.size(), (size + 2) / 3 * 4);
      for (size_t at = 0; c.want != 0 && at < text.size(); at += c.want)
        in_lines += text.substr(at, c.want) + "\r\n";
      EXPECT_EQ(Encode(bytes, c.line_length), c.want != 0 ? in_lines : text);
    }
  }
}

TEST(EncodeBase64, IsUndoneByTheDecoderForEveryLength) {
  std::mt19937 random(3);
  for (size_t size = 0; size <= 200; ++size) {
    SCOPED_TRACE(size);
    const std::string bytes = RandomBytes(random, size);
    const std::string text = Encode(bytes, static_cast<int32_t>(size % 90));
    Minstream in(MemorySource{.data = text.data(), .length = std::ssize(text)});
    ExpectDecoded(in, "BASE64", bytes);
  }
}

TEST(Base64Coders, ReadErrorAtAnyByteIsReportedAndKept) {
  constexpr std::string_view kText = "TWFu\r\nTWFuTQ==\r\nTWFu";
  for (int64_t at = 0; at <= std::ssize(kText); ++at) {
    SCOPED_TRACE(::testing::Message() << "fails after " << at << " bytes");
    for (const int64_t size : kBufferSizes) {
      DripSource source(kText, 4, at);
      Minstream in(source.Reading(), size);
      Moutstream out(MemorySink{});
      EXPECT_EQ(TransferEncodingDecode(in, out, "BASE64"), -1);
      EXPECT_EQ(in.GetError(), EIO);
      DripSource again(kText, 4, at);
      Minstream plain(again.Pointing(), size);
      EXPECT_EQ(EncodeBase64(plain, out, 76), -1);
      EXPECT_EQ(plain.GetError(), EIO);
    }
  }
}

TEST(Base64Coders, WriteErrorAtAnyByteIsReportedAndKept) {
  const std::string bytes = "Twenty and one bytes.";
  const std::string text = Encode(bytes, 8);
  const auto run = [](std::string_view input, int64_t room, int64_t size, auto coder) {
    Minstream in(MemorySource{.data = input.data(), .length = std::ssize(input)});
    FullSink sink{room};
    Moutstream out(sink.Sink(), size);
    const int32_t result = coder(in, out);
    EXPECT_EQ(out.GetError(), result == 0 ? 0 : ENOSPC);
    return result;
  };
  const auto decode = [](Minstream& in, Moutstream& out) {
    return TransferEncodingDecode(in, out, "BASE64");
  };
  const auto encode = [](Minstream& in, Moutstream& out) { return EncodeBase64(in, out, 8); };
  for (const int64_t size : kBufferSizes) {
    SCOPED_TRACE(::testing::Message() << "buffer of " << size);
    for (int64_t room = 0; room < std::ssize(bytes); ++room)
      EXPECT_EQ(run(text, room, size, decode), -2) << "room for " << room;
    EXPECT_EQ(run(text, std::ssize(bytes), size, decode), 0);
    for (int64_t room = 0; room < std::ssize(text); ++room)
      EXPECT_EQ(run(bytes, room, size, encode), -2) << "room for " << room;
    EXPECT_EQ(run(bytes, std::ssize(text), size, encode), 0);
  }
}

TEST(TransferEncodingDecode, KnowsThreeNamesInAnyCaseAndCopiesForAllOthers) {
  constexpr std::string_view kText = "TWFu=\r\n";
  constexpr Case kCases[] = {
      {"base64", "bAsE64", "Man"},          {"quoted-printable", "QUOTED-printable", "TWFu"},
      {"uuencoded", "x-uuencode", ""},      {"7bit", "7bit", kText},
      {"binary", "binary", kText},          {"no name", "", kText},
      {"a longer name", "base64x", kText},  {"a name with a blank", "base64 ", kText},
      {"a part of a name", "base6", kText},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    Minstream in(MemorySource{.data = kText.data(), .length = std::ssize(kText)});
    ExpectDecoded(in, c.text, c.want);
  }
}

}  // namespace
}  // namespace mimora::testing

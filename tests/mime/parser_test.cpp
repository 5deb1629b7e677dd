// Copyright (c) 2026 the mimora developers.
#include "mime/parser.h"

#include <random>

#include "diag/limits.h"
#include "mime/tree_text.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

struct TreeCase {
  const char* name;
  std::string message;
  Result result;
  const char* tree;
};

void ExpectTrees(std::initializer_list<TreeCase> cases) {
  for (const TreeCase& c : cases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.message, [&c](Minstream& in) {
      Bodypart message;
      EXPECT_EQ(Load(message, in), c.result);
      EXPECT_EQ(TreeText(message), c.tree);
      EXPECT_EQ(in.BoundaryCount(), 0u);
    });
  }
}

const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";  // 45 bytes

TEST(Load, FindsHeaderAndBodyOfASinglePart) {
  ExpectTrees({
      {"nothing at all", "", kHeaderCut, "TEXT/PLAIN 0+0+0"},
      {"empty header", "\r\nbody", kOk, "TEXT/PLAIN 0+2+4"},
      {"header cut off", "A: b\r\nC: d", kHeaderCut, "TEXT/PLAIN 0+10+0"},
      {"base64", "Content-Transfer-Encoding: BASE64 (x)\n\nTWFu\nTQ==\n", kOk,
       "TEXT/PLAIN 0+39+10 =4"},
      {"quoted-printable", "Content-Transfer-Encoding: quoted-printable\n\na=3D b \nc=\nd", kOk,
       "TEXT/PLAIN 0+45+12 =8"},
      {"uuencoded",
       "Content-Type: image/gif\nContent-Transfer-Encoding: x-uuencode\n\n"
       "begin 644 a\n#86)C\n`\nend\n",
       kOk, "IMAGE/GIF 0+63+24 =3"},
  });
}

TEST(Load, FindsUuencodedFilesInPlainText) {
  const std::string block = "begin 644 a.txt\n#86)C\n`\nend\n";  // 28 bytes
  ExpectTrees({
      {"two blocks", "\nx\n" + block + "y\n" + block + "z", kOk,
       "TEXT/PLAIN 0+1+61 =5 [uu a.txt 2+28=3] [uu a.txt 32+28=3]"},
      {"no end", "\nx\nbegin 644 a\n#86)C\n`\n", kOk, "TEXT/PLAIN 0+1+22"},
      {"only in plain text", "Content-Type: text/html\n\n" + block, kOk, "TEXT/HTML 0+25+28"},
      {"not inside an encoding", "Content-Transfer-Encoding: quoted-printable\n\n" + block, kOk,
       "TEXT/PLAIN 0+45+28 =32"},
  });
}

TEST(Load, TakesAMultipartApart) {
  ExpectTrees({
      {"preamble, parts, epilogue",
       kMixed + "pre\r\n--b\r\nA: b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b--\r\nepilogue", kOk,
       "MULTIPART/MIXED 0+45+42 {TEXT/PLAIN 55+8+3} {TEXT/PLAIN 73+2+3}"},
      {"never closed", kMixed + "--b\r\n\r\none\r\n", kOk,
       "MULTIPART/MIXED 0+45+12 {TEXT/PLAIN 50+2+5}"},
      {"no delimiter at all", kMixed + "text", kOk, "MULTIPART/MIXED 0+45+4"},
      {"empty part: the line end of its header is that of the delimiter",
       kMixed + "--b\r\n\r\n--b\r\n\r\ntwo\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45+24 {TEXT/PLAIN 50+2+0} {TEXT/PLAIN 57+2+3}"},
      {"header without its empty line", kMixed + "--b\r\nA: b\r\n--b\r\n\r\ntwo\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45+28 {TEXT/PLAIN 50+6+0} {TEXT/PLAIN 61+2+3}"},
      {"two delimiters in a row", kMixed + "--b\r\n--b\r\n\r\none\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45+22 {TEXT/PLAIN 55+2+3}"},
      {"no boundary", "Content-Type: multipart/mixed\r\n\r\n--b\r\n\r\none\r\n", kNoBoundary,
       "MULTIPART/MIXED 0+33+12 opaque"},
      {"empty boundary", "Content-Type: multipart/mixed; boundary=\"\"\r\n\r\n--\r\n\r\none",
       kNoBoundary, "MULTIPART/MIXED 0+46+9 opaque"},
      {"parts of a digest are messages",
       "Content-Type: multipart/digest; boundary=b\n\n--b\n\nSubject: s\n\nbody\n--b--", kOk,
       "MULTIPART/DIGEST 0+44+27 {MESSAGE/RFC822 48+1+16 {TEXT/PLAIN 49+12+4}}"},
  });
}

TEST(Load, TakesNestedMultipartsApart) {
  const std::string inner = "Content-Type: multipart/alternative; boundary=i\n\n";  // 49 bytes
  const std::string x(3000, 'x');
  ExpectTrees({
      {"closed, with an epilogue",
       kMixed + "--b\n" + inner + "--i\n\nA\n--i--\nepi\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+83 {MULTIPART/ALTERNATIVE 49+49+16 {TEXT/PLAIN 102+1+1}}"
       " {TEXT/PLAIN 119+1+1}"},
      {"closed directly in front of the outer delimiter",
       kMixed + "--b\n" + inner + "--i\n\nA\n--i--\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+79 {MULTIPART/ALTERNATIVE 49+49+12 {TEXT/PLAIN 102+1+1}}"
       " {TEXT/PLAIN 115+1+1}"},
      {"never closed: what follows in the outer one is not lost",
       kMixed + "--b\n" + inner + "--i\n\nA\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+73 {MULTIPART/ALTERNATIVE 49+49+6 {TEXT/PLAIN 102+1+1}}"
       " {TEXT/PLAIN 109+1+1}"},
      {"without a boundary: what follows in the outer one is not lost",
       kMixed + "--b\nContent-Type: multipart/mixed\n\nx\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+50 {MULTIPART/MIXED 49+31+1 opaque} {TEXT/PLAIN 86+1+1}"},
      {"closed from outside, directly in front of its own delimiter",
       kMixed + "--b\n" + inner + "--i\n\nA\n--b--\n--i\n\nB\n--b\n", kOk,
       "MULTIPART/MIXED 0+45+66 {MULTIPART/ALTERNATIVE 49+49+6 {TEXT/PLAIN 102+1+1}}"},
      {"a delimiter of the ended one that is also one of the outer one",
       kMixed +
           "--b\nContent-Type: multipart/x; boundary=\"b -2\"\n\n--b -2\n\nA\n--b\n--b -2\n\nB\n"
           "--b--\n",
       kOk,
       "MULTIPART/MIXED 0+45+78 {MULTIPART/X 49+44+9 {TEXT/PLAIN 100+1+1}} {TEXT/PLAIN 114+1+1}"},
      {"a header that a very long outer delimiter cuts",
       "Content-Type: multipart/mixed; boundary=" + x + "\n\n--" + x + "\n" + inner + "--i\n" +
           inner + "--" + x + "\n\nA\n--" + x + "--\nB",
       kOk,
       "MULTIPART/MIXED 0+3042+9116 {MULTIPART/ALTERNATIVE 6045+49+52 "
       "{MULTIPART/ALTERNATIVE 6098+49+0}} {TEXT/PLAIN 9150+1+1}"},
      {"the same boundary inside",
       "Content-Type: multipart/mixed; boundary=i\n\n--i\n" + inner +
           "--i\n\nA\n--i--\n\n--i\n\nB\n--i--\n",
       kOk,
       "MULTIPART/MIXED 0+43+80 {MULTIPART/ALTERNATIVE 47+49+13 {TEXT/PLAIN 100+1+1}}"
       " {TEXT/PLAIN 114+1+1}"},
  });
}

TEST(Load, TakesEnclosedMessagesApart) {
  ExpectTrees({
      {"with a multipart", "Content-Type: message/rfc822\n\n" + kMixed + "--b\n\nA\n--b--\n", kOk,
       "MESSAGE/RFC822 0+30+58 {MULTIPART/MIXED 30+45+13 {TEXT/PLAIN 79+1+1}}"},
      {"ended by the outer delimiter",
       kMixed + "--b\nContent-Type: message/rfc822\n\nA: b\n\nbody\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+51 {MESSAGE/RFC822 49+30+10 {TEXT/PLAIN 79+6+4}}"},
      {"empty", kMixed + "--b\nContent-Type: message/rfc822\n\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45+40 {MESSAGE/RFC822 49+30+0 {TEXT/PLAIN 79+0+0}}"},
      {"delivery status",
       "Content-Type: message/delivery-status\n\nReporting-MTA: dns; x\n\nAction: failed\n", kOk,
       "MESSAGE/DELIVERY-STATUS 0+39+38 {TEXT/PLAIN 39+23+15}"},
  });
}

TEST(Load, AnswersTheStreamsFaultsAndKeepsWhatItRead) {
  const std::string text = kMixed + "--b\r\nA: b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b--\r\n";
  for (int64_t at = 0; at < std::ssize(text); ++at) {
    for (const int64_t size : kBufferSizes) {
      SCOPED_TRACE(::testing::Message() << "fails at " << at << ", buffer of " << size);
      DripSource source(text, 3, at);
      Minstream in(source.Reading(), size);
      Bodypart message;
      const Result result = Load(message, in);
      EXPECT_TRUE(result == kHeaderFailed || result == kReadFailed) << result;
      EXPECT_EQ(in.GetError(), EIO);
      WalkBodyparts(message, [at](const Bodypart& part) {
        EXPECT_GE(part.HeaderSize, 0);
        EXPECT_GE(part.BodyLength, 0);
        EXPECT_LE(part.BodyStart + part.BodyLength, at);
      });
    }
  }
  Minstream closed(FileSource{.name = "/nonexistent/file"}, 16);
  Bodypart message;
  EXPECT_EQ(Load(message, closed), kNotOpen);
}

TEST(Load, ReplacesWhatThePartHeldBefore) {
  const std::string first = kMixed + "--b\r\n\r\none\r\n--b--";
  Bodypart message;
  ASSERT_EQ(LoadFromCopy(message, first), kOk);
  EXPECT_EQ(LoadFromCopy(message, "A: b\n\nx"), kOk);
  EXPECT_EQ(TreeText(message), "TEXT/PLAIN 0+6+1");
  EXPECT_EQ(message.Header.Count(), 1u);
}

// ---- Limits -----------------------------------------------------------------------------------

// Multiparts in each other, the innermost with a text; each level has a boundary of its own.
std::string Nested(int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) {
    const std::string boundary = "b" + std::to_string(i);
    text += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  return text + "\ntext\n";
}

TEST(Limits, PartsBelowTheDeepestLevelAreLeaves) {
  for (const int levels : {kDeepestLevel - 1, kDeepestLevel, kDeepestLevel + 1, kDeepestLevel + 2,
                           20 * kDeepestLevel}) {
    SCOPED_TRACE(levels);
    Bodypart message;
    EXPECT_EQ(LoadFromCopy(message, Nested(levels)), kOk);
    int deepest = 0;
    bool opaque = false;
    WalkBodyparts(message, [&](const Bodypart& part) {
      deepest = std::max(deepest, part.Depth());
      opaque = opaque || part.Opaque;
    });
    EXPECT_EQ(deepest, std::min(levels, kDeepestLevel + 1));
    EXPECT_EQ(opaque, levels > kDeepestLevel + 1);
  }
}

TEST(Limits, TheRestOfAMultipartWithTooManyPartsIsOneLeaf) {
  for (const int parts : {kMostParts - 1, kMostParts, kMostParts + 1, kMostParts + 500}) {
    SCOPED_TRACE(parts);
    std::string text = kMixed;
    for (int i = 0; i < parts; ++i) text += "--b\n\nx\n";
    text += "--b--\n";
    Bodypart message;
    EXPECT_EQ(LoadFromCopy(message, text), kOk);
    ASSERT_EQ(std::ssize(message.Children), std::min(parts, kMostParts + 1));
    const Bodypart& last = *message.Children.back();
    EXPECT_EQ(last.Opaque, parts > kMostParts);
    // To the last byte in front of the line end of the closing delimiter.
    EXPECT_EQ(last.BodyStart + last.BodyLength, std::ssize(text) - 7);
    EXPECT_EQ(last.BodyLength, parts > kMostParts ? 7 * (parts - kMostParts) - 5 : 1);
    EXPECT_EQ(message.BodyLength, std::ssize(text) - message.BodyStart);
  }
}

TEST(Limits, BeyondTheLastFieldOnlyThoseThatTellOfTheBodyAreListed) {
  for (const size_t fields : {kMostHeaderFields - 1, kMostHeaderFields, kMostHeaderFields + 1}) {
    SCOPED_TRACE(fields);
    std::string text;
    for (size_t i = 0; i < fields; ++i) text += ":\n";
    const std::string header =
        "Subject: a\n b\nContent-Type: multipart/mixed;\nno field\n boundary=b\n"
        "content-type : text/html\n c\n\n";
    text += header + "--b\n" + header + "--b--\n";
    Bodypart message;
    EXPECT_EQ(LoadFromCopy(message, text), kOk);
    const size_t subjects = fields < kMostHeaderFields ? 1 : 0;
    EXPECT_EQ(message.Header.Count(), std::min(fields, kMostHeaderFields) + subjects + 1);
    ASSERT_EQ(message.Children.size(), 1u);
    EXPECT_EQ(message.Children[0]->Header.Count(), 1u);
    for (Bodypart* part : {&message, message.Children[0].get()}) {
      EXPECT_EQ(part->Header.Find("Content-Type"), "multipart/mixed;\r\n boundary=b");
    }
  }
}

// ---- Everything else --------------------------------------------------------------------------

// Messages thrown together from what parsers stumble over. Whatever comes out, it is the same from
// every source and lies inside the data.
TEST(Load, GivesTheSameTreeOfRandomMailFromEverySource) {
  // clang-format off
  constexpr std::string_view kPieces[] = {
      "\r\n", "\n", "\r", "\r\n\r\n", "\n\n", " ", "\t", "\0"sv, "-", "--", "--b", "--b--", "--c", "--c--",
      "--c-\n", "b", "TWFu", "=3D", "=", "text", "begin 644 f\n", "#86)C\n", "end\n", "X: y\r\n",
      "Content-Type: multipart/mixed; boundary=b\r\n",
      "Content-Type: multipart/mixed; boundary=\"c-\"\n",
      "Content-Type: multipart/digest;\r\n boundary=c\n",
      "Content-Type: message/rfc822\n",
      "Content-Type: application/ms-tnef\n",
      "Content-Transfer-Encoding: base64\n",
      "Content-Transfer-Encoding: quoted-printable\n"};
  // clang-format on
  std::mt19937 random(7);
  for (int round = 0; round < 300 && !::testing::Test::HasFailure(); ++round) {
    std::string text;
    for (auto count = random() % 40; count > 0; --count)
      text += kPieces[random() % std::size(kPieces)];
    SCOPED_TRACE(text);
    Bodypart from_memory;
    LoadFromCopy(from_memory, text);
    const std::string want = TreeText(from_memory);
    ForEverySource(text, [&](Minstream& in) {
      Bodypart message;
      Load(message, in);
      ASSERT_EQ(TreeText(message), want);
      WalkBodyparts(message, [&](const Bodypart& part) {
        ASSERT_GE(part.HeaderSize, 0);
        ASSERT_EQ(part.BodyStart, part.PartStart + part.HeaderSize);
        ASSERT_GE(part.BodyLength, 0);
        ASSERT_LE(part.BodyStart + part.BodyLength, std::ssize(text));
      });
    });
  }
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
#include "mime/parser.h"

#include <random>
#include <string>

#include "diag/limits.h"
#include "mime/tree_text.h"
#include "support/sources.h"

namespace mimora {
namespace {

using testing::DripSource;
using testing::ForEverySource;
using testing::TreeText;

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

std::string TreeOf(std::string_view text) {
  Minstream in(MemorySource{.data = text.data(), .length = std::ssize(text)});
  Bodypart message;
  Load(message, in);
  return TreeText(message);
}

const std::string kMixed = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";  // 45 bytes

TEST(Load, FindsHeaderAndBodyOfASinglePart) {
  ExpectTrees({
      {"nothing at all", "", kHeaderCut, "TEXT/PLAIN 0+0 0+0 =0\n"},
      {"empty header", "\r\nbody", kOk, "TEXT/PLAIN 0+2 2+4 =4\n"},
      {"LF only", "A: b\n\nbody\n", kOk, "TEXT/PLAIN 0+6 6+5 =5\n"},
      {"CR only", "A: b\r\rbody\r", kOk, "TEXT/PLAIN 0+6 6+5 =5\n"},
      {"header cut off", "A: b\r\nC: d", kHeaderCut, "TEXT/PLAIN 0+10 10+0 =0\n"},
      {"base64", "Content-Transfer-Encoding: BASE64 (x)\n\nTWFu\nTQ==\n", kOk,
       "TEXT/PLAIN 0+39 39+10 =4\n"},
      {"base64 without padding", "Content-Transfer-Encoding: base64\n\nTWF", kOk,
       "TEXT/PLAIN 0+35 35+3 =2\n"},
      {"quoted-printable", "Content-Transfer-Encoding: quoted-printable\n\na=3D b \nc=\nd", kOk,
       "TEXT/PLAIN 0+45 45+12 =8\n"},
      {"uuencoded",
       "Content-Type: image/gif\nContent-Transfer-Encoding: x-uuencode\n\n"
       "begin 644 a\n#86)C\n`\nend\n",
       kOk, "IMAGE/GIF 0+63 63+24 =3\n"},
      {"unknown encoding", "Content-Transfer-Encoding: x-own\n\nabc", kOk,
       "TEXT/PLAIN 0+34 34+3 =3\n"},
      {"type that is none", "Content-Type: text\n\nabc", kOk, "TEXT/PLAIN 0+20 20+3 =3\n"},
  });
}

TEST(Load, FindsUuencodedFilesInPlainText) {
  const std::string block = "begin 644 a.txt\n#86)C\n`\nend\n";  // 28 bytes
  ExpectTrees({
      {"two blocks", "\nx\n" + block + "y\n" + block + "z", kOk,
       "TEXT/PLAIN 0+1 1+61 =5 [uu a.txt 2+28=3] [uu a.txt 32+28=3]\n"},
      {"no end", "\nx\nbegin 644 a\n#86)C\n`\n", kOk, "TEXT/PLAIN 0+1 1+22 =22\n"},
      {"only in plain text", "Content-Type: text/html\n\n" + block, kOk,
       "TEXT/HTML 0+25 25+28 =28\n"},
      {"not inside an encoding", "Content-Transfer-Encoding: quoted-printable\n\n" + block, kOk,
       "TEXT/PLAIN 0+45 45+28 =32\n"},
  });
}

TEST(Load, TakesAMultipartApart) {
  ExpectTrees({
      {"preamble, parts, epilogue",
       kMixed + "pre\r\n--b\r\nA: b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b--\r\nepilogue", kOk,
       "MULTIPART/MIXED 0+45 45+42 =42\n"
       "  TEXT/PLAIN 55+8 63+3 =3\n"
       "  TEXT/PLAIN 73+2 75+3 =3\n"},
      {"delimiter directly behind the header", kMixed + "--b\r\n\r\none\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45 45+17 =17\n"
       "  TEXT/PLAIN 50+2 52+3 =3\n"},
      {"never closed", kMixed + "--b\r\n\r\none\r\n", kOk,
       "MULTIPART/MIXED 0+45 45+12 =12\n"
       "  TEXT/PLAIN 50+2 52+5 =5\n"},
      {"no delimiter at all", kMixed + "text", kOk, "MULTIPART/MIXED 0+45 45+4 =4\n"},
      {"empty part: the line end of its header is that of the delimiter",
       kMixed + "--b\r\n\r\n--b\r\n\r\ntwo\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45 45+24 =24\n"
       "  TEXT/PLAIN 50+2 52+0 =0\n"
       "  TEXT/PLAIN 57+2 59+3 =3\n"},
      {"header without its empty line", kMixed + "--b\r\nA: b\r\n--b\r\n\r\ntwo\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45 45+28 =28\n"
       "  TEXT/PLAIN 50+6 56+0 =0\n"
       "  TEXT/PLAIN 61+2 63+3 =3\n"},
      {"two delimiters in a row", kMixed + "--b\r\n--b\r\n\r\none\r\n--b--", kOk,
       "MULTIPART/MIXED 0+45 45+22 =22\n"
       "  TEXT/PLAIN 55+2 57+3 =3\n"},
      {"no boundary", "Content-Type: multipart/mixed\r\n\r\n--b\r\n\r\none\r\n", kNoBoundary,
       "MULTIPART/MIXED 0+33 33+12 =12 opaque\n"},
      {"empty boundary", "Content-Type: multipart/mixed; boundary=\"\"\r\n\r\n--\r\n\r\none",
       kNoBoundary, "MULTIPART/MIXED 0+46 46+9 =9 opaque\n"},
      {"parts of a digest are messages",
       "Content-Type: multipart/digest; boundary=b\n\n--b\n\nSubject: s\n\nbody\n--b--", kOk,
       "MULTIPART/DIGEST 0+44 44+27 =27\n"
       "  MESSAGE/RFC822 48+1 49+16 =16\n"
       "    TEXT/PLAIN 49+12 61+4 =4\n"},
  });
}

TEST(Load, TakesNestedMultipartsApart) {
  const std::string inner = "Content-Type: multipart/alternative; boundary=i\n\n";  // 49 bytes
  const std::string x(3000, 'x');
  ExpectTrees({
      {"closed, with an epilogue",
       kMixed + "--b\n" + inner + "--i\n\nA\n--i--\nepi\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+83 =83\n"
       "  MULTIPART/ALTERNATIVE 49+49 98+16 =16\n"
       "    TEXT/PLAIN 102+1 103+1 =1\n"
       "  TEXT/PLAIN 119+1 120+1 =1\n"},
      {"closed directly in front of the outer delimiter",
       kMixed + "--b\n" + inner + "--i\n\nA\n--i--\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+79 =79\n"
       "  MULTIPART/ALTERNATIVE 49+49 98+12 =12\n"
       "    TEXT/PLAIN 102+1 103+1 =1\n"
       "  TEXT/PLAIN 115+1 116+1 =1\n"},
      {"never closed: what follows in the outer one is not lost",
       kMixed + "--b\n" + inner + "--i\n\nA\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+73 =73\n"
       "  MULTIPART/ALTERNATIVE 49+49 98+6 =6\n"
       "    TEXT/PLAIN 102+1 103+1 =1\n"
       "  TEXT/PLAIN 109+1 110+1 =1\n"},
      {"without a boundary: what follows in the outer one is not lost",
       kMixed + "--b\nContent-Type: multipart/mixed\n\nx\n--b\n\nB\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+50 =50\n"
       "  MULTIPART/MIXED 49+31 80+1 =1 opaque\n"
       "  TEXT/PLAIN 86+1 87+1 =1\n"},
      {"closed from outside, directly in front of its own delimiter",
       kMixed + "--b\n" + inner + "--i\n\nA\n--b--\n--i\n\nB\n--b\n", kOk,
       "MULTIPART/MIXED 0+45 45+66 =66\n"
       "  MULTIPART/ALTERNATIVE 49+49 98+6 =6\n"
       "    TEXT/PLAIN 102+1 103+1 =1\n"},
      {"a header that a very long outer delimiter cuts",
       "Content-Type: multipart/mixed; boundary=" + x + "\n\n--" + x + "\n" + inner + "--i\n" +
           inner + "--" + x + "\n\nA\n--" + x + "--\nB",
       kOk,
       "MULTIPART/MIXED 0+3042 3042+9116 =9116\n"
       "  MULTIPART/ALTERNATIVE 6045+49 6094+52 =52\n"
       "    MULTIPART/ALTERNATIVE 6098+49 6147+0 =0\n"
       "  TEXT/PLAIN 9150+1 9151+1 =1\n"},
      {"the same boundary inside",
       "Content-Type: multipart/mixed; boundary=i\n\n--i\n" + inner +
           "--i\n\nA\n--i--\n\n--i\n\nB\n--i--\n",
       kOk,
       "MULTIPART/MIXED 0+43 43+80 =80\n"
       "  MULTIPART/ALTERNATIVE 47+49 96+13 =13\n"
       "    TEXT/PLAIN 100+1 101+1 =1\n"
       "  TEXT/PLAIN 114+1 115+1 =1\n"},
  });
}

TEST(Load, TakesEnclosedMessagesApart) {
  ExpectTrees({
      {"with a multipart", "Content-Type: message/rfc822\n\n" + kMixed + "--b\n\nA\n--b--\n", kOk,
       "MESSAGE/RFC822 0+30 30+58 =58\n"
       "  MULTIPART/MIXED 30+45 75+13 =13\n"
       "    TEXT/PLAIN 79+1 80+1 =1\n"},
      {"ended by the outer delimiter",
       kMixed + "--b\nContent-Type: message/rfc822\n\nA: b\n\nbody\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+51 =51\n"
       "  MESSAGE/RFC822 49+30 79+10 =10\n"
       "    TEXT/PLAIN 79+6 85+4 =4\n"},
      {"empty", kMixed + "--b\nContent-Type: message/rfc822\n\n--b--\n", kOk,
       "MULTIPART/MIXED 0+45 45+40 =40\n"
       "  MESSAGE/RFC822 49+30 79+0 =0\n"
       "    TEXT/PLAIN 79+0 79+0 =0\n"},
      {"delivery status",
       "Content-Type: message/delivery-status\n\nReporting-MTA: dns; x\n\nAction: failed\n", kOk,
       "MESSAGE/DELIVERY-STATUS 0+39 39+38 =38\n"
       "  TEXT/PLAIN 39+23 62+15 =15\n"},
  });
}

TEST(Load, AnswersTheStreamsFaultsAndKeepsWhatItRead) {
  const std::string text = kMixed + "--b\r\nA: b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b--\r\n";
  for (int64_t at = 0; at < std::ssize(text); ++at) {
    for (const int64_t size : testing::kBufferSizes) {
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
  EXPECT_EQ(TreeText(message), "TEXT/PLAIN 0+6 6+1 =1\n");
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

// ---- Everything else --------------------------------------------------------------------------

// Messages thrown together from what parsers stumble over. Whatever comes out, it is the same from
// every source and lies inside the data.
TEST(Load, GivesTheSameTreeOfRandomMailFromEverySource) {
  constexpr const char* kPieces[] = {"\r\n",
                                     "\n",
                                     "\r",
                                     "\r\n\r\n",
                                     "\n\n",
                                     "--b",
                                     "--b--",
                                     "--",
                                     "-",
                                     " ",
                                     "\t",
                                     "--c",
                                     "--c--",
                                     "Content-Type: multipart/mixed; boundary=b\r\n",
                                     "Content-Type: multipart/digest;\r\n boundary=c\n",
                                     "Content-Type: message/rfc822\n",
                                     "Content-Type: application/ms-tnef\n",
                                     "Content-Transfer-Encoding: base64\n",
                                     "Content-Transfer-Encoding: quoted-printable\n",
                                     "Content-Type: multipart/mixed; boundary=\"c-\"\n",
                                     "--c-\n",
                                     "begin 644 f\n",
                                     "#86)C\n",
                                     "end\n",
                                     "b",
                                     "TWFu",
                                     "=3D",
                                     "=",
                                     "text",
                                     "X: y\r\n",
                                     std::string_view("\0", 1).data()};
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (auto count = random() % 40; count > 0; --count) {
      text += kPieces[random() % std::size(kPieces)];
    }
    SCOPED_TRACE(text);
    const std::string want = TreeOf(text);
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
    if (::testing::Test::HasFailure()) break;
  }
}

}  // namespace
}  // namespace mimora

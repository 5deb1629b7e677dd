// Copyright (c) 2026 the mimora developers.
#include "codec/uuencode.h"

#include "support/coders.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kLineEnds[] = {"\n", "\r\n", "\r"};

const StreamCoder kDecoder = DecoderOf("X-UUENCODE");

std::string WithLineEnds(std::string_view text, std::string_view line_end) {
  std::string changed;
  for (const char c : text) c == '\n' ? changed += line_end : changed += c;
  return changed;
}

constexpr size_t kMost = 3;

UuScanner Scan(std::string_view text, size_t piece) {
  UuScanner scanner(kMost);
  for (; !text.empty(); text.remove_prefix(std::min(piece, text.size())))
    scanner.Feed(text.substr(0, piece));
  scanner.Finish();
  return scanner;
}

// ---- A body that is one file --------------------------------------------------------------------

#define BLOCK "begin 644 cat.txt\n#0V%T\n`\nend\n"

// What stands in whole blocks is tested further down.
constexpr CoderCase kDecodeCases[] = {
    {"nothing", "", ""},
    {"text around it", "Dear cat,\nwe begin.\n" BLOCK "end\n#0V%T\n", "Cat"},
    {"only the first of two files", BLOCK "begin 644 dog.txt\n#1&]G\n`\nend\n", "Cat"},
    {"no begin line", "#0V%T\n`\nend\n", ""},
    {"no end line and no line end", "begin 644 cat\n#0V%T", "Cat"},
    {"one and two bytes in a line", "begin 644 cat\n!0P``\n\"0V$`\nend\n", "CCa"},
    {"blanks for zero bits", "begin 644 cat\n!0P  \n\"0V$ \nend\n", "CCa"},
    {"blanks that got lost", "begin 644 cat\n#\n\"0V$\n!0P\nend\n", "\0\0\0CaC"sv},
    {"characters behind the data", "begin 644 cat\n#0V%Tx\n!0P``M\nend\n", "CatC"},
    {"every bit", "begin 644 bits\n&____`````\n#____\nend\n", "\xFF\xFF\xFF\0\0\0\xFF\xFF\xFF"sv},
};

TEST(UuDecoder, DecodesAlikeFromEverySourceAndForEveryLineEnd) {
  for (const CoderCase& c : kDecodeCases) {
    for (const std::string_view line_end : kLineEnds) {
      SCOPED_TRACE(::testing::Message() << c.name << ", line ends of " << line_end.size());
      ExpectCoded(kDecoder, WithLineEnds(c.text, line_end), c.want);
    }
  }
}

// The decoder as one would write it down, character by character.
std::string DecodeLineByLine(std::string_view text) {
  std::string out;
  for (bool inside = false; !text.empty();) {
    std::string line(text.substr(0, text.find_first_of("\r\n")));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const size_t length = line.find_last_not_of(" \t") + 1;
    const bool was_inside = std::exchange(inside, inside || line.starts_with("begin"));
    if (!was_inside || length == 0) continue;
    if (line.substr(0, length) == "end") break;
    const auto value = [&line](size_t i) { return (line[i] - ' ') & 63; };
    const auto size = static_cast<size_t>(value(0));
    line.resize(std::max(line.size(), size_t{100}), ' ');
    for (size_t i = 0; i < size; ++i) {
      const size_t at = 1 + i / 3 * 4 + i % 3;
      const int bits = value(at) << 6 | value(at + 1);
      out += static_cast<char>(bits >> (4 - 2 * (i % 3)));
    }
  }
  return out;
}

std::string RandomFile(std::mt19937& random, size_t lines) {
  const std::string_view line_end = kLineEnds[random() % std::size(kLineEnds)];
  std::string text = "begin 644 cat" + std::string(line_end);
  for (; lines > 0; --lines) {
    const size_t size = random() % 3 == 0 ? random() % 64 : 45;
    std::string line(1 + (size + 2) / 3 * 4, static_cast<char>(' ' + size));
    for (size_t i = 1; i < line.size(); ++i) line[i] = static_cast<char>(' ' + random() % 65);
    text.append(line).append(line_end);
  }
  text.append("`").append(line_end).append("end").append(line_end).append("#0V%T").append(line_end);
  Damage(random, text);
  return text;
}

TEST(UuDecoder, AgreesWithASimpleDecoderOnAnyTextInAnyPieces) {
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = RandomFile(random, random() % (i % 100 == 0 ? 300 : 20));
    const std::string want = DecodeLineByLine(text);
    const auto seed = static_cast<uint32_t>(random());
    ForEveryCpuLevel([&] {
      Moutstream out(MemorySink{}), counting(CountingSink{});
      UuDecoder decoder(out), counter(counting);
      std::mt19937 cuts(seed);
      FeedInPieces(cuts, 1 + cuts() % (i % 4 == 0 ? 40 : 2000), text, decoder, counter);
      ASSERT_EQ(TextOf(out), want) << "text " << i << ": " << text;
      ASSERT_EQ(counting.WritePos(), std::ssize(want)) << "text " << i << ": " << text;
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TEST(UuDecoder, ReportsAndKeepsErrorsAtAnyByte) {
  ExpectErrorsToBeReportedAndKept(kDecoder, BLOCK);
}

// ---- Blocks inside a text -----------------------------------------------------------------------

// The braces, which no encoder writes, stand around the blocks that have to be found.
constexpr struct {
  const char* name;
  std::string_view marked;
  std::string_view files;  // names and decoded sizes
} kScanCases[] = {
    {"nothing", "", ""},
    {"only text", "b\nbe\nbeg\nbegin\nbeginning 644 x\nend\n", ""},
    {"blocks with text around them", "a\n{" BLOCK "}b\n{" BLOCK "}c", "[cat.txt 3][cat.txt 3]"},
    {"two blocks, one behind the other", "{" BLOCK "}{" BLOCK "}", "[cat.txt 3][cat.txt 3]"},
    {"end line at the very end", "{begin 644 cat\n#0V%T\n`\nend}", "[cat 3]"},
    {"end line with blanks", "{begin 644 cat\n#0V%T\n`\nend \t\n}", "[cat 3]"},
    {"empty files", "{begin 644 cat\n`\nend\n}{begin 644 dog\n`\nend\n}", "[cat 0][dog 0]"},
    {"lines of no bytes", "{begin 644 cat\n\n#0V%T\n \n\t\n#0V%T\n`\n\nend\n}", "[cat 6]"},
    {"full lines",
     "{begin 644 cat\n"
     "M____________________________________________________________\n"
     "M            ________________________________________________\n`\nend\n}",
     "[cat 90]"},
    {"blanks behind data and lost ones", "{begin 644 cat\n#0V%T \t \n#0\n#\nend\n}", "[cat 9]"},
    {"a checksum behind the data", "{begin 644 cat\n#0V%Tx\n#0V%Txyz0\n`\nend\n}", "[cat 6]"},
    {"data that ends in blanks", "{begin 644 cat\n!0   \n#    \n \nend\n}", "[cat 4]"},
    {"too much behind the data", "begin 644 cat\n#0V%Txyz00\n`\nend\n", ""},
    {"a name with blanks", "{begin\t644 \t the cat.txt \t\n`\nend\n}", "[the cat.txt 0]"},
    {"modes of four and six digits", "{begin 0644 cat\n`\nend\n}{begin 100644 cat\n`\nend\n}",
     "[cat 0][cat 0]"},
    {"modes of two and seven digits", "begin 64 cat\n`\nend\nbegin 1000644 cat\n`\nend\n", ""},
    {"a mode that is not octal", "begin 648 cat\n`\nend\nbegin 644x cat\n`\nend\n", ""},
    {"no blank or another word", "begin644 cat\n`\nend\nBEGIN 644 cat\n`\nend\n", ""},
    {"a begin line that does not start its line",
     " begin 644 cat\n#0V%T\n`\nend\nI begin 644 cat\n#0V%T\n`\nend\n", ""},
    {"an end line that does not start its line", "begin 644 cat\n#0V%T\n`\n end\n", ""},
    {"no end line and no line end", "begin 644 cat\n#0V%T\n`", ""},
    {"prose inside a block", "begin 644 cat\n#0V%T\nprose\n`\nend\n", ""},
    {"a block behind prose", "begin 644 letters\nand so on\n{" BLOCK "}", "[cat.txt 3]"},
    {"a block behind one that broke off", "begin 644 cat\n#0V%T\n{" BLOCK "}", "[cat.txt 3]"},
    {"a longer word than end", "begin 644 cat\n#0V%T\nending\nend\n", ""},
    {"an 8-bit character in the data", "begin 644 cat\n#0V\xE1T\n`\nend\n", ""},
    {"prose that has no line as long as its first letter says",
     "begin 100 days\n\nHELLO\nWORLD IS A LONG LINE OF TEXT\nend\n", ""},
    {"a line whose blanks were lost", "{begin 644 nil\n#\n`\nend\n}", "[nil 3]"},
    {"a second end line is text", "{" BLOCK "}end\n", "[cat.txt 3]"},
};

TEST(UuScanner, FindsTheSameBlocksForEveryLineEndAndPiece) {
  for (const auto& c : kScanCases) {
    for (const std::string_view line_end : kLineEnds) {
      const std::string marked = WithLineEnds(c.marked, line_end);
      std::string text = marked;
      std::erase_if(text, [](char ch) { return ch == '{' || ch == '}'; });
      for (const size_t piece : {size_t{1}, size_t{2}, size_t{7}, text.size() + 1}) {
        SCOPED_TRACE(::testing::Message()
                     << c.name << ", line ends of " << line_end.size() << ", pieces of " << piece);
        UuScanner scanner = Scan(text, piece);
        std::string found = text;
        std::string files;
        size_t braces = 0;
        int64_t outside = std::ssize(text);
        for (const UuBlock& block : scanner.Blocks()) {
          found.insert(static_cast<size_t>(block.offset) + braces++, "{");
          found.insert(static_cast<size_t>(block.offset + block.length) + braces++, "}");
          files += "[" + block.name + " " + std::to_string(block.decoded_size) + "]";
          outside -= block.length;
          EXPECT_EQ(std::ssize(Coded(kDecoder, text.substr(static_cast<size_t>(block.offset),
                                                           static_cast<size_t>(block.length)))),
                    block.decoded_size);
        }
        EXPECT_EQ(found, marked);
        EXPECT_EQ(files, c.files);
        EXPECT_EQ(scanner.TextSize(), outside);
      }
    }
  }
}

TEST(UuScanner, FindsTheSameBlocksAtEveryCpuLevel) {
  std::mt19937 random(2);
  for (int i = 0; i < 3000; ++i) {
    const std::string text = RandomFile(random, random() % 20) + RandomFile(random, random() % 20);
    const size_t piece = i % 4 == 0 ? 7 : 1 + random() % 3000;
    std::string portable;
    ForEveryCpuLevel([&] {
      UuScanner scanner = Scan(text, piece);
      std::string found = std::to_string(scanner.TextSize());
      for (const UuBlock& block : scanner.Blocks())
        for (const int64_t number : {block.offset, block.length, block.decoded_size})
          found += " " + std::to_string(number);
      if (portable.empty()) portable = found;
      ASSERT_EQ(found, portable) << "text " << i << ": " << text;
    });
    if (::testing::Test::HasFatalFailure()) return;
  }
}

TEST(UuScanner, LinesBeyondTheLimitAreText) {
  const std::string_view begin = "begin 644 ";
  for (const size_t length : {kLongestUuLine - 1, kLongestUuLine, kLongestUuLine + 1}) {
    const bool found = length <= kLongestUuLine;
    const std::string long_name = std::string(begin) + std::string(length - begin.size(), 'n');
    const std::string long_line = "#0V%T" + std::string(length - 5, ' ');
    for (const size_t piece : {size_t{1}, size_t{7}, size_t{999}, size_t{100000}}) {
      SCOPED_TRACE(::testing::Message() << length << " bytes in pieces of " << piece);
      EXPECT_EQ(Scan(long_name + "\n`\nend\n", piece).Blocks().size(), found ? 1u : 0u);
      EXPECT_EQ(Scan("begin 644 cat\n" + long_line + "\n`\nend\n", piece).Blocks().size(),
                found ? 1u : 0u);
    }
  }
}

TEST(UuScanner, BlocksBeyondTheLimitStayText) {
  const std::string_view block = "begin 644 a\n`\nend\n";
  for (const size_t count : {kMost - 1, kMost, kMost + 2}) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += block;
    UuScanner scanner = Scan(text, 32768);
    const size_t found = std::min(count, kMost);
    EXPECT_EQ(scanner.Blocks().size(), found);
    EXPECT_EQ(scanner.TextSize(), static_cast<int64_t>((count - found) * block.size()));
  }
}

}  // namespace
}  // namespace mimora::testing

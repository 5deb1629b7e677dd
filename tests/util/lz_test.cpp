// Copyright (c) 2026 the mimora developers.
#include "util/lz.h"

#include <algorithm>
#include <random>

#include "support/process.h"
#include "util/lz_match_finder.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

std::string Compressed(std::string_view text, LzAllocate allocate = std::malloc) {
  std::string block(1 + text.size() + text.size() / 256, '#');
  block.resize(LzCompress(text, reinterpret_cast<uint8_t*>(block.data()), allocate));
  return block;
}

// Into a buffer that is as large as was counted.
std::string Uncompressed(std::string_view block) {
  std::string text(LzUncompress(block, nullptr), '#');
  EXPECT_EQ(LzUncompress(block, reinterpret_cast<uint8_t*>(text.data())), text.size());
  return text;
}

// ---- The format as one would write it down ------------------------------------------------------

void AppendNumber(std::string& block, size_t number, bool last = true) {
  if (number >= 128) AppendNumber(block, number / 128, false);
  block += static_cast<char>(number % 128 + (last ? 0 : 128));
}

LzMatch SearchPlainly(std::string_view text, size_t position) {
  LzMatch best;
  for (size_t offset = 3; offset <= std::min<size_t>(position, 100000); ++offset) {
    const size_t limit = std::min(text.size() - position, offset);
    if (limit <= best.length) continue;
    const char* const here = text.data() + position;
    if (here[best.length] != *(here + best.length - offset)) continue;
    const auto length =
        static_cast<uint32_t>(std::mismatch(here, here + limit, here - offset).first - here);
    if (length > best.length) best = {length, static_cast<uint32_t>(offset)};
  }
  return best;
}

std::string CompressedPlainly(std::string_view text) {
  if (text.empty()) return "";
  size_t counts[256] = {};
  for (const char c : text) ++counts[static_cast<uint8_t>(c)];
  const char marker = static_cast<char>(std::min_element(counts, counts + 256) - counts);
  std::string block(1, marker);
  for (size_t at = 0; at < text.size();) {
    const LzMatch m = text.size() - at > 3 ? SearchPlainly(text, at) : LzMatch();
    if (m.length > 5 || (m.length == 5 && m.offset < 16384) || (m.length == 4 && m.offset < 128)) {
      block += marker;
      AppendNumber(block, m.length);
      AppendNumber(block, m.offset);
      at += m.length;
    } else {
      block += text[at];
      if (text[at++] == marker) block += '\0';
    }
  }
  return block;
}

// ---- Texts --------------------------------------------------------------------------------------

std::string RandomBytes(std::mt19937& random, size_t size, unsigned kinds) {
  std::string text(size, '\0');
  for (char& c : text) c = static_cast<char>('a' + random() % kinds);
  return text;
}

std::string Repeated(std::string_view text, size_t size) {
  std::string repeated;
  while (repeated.size() < size) repeated += text;
  return repeated.substr(0, size);
}

std::string FibonacciWord(size_t size) {
  std::string shorter = "b", word = "a";
  while (word.size() < size) shorter = std::exchange(word, word + shorter);
  return word.substr(0, size);
}

// Every word of 16 bits once.
std::string DeBruijnSequence(size_t size) {
  std::string text;
  for (unsigned state = 1; text.size() < size; state = state >> 1 ^ (-(state & 1) & 0xB400))
    text += static_cast<char>('0' + (state & 1));
  return text;
}

std::string SameFourBytes(std::mt19937& random, size_t size, size_t between) {
  std::string text;
  while (text.size() < size) text += "key=" + RandomBytes(random, between, 256);
  return text.substr(0, size);
}

std::string Runs(std::mt19937& random, size_t size, unsigned longest) {
  std::string text;
  while (text.size() < size)
    text += std::string(1 + random() % longest, 'a') + static_cast<char>('b' + random() % 2);
  return text.substr(0, size);
}

std::string CopiesOfItself(std::mt19937& random, size_t size) {
  std::string text = RandomBytes(random, 8, 4);
  while (text.size() < size) {
    text += RandomBytes(random, random() % 4, 4);
    text += text.substr(random() % text.size(), 1 + random() % 60);
  }
  return text.substr(0, size);
}

std::string PeriodicWithFaults(std::mt19937& random, size_t size, size_t period) {
  std::string text = Repeated(RandomBytes(random, period, 3), size);
  for (int i = 0; i < 4; ++i) text[random() % size] = '#';
  return text;
}

struct Text {
  std::string name;
  std::string text;
};

// Texts that are hard to search, each in its own way.
std::vector<Text> HostileTexts(std::mt19937& random, size_t size) {
  const size_t period = 1 + random() % 300;
  const auto longest = static_cast<unsigned>(1 + random() % 100);
  return {{"a run", std::string(size, 'a')},
          {"a period", Repeated(RandomBytes(random, period, 2), size)},
          {"a period with faults", PeriodicWithFaults(random, size, period)},
          {"two periods that do not meet", Repeated(Repeated("ab", period | 1), size)},
          {"two letters", RandomBytes(random, size, 2)},
          {"18 letters", RandomBytes(random, size, 18)},
          {"any bytes", RandomBytes(random, size, 256)},
          {"a Fibonacci word", FibonacciWord(size)},
          {"a de Bruijn sequence", DeBruijnSequence(size)},
          {"the same four bytes, close", SameFourBytes(random, size, 2)},
          {"the same four bytes, far apart", SameFourBytes(random, size, 150)},
          {"runs of all lengths", Runs(random, size, longest)},
          {"copies of itself", CopiesOfItself(random, size)}};
}

// ---- Compressing --------------------------------------------------------------------------------

TEST(LzCompress, WritesTheseBytes) {
  std::string all, all_escaped("\0\0\0"sv);
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  all_escaped += all.substr(1);
  const struct {
    const char* name;
    std::string_view text, want;
  } cases[] = {
      {"nothing", "", ""},
      {"one byte", "A", "\0A"sv},
      {"the lowest of the rarest bytes is the marker", "\0\1"sv, "\2\0\1"sv},
      {"all bytes: the marker is zero, and escaped", all, all_escaped},
      {"a match is not longer than its offset", "abcabcabcabc", "\0abcabc\0\6\6"sv},
      {"a run", "xxxxxxxxxxxxxxxxxxxx", "\0xxxx\0\4\4\0\x8\x8\0\4\4"sv},
      {"growing matches", "abcdefghabcdefghabcdefghabcdefgh", "\0abcdefgh\0\x8\x8\0\x10\x10"sv},
      {"three bytes at the end", "abcdefabc", "\0abcdefabc"sv},
      {"among equally long ones the nearest", "abcde1abcde2abcde",
       "\0abcde1\0\5\6"
       "2\0\5\6"sv},
  };
  for (const auto& c : cases) EXPECT_EQ(Compressed(c.text), c.want) << c.name;
}

// HEAD occurs again OFFSET bytes behind its start.
TEST(LzCompress, TakesMatchesThatSaveSpaceFromTheWindow) {
  const struct {
    std::string head;
    size_t offset;
    std::string_view token;
  } cases[] = {
      {"ABCD", 127, "\0\4\x7F"sv},
      {"ABCD", 128, "ABCD"},
      {"ABCDE", 128, "\0\5\x81\0"sv},
      {"ABCDE", 16383, "\0\5\xFF\x7F"sv},
      {"ABCDE", 16384, "ABCDE"},
      {"ABCDEF", 16384, "\0\6\x81\x80\0"sv},
      {"ABCDEFGHIJ", 100000, "\0\xA\x86\x8D\x20"sv},
      {"ABCDEFGHIJ", 100001, "ABCDEFGHIJ"},
  };
  std::mt19937 random(1);
  const std::string filling = RandomBytes(random, 100, 20);
  for (const auto& c : cases) {
    const std::string between = Repeated(filling, c.offset - c.head.size());
    const std::string block = Compressed(c.head + between + c.head);
    EXPECT_TRUE(block.ends_with(c.token)) << c.head << " from " << c.offset;
    EXPECT_EQ(block, CompressedPlainly(c.head + between + c.head));
  }
}

void* NoMemory(size_t) { return nullptr; }

TEST(LzCompress, FindsWhatTheSearchOfAllOffsetsFinds) {
  std::mt19937 random(1);
  for (int i = 0; i < 40; ++i) {
    for (const Text& t : HostileTexts(random, i % 20 == 0 ? 20000 : 10 + random() % 1500)) {
      SCOPED_TRACE(t.name + ", round " + std::to_string(i));
      const std::string want = CompressedPlainly(t.text);
      ASSERT_EQ(Compressed(t.text), want);
      ASSERT_EQ(Uncompressed(want), t.text);
      const bool quick = t.text.size() < 2000;
      ASSERT_EQ(Compressed(t.text, quick ? NoMemory : std::malloc), want);
    }
  }
}

// What the window and the stretches of the index cut.
TEST(LzCompress, FindsMatchesAcrossTheWholeWindow) {
  std::mt19937 random(2);
  const std::string noise = RandomBytes(random, 3000, 256);
  for (const size_t period : {3000u, 49999u, 99990u, 100000u, 100001u}) {
    SCOPED_TRACE(period);
    std::string text =
        Repeated(Repeated(noise, period - 100) + RandomBytes(random, 100, 2), 450000);
    for (size_t at = 120000; at < text.size(); at += 70001) text[at] = '!';
    ASSERT_EQ(Compressed(text), CompressedPlainly(text));
  }
}

// These would take minutes if any way to search went wrong.
TEST(LzCompress, TakesNoLongForAnyText) {
  std::mt19937 random(3);
  for (const Text& t : HostileTexts(random, 500000))
    ASSERT_TRUE(Uncompressed(Compressed(t.text)) == t.text) << t.name;
}

// ---- The ways to search -------------------------------------------------------------------------

TEST(LzSuffixIndex, AgreesWithTheSearchOfAllOffsets) {
  std::mt19937 random(4);
  for (int i = 0; i < 40; ++i) {
    for (const Text& t : HostileTexts(random, 10 + random() % 1500)) {
      const auto* const bytes = reinterpret_cast<const uint8_t*>(t.text.data());
      const auto size = static_cast<uint32_t>(t.text.size());
      const auto first = static_cast<uint32_t>(random() % (size - 4));
      LzSuffixIndex index;
      ASSERT_TRUE(index.Build(bytes, size, first, std::malloc));
      for (uint32_t at = first; at < size - 3; at += 1 + at % 3) {
        LzMatch match;
        ASSERT_TRUE(index.Find(at, match));
        ASSERT_EQ(match, SearchPlainly(t.text, at)) << t.name << " at " << at;
      }
    }
  }
}

// A match that reaches the end of the stretch may be longer than the index can know.
TEST(LzSuffixIndex, AnswersUpToWhereAMatchLeavesItsStretch) {
  std::mt19937 random(9);
  const std::string text = Repeated(RandomBytes(random, 50000, 200), 600000);
  const auto* const bytes = reinterpret_cast<const uint8_t*>(text.data());
  constexpr uint32_t kLast = LzSuffixIndex::kLongestStretch - kLzWindow - 1;
  LzSuffixIndex index;
  LzMatch match;
  ASSERT_TRUE(index.Build(bytes, 600000, 0, std::malloc));
  EXPECT_TRUE(index.Find(kLast, match));
  EXPECT_EQ(match, (LzMatch{100000, 100000}));
  EXPECT_FALSE(index.Find(kLast + 1, match));
  ASSERT_TRUE(index.Build(bytes, 600000, kLast + 1, std::malloc));
  EXPECT_TRUE(index.Find(kLast + 1, match));
  EXPECT_EQ(match, (LzMatch{100000, 100000}));
}

TEST(LzChains, AgreeWithTheSearchOfAllOffsetsWhereSpaceIsSaved) {
  std::mt19937 random(5);
  for (int i = 0; i < 20; ++i) {
    for (const Text& t : HostileTexts(random, 10 + random() % 1500)) {
      const auto size = static_cast<uint32_t>(t.text.size());
      LzChains chains(reinterpret_cast<const uint8_t*>(t.text.data()), size);
      ASSERT_TRUE(chains.Prepare(std::malloc));
      for (uint32_t at = 0; at + LzChains::kLeastLeft <= size; at += 1 + at % 3) {
        LzMatch match, want = SearchPlainly(t.text, at);
        if (want.length == 4 && want.offset > kLzLargestOffsetOfFour) want = {};
        int64_t effort = INT64_MAX;
        ASSERT_TRUE(chains.Find(at, effort, match));
        ASSERT_EQ(match, want) << t.name << " at " << at;
      }
    }
  }
}

int allocations_left = 0;

void* MemoryForAWhile(size_t size) { return allocations_left-- > 0 ? std::malloc(size) : nullptr; }

TEST(LzCompress, WritesTheSameWhenMemoryIsShort) {
  std::mt19937 random(6);
  const std::string text =
      RandomBytes(random, 20000, 2) + RandomBytes(random, 20000, 40) + std::string(20000, 'a');
  for (int count = 0; count < 3; ++count) {
    allocations_left = count;
    EXPECT_TRUE(Compressed(text, MemoryForAWhile) == Compressed(text)) << count;
  }
}

TEST(LzCompress, SortsNoSuffixesOfUsualTexts) {
  std::mt19937 random(10);
  for (const size_t size : {3000u, 30000u, 150000u}) {
    allocations_left = 9;
    Compressed(RandomBytes(random, size, 18), MemoryForAWhile);
    EXPECT_EQ(allocations_left, 8) << size << ": only chains";
  }
}

TEST(LzCompress, LogsAnExceptionAndLetsItPass) {
  const auto work = [] {
    std::mt19937 random(7);
    const auto fail = [](size_t) -> void* { throw std::bad_alloc(); };
    try {
      Compressed(RandomBytes(random, 50000, 30), fail);
    } catch (const std::bad_alloc&) {
      Show("passed");
    }
    std::string log = ReadFile(log_file);
    log.erase(log.find("offset="));
    Show(log.substr(log.find("<E>")).c_str());
  };
  ExpectShown("", "l", work, "passed|<E>: LZ_Compress 0xc, ex_pos=4,  insize=50000, |");
}

// ---- Uncompressing ------------------------------------------------------------------------------

TEST(LzUncompress, TakesAnyBlockAndNeverReadsOrWritesBesideIt) {
  const struct {
    const char* name;
    std::string_view block, want;
  } cases[] = {
      {"nothing", "", ""},
      {"a marker", "\0"sv, ""},
      {"the marker escaped, zero and others", "\0a\0\0"sv, "a\0"sv},
      {"the marker escaped, of all values", "xx\0ax\0"sv, "xax"},
      {"a match that reads what it writes", "\0ab\0\5\2"sv, "abababa"},
      {"a match that repeats one byte", "\0a\0\x9\1"sv, "aaaaaaaaaa"},
      {"a match of length 0", "\0ab\0\x80\0\2c"sv, "abc"},
      {"leading zeros in numbers", "\0ab\0\x80\2\x80\x80\2"sv, "abab"},
      {"numbers of more than 32 bits lose the upper ones", "\0ab\0\x90\x80\x80\x80\2\2"sv, "abab"},
      {"the marker at the end", "\0ab\0"sv, "ab"},
      {"a length that is cut", "\0ab\0\x82"sv, "ab"},
      {"no offset", "\0ab\0\2"sv, "ab"},
      {"an offset that is cut", "\0ab\0\2\x81"sv, "ab"},
      {"an offset to the first byte", "\0ab\0\2\2c"sv, "ababc"},
      {"an offset in front of the output", "\0ab\0\2\3c"sv, "ab"},
      {"an offset at the very start", "\0\0\2\1c"sv, ""},
      {"a match that would pass 4 GiB", "\0ab\0\x8F\xFF\xFF\xFF\x7E\1c"sv, "ab"},
  };
  for (const auto& c : cases) {
    const std::vector<char> exact(c.block.begin(), c.block.end());
    EXPECT_EQ(Uncompressed({exact.data(), exact.size()}), c.want) << c.name;
  }
  EXPECT_EQ(LzUncompress("\0a\0\x8F\xFF\xFF\xFF\x7E\1b"sv, nullptr), UINT32_MAX) << "just 4 GiB";
  EXPECT_EQ(Uncompressed("\0ab\0\2\0c"sv), "ab##c") << "offset 0 leaves what is there";
}

TEST(LzUncompress, CountsWhatItWritesForDamagedBlocks) {
  std::mt19937 random(8);
  for (int i = 0; i < 3000; ++i) {
    std::string block = Compressed(CopiesOfItself(random, 10 + random() % 300));
    for (int k = 0; k < 3; ++k) block[random() % block.size()] = static_cast<char>(random());
    if (LzUncompress(block, nullptr) < 1000000) Uncompressed(block);
  }
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
#include "stream/minstream.h"

#include <sys/stat.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_literals;

std::string ReadAll(Minstream& in) {
  std::string text;
  in.ReadToString(text, kWholeStream);
  return text;
}

// ---- Lines ----------------------------------------------------------------------------------

// Every kind of line end, cut at every place by some source.
TEST(ReadLine, GivesTheSameLinesFromEverySource) {
  const struct {
    const char* name;
    std::string text;
    const char* delimiter;
    std::string want;  // every line with the line end that is told, then a bar
  } cases[] = {
      {"nothing", "", "", ""},
      {"one line without end", "abc", "", "abc|"},
      {"all kinds", "a\r\nb\nc\rd", "", "a\r\n|b\n|c\r|d|"},
      {"empty lines", "\r\n\n\r\r\n", "", "\r\n|\n|\r|\r\n|"},
      {"CR at the very end", "a\r", "", "a\r|"},
      {"zeros", "a\0b\n"s, "", "a\0b\n|"s},
      {"in front of a delimiter", "A\r\n--b\r\nB", "--b", "A|"},
      {"empty line in front of a delimiter", "A\r\n\r\n--b\r\nB", "--b", "A\r\n||"},
      {"lone CR in front of a delimiter", "A\r\r\n--b\r\nB", "--b", "A\r|"},
      {"delimiter at the very start", "--b\r\nB", "--b", ""},
      {"delimiter text that goes on", "A\n--bx\nB", "--b", "A\n|--bx\n|B|"},
      {"delimiter text behind a lone CR", "A\r--b\nB", "--b", "A\r|--b\n|B|"},
      {"delimiter text in the middle of a line", "A--b\nB", "--b", "A--b\n|B|"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&c](Minstream& in) {
      in.SetBoundary(c.delimiter);
      std::string lines;
      LineEnd end{};
      for (std::string_view line; in.ReadLine(line, &end);) {
        lines += line;
        if (end == LineEnd::kCr || end == LineEnd::kCrLf) lines += '\r';
        if (end == LineEnd::kLf || end == LineEnd::kCrLf) lines += '\n';
        lines += '|';
      }
      EXPECT_EQ(lines, c.want);
    });
  }
}

// ---- Delimiters -----------------------------------------------------------------------------

TEST(Boundary, StopsInFrontOfTheDelimiterAndGoesOnBehindIt) {
  const std::string blanks(2000, ' ');
  const std::string near_misses = "\n-\n--\n--a\n--bb\n--b-\n--b-2\n--b---\n--b-- words\nA";
  const struct {
    const char* name;
    std::string text;
    std::string before;  // what is read up to the delimiter
    int64_t position;    // of the delimiter
    std::string line;    // the delimiter line
    bool closes;
    std::string behind;  // what is read once the hit is cleared and the delimiter disarmed
  } cases[] = {
      {"CR LF", "A\r\n--b\r\nB", "A", 1, "--b", false, "B"},
      {"LF", "A\n--b\nB", "A", 1, "--b", false, "B"},
      {"at the start", "--b\r\nB", "", 0, "--b", false, "B"},
      {"at the end", "A\r\n--b", "A", 1, "--b", false, ""},
      {"closing", "A\r\n--b--\r\nB", "A", 1, "--b--", true, "B"},
      {"closing with blanks", "A\r\n--b-- \t\r\nB", "A", 1, "--b-- \t", true, "B"},
      {"ended by a lone CR", "A\n--b\rB", "A", 1, "--b", false, "B"},
      {"two line ends", "A\r\n\r\n--b\r\nB", "A\r\n", 3, "--b", false, "B"},
      {"CR in front of the line end", "A\r\r\n--b\nB", "A\r", 2, "--b", false, "B"},
      {"near misses", near_misses + "\n--b words\nB", near_misses, std::ssize(near_misses),
       "--b words", false, "B"},
      {"near miss at the end", "A\n--b-", "A\n--b-", 0, "", false, ""},
      {"two in a row", "A\n--b\n--b\nB", "A", 1, "--b", false, "B"},
      {"closed directly behind", "A\r\n--b\r\n--b--\r\nB", "A", 1, "--b--", true, "B"},
      {"many in a row", "A\n--b\n--b\n--b x\n--b y\n\nB", "A", 1, "--b y", false, "\nB"},
      {"long tail", "A\n--b" + blanks + "\nB", "A", 1, "--b" + blanks.substr(1000), false, "B"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&c](Minstream& in) {
      in.SetBoundary("--b");
      EXPECT_EQ(ReadAll(in), c.before);
      EXPECT_EQ(in.BoundaryHit(), !c.line.empty());
      EXPECT_EQ(in.BoundaryPosition(), c.position);
      EXPECT_EQ(in.ClosingHit(), c.closes);
      EXPECT_EQ(in.BoundaryLine(), c.line);
      EXPECT_EQ(ReadAll(in), "") << "while the hit is set nothing is read";
      in.ClearBoundaryHit();
      in.SetBoundary({});
      EXPECT_EQ(in.Position(), std::ssize(c.text) - std::ssize(c.behind));
      EXPECT_EQ(ReadAll(in), c.behind);
    });
  }
}

// A run that is copied at once must not make the stream forget where a line began.
TEST(Boundary, IsNoneInTheMiddleOfALineThatWasReadInPieces) {
  ForEverySource("abc--b\nd\n--b\n", [](Minstream& in) {
    in.SetBoundary("--b");
    char start[3];
    ASSERT_EQ(in.ReadBlock(start, 3), 3);
    EXPECT_EQ(ReadAll(in), "--b\nd");
    EXPECT_TRUE(in.BoundaryHit());
  });
}

TEST(Boundary, KeepsItsHitWhenArmedAgainButNotWhenAnotherIsOrBehindASeek) {
  ForEverySource("A\n--b\nB", [](Minstream& in) {
    in.SetBoundary("--b");
    in.Skip();
    in.SetBoundary("--b");
    EXPECT_TRUE(in.BoundaryHit());
    in.Seek(0);
    EXPECT_FALSE(in.BoundaryHit());
    EXPECT_EQ(ReadAll(in), "A");
    in.SetBoundary("--c");
    EXPECT_FALSE(in.BoundaryHit());
    EXPECT_EQ(ReadAll(in), "B");
  });
}

// ---- Position and limit ---------------------------------------------------------------------

TEST(Seek, FindsEveryPositionFromEveryOther) {
  const std::string text = "0123456789";
  ForEverySource(text, [&](Minstream& in) {
    for (int64_t from = 0; from < std::ssize(text); ++from) {
      for (int64_t to = 0; to < std::ssize(text); ++to) {
        in.Seek(from);
        in.ReadBlock(nullptr, 3);
        in.Seek(to);
        EXPECT_EQ(in.Position(), to);
        EXPECT_EQ(ReadAll(in), text.substr(static_cast<size_t>(to)));
      }
    }
  });
}

TEST(Seek, OutsideAMemoryStreamIsIgnored) {
  Minstream in(SourceOf("abc"));
  in.Seek(1);
  for (const int64_t position : {int64_t{3}, int64_t{99}, int64_t{-1}}) {
    in.Seek(position);
    EXPECT_EQ(in.Position(), 1);
  }
}

TEST(ReadLimit, FencesABufferedStreamAndIsIgnoredInMemory) {
  const std::string text = "abc\r\n--b\r\ndef";
  for (int64_t limit = 0; limit <= std::ssize(text); ++limit) {
    SCOPED_TRACE(limit);
    bool memory = true;  // the first source is the memory
    ForEverySource(text, [&](Minstream& in) {
      in.SetReadLimit(limit);
      EXPECT_EQ(ReadAll(in), memory ? text : text.substr(0, static_cast<size_t>(limit)));
      in.SetReadLimit(kNoReadLimit);
      in.Seek(0);
      EXPECT_EQ(ReadAll(in), text);
      memory = false;
    });
  }
}

// The limit is the end of the data: a delimiter in front of it is complete, one across it is none.
TEST(ReadLimit, CutsADelimiterToo) {
  DripSource source("A\r\n--b\r\nB");
  Minstream in(source.Reading(), 4);
  in.SetBoundary("--b");
  in.SetReadLimit(6);
  EXPECT_EQ(ReadAll(in), "A");
  EXPECT_TRUE(in.BoundaryHit());
  in.Seek(0);
  in.SetReadLimit(5);
  EXPECT_EQ(ReadAll(in), "A\r\n--");
}

// ---- Callers that do not keep their word ------------------------------------------------------

TEST(Callbacks, ThatAnswerNonsenseEndTheDataWithAnError) {
  const CallbackSource sources[] = {
      {.read = [](intptr_t, void*, int64_t length) { return length + 1; }},
      {.read = [](intptr_t, void*, int64_t) { return int64_t{-2}; }},
      {.read = [](intptr_t, void*, int64_t) { return int64_t{-1}; }},
      {.readptr =
           [](intptr_t, const void** bytes, int64_t) {
             *bytes = nullptr;
             return int64_t{3};
           }},
      {.readptr =
           [](intptr_t, const void** bytes, int64_t length) {
             *bytes = "abc";
             return length + 1;
           }},
  };
  for (const CallbackSource& source : sources) {
    Minstream in(source, 16);
    EXPECT_EQ(ReadAll(in), "");
    EXPECT_EQ(in.GetError(), EIO);
  }
}

// The second byte comes behind an end.
int64_t EndOnce(intptr_t context, void* destination, int64_t) {
  int& calls = *reinterpret_cast<int*>(context);
  *static_cast<char*>(destination) = 'x';
  return ++calls == 2 ? 0 : 1;
}

TEST(Callbacks, ThatGoOnBehindTheirEndAreNotAskedAgainWithoutASeek) {
  int calls = 0;
  const auto nothing = [](intptr_t, int64_t) {};
  Minstream in({.context = reinterpret_cast<intptr_t>(&calls), .read = EndOnce, .seek = nothing},
               16);
  EXPECT_EQ(ReadAll(in), "x");
  EXPECT_EQ(ReadAll(in), "");
  in.Seek(5);
  char c = 0;
  EXPECT_TRUE(in.GetChar(c));
}

TEST(Callbacks, AreAskedForTheirPositionOnceAndMayLie) {
  DripSource source("abcdef", 2);
  CallbackSource callbacks = source.Reading();
  callbacks.tell = [](intptr_t) { return int64_t{0}; };
  Minstream in(callbacks, 2);
  for (int64_t position = 0; position < 6; ++position) {
    EXPECT_EQ(in.Position(), position);
    in.ReadBlock(nullptr, 1);
  }
}

TEST(Callbacks, MayBeginAnywhereAndLackSeekAndTell) {
  DripSource source("abcdef");
  CallbackSource callbacks = source.Reading();
  callbacks.seek(callbacks.context, 2);
  Minstream in(callbacks, 2);
  EXPECT_EQ(in.Position(), 2);
  EXPECT_EQ(ReadAll(in), "cdef");

  callbacks.seek(callbacks.context, 0);
  callbacks.seek = nullptr;
  callbacks.tell = nullptr;
  Minstream once(callbacks, 2);
  EXPECT_EQ(ReadAll(once), "abcdef");
  once.Seek(0);
  EXPECT_EQ(once.GetError(), ESPIPE);
}

TEST(Callbacks, ThatFailAtAnyByteHandOutWhatCameBefore) {
  const std::string text = "ab\r\n--b\r\ncd";
  for (int64_t at = 0; at < std::ssize(text); ++at) {
    for (const int64_t size : kBufferSizes) {
      SCOPED_TRACE(::testing::Message() << "fails at " << at << ", buffer of " << size);
      DripSource source(text, 3, at);
      Minstream in(source.Reading(), size);
      EXPECT_EQ(ReadAll(in), text.substr(0, static_cast<size_t>(at)));
      EXPECT_EQ(in.GetError(), EIO);
    }
  }
}

// ---- Files ----------------------------------------------------------------------------------

TEST(FileStream, RefusesWhatItCannotReadAndTellsWhy) {
  const TextFile big("");
  ASSERT_EQ(truncate(big.Name(), int64_t{1} << 31), 0);
  const TextFile largest("");
  ASSERT_EQ(truncate(largest.Name(), std::numeric_limits<int32_t>::max()), 0);
  const TextFile pipe("");
  platform::Remove(pipe.Name());
  ASSERT_EQ(mkfifo(pipe.Name(), 0600), 0);
  struct {
    const char* name;
    int32_t error;
  } const cases[] = {
      {"/nonexistent/file", ENOENT}, {"/", EISDIR},       {pipe.Name(), ESPIPE},
      {big.Name(), EOVERFLOW},       {largest.Name(), 0}, {nullptr, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name != nullptr ? c.name : "no name");
    Minstream in(FileSource{.name = c.name}, 16);
    EXPECT_EQ(in.GetError(), c.error);
    EXPECT_EQ(in.IsOpen(), c.name == largest.Name());
    EXPECT_EQ(in.ReadBlock(nullptr, 1), in.IsOpen() ? 1 : 0);
  }
}

// ---- Sharing --------------------------------------------------------------------------------

TEST(Lock, IsForOneThreadAndAsOftenAsItLikes) {
  Minstream in(MemorySource{});
  in.Lock();
  in.Lock();
  std::atomic<bool> started{false};
  std::atomic<bool> entered{false};
  std::thread other([&] {
    started = true;
    in.Lock();
    entered = true;
    in.Unlock();
  });
  while (!started) std::this_thread::yield();
  in.Unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(entered);
  in.Unlock();
  other.join();
  EXPECT_TRUE(entered);
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
#include "stream/minstream.h"

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <thread>

#include "support/sources.h"

namespace mimora {
namespace {

using testing::DripSource;
using testing::ForEverySource;
using testing::TextFile;

std::string ReadAll(Minstream& in) {
  std::string text;
  in.ReadToString(text, kWholeStream);
  return text;
}

// ---- Lines ----------------------------------------------------------------------------------

struct LineCase {
  const char* name;
  std::string text;
  const char* delimiter;
  std::vector<std::pair<std::string, LineEnd>> want;
};

// Every kind of line end, cut at every place by some source.
TEST(ReadLine, GivesTheSameLinesFromEverySource) {
  const LineCase cases[] = {
      {"nothing", "", "", {}},
      {"one line without end", "abc", "", {{"abc", LineEnd::kNone}}},
      {"all kinds",
       "a\r\nb\nc\rd",
       "",
       {{"a", LineEnd::kCrLf}, {"b", LineEnd::kLf}, {"c", LineEnd::kCr}, {"d", LineEnd::kNone}}},
      {"empty lines",
       "\r\n\n\r\r\n",
       "",
       {{"", LineEnd::kCrLf}, {"", LineEnd::kLf}, {"", LineEnd::kCr}, {"", LineEnd::kCrLf}}},
      {"CR at the very end", "a\r", "", {{"a", LineEnd::kCr}}},
      {"zeros", std::string("a\0b\n", 4), "", {{std::string("a\0b", 3), LineEnd::kLf}}},
      {"in front of a delimiter", "A\r\n--b\r\nB", "--b", {{"A", LineEnd::kNone}}},
      {"empty line in front of a delimiter",
       "A\r\n\r\n--b\r\nB",
       "--b",
       {{"A", LineEnd::kCrLf}, {"", LineEnd::kNone}}},
      {"delimiter at the very start", "--b\r\nB", "--b", {}},
      {"delimiter text that goes on",
       "A\n--bx\nB",
       "--b",
       {{"A", LineEnd::kLf}, {"--bx", LineEnd::kLf}, {"B", LineEnd::kNone}}},
      {"delimiter text behind a lone CR",
       "A\r--b\nB",
       "--b",
       {{"A", LineEnd::kCr}, {"--b", LineEnd::kLf}, {"B", LineEnd::kNone}}},
      {"delimiter text in the middle of a line",
       "A--b\nB",
       "--b",
       {{"A--b", LineEnd::kLf}, {"B", LineEnd::kNone}}},
  };
  for (const LineCase& c : cases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&c](Minstream& in) {
      in.SetBoundary(c.delimiter);
      std::vector<std::pair<std::string, LineEnd>> lines;
      LineEnd end{};
      for (std::string_view line; in.ReadLine(line, &end);) lines.emplace_back(line, end);
      EXPECT_EQ(lines, c.want);
    });
  }
}

// ---- Delimiters -----------------------------------------------------------------------------

struct HitCase {
  const char* name;
  std::string text;
  std::string before;  // what is read up to the delimiter
  int64_t position;    // of the delimiter
  const char* line;    // the delimiter line
  bool closes;
  std::string behind;  // what is read once the hit is cleared and the delimiter disarmed
};

TEST(Boundary, StopsInFrontOfTheDelimiterAndGoesOnBehindIt) {
  const std::string blanks(2000, ' ');
  const HitCase cases[] = {
      {"CR LF", "A\r\n--b\r\nB", "A", 1, "--b", false, "B"},
      {"LF", "A\n--b\nB", "A", 1, "--b", false, "B"},
      {"at the start", "--b\r\nB", "", 0, "--b", false, "B"},
      {"at the end", "A\r\n--b", "A", 1, "--b", false, ""},
      {"closing", "A\r\n--b--\r\nB", "A", 1, "--b--", true, "B"},
      {"closing with blanks", "A\r\n--b-- \t\r\nB", "A", 1, "--b-- \t", true, "B"},
      {"ended by a lone CR", "A\n--b\rB", "A", 1, "--b", false, "B"},
      {"two line ends", "A\r\n\r\n--b\r\nB", "A\r\n", 3, "--b", false, "B"},
      {"CR in front of the line end", "A\r\r\n--b\nB", "A\r", 2, "--b", false, "B"},
      {"near misses", "\n-\n--\n--a\n--bb\n--b-\nA\n--b\nB", "\n-\n--\n--a\n--bb\n--b-\nA", 21,
       "--b", false, "B"},
      {"two in a row", "A\n--b\n--b\nB", "A", 1, "--b", false, "B"},
      {"closed directly behind", "A\r\n--b\r\n--b--\r\nB", "A", 1, "--b--", true, "B"},
      {"many in a row", "A\n--b\n--b\n--b x\n--b y\n\nB", "A", 1, "--b y", false, "\nB"},
      {"long tail", "A\n--b " + blanks + "\nB", "A", 1, "", false, "B"},
  };
  for (const HitCase& c : cases) {
    SCOPED_TRACE(c.name);
    ForEverySource(c.text, [&c](Minstream& in) {
      in.SetBoundary("--b");
      EXPECT_EQ(ReadAll(in), c.before);
      EXPECT_TRUE(in.BoundaryHit());
      EXPECT_EQ(in.BoundaryPosition(), c.position);
      EXPECT_EQ(in.ClosingHit(), c.closes);
      // Of a long line only a part is kept.
      if (*c.line != '\0') {
        EXPECT_EQ(in.BoundaryLine(), c.line);
      }
      EXPECT_LT(in.BoundaryLine().size(), 1100u);
      char character = 0;
      EXPECT_FALSE(in.GetChar(character)) << "while the hit is set nothing is read";
      in.ClearBoundaryHit();
      in.SetBoundary({});
      EXPECT_EQ(in.Position(), std::ssize(c.text) - std::ssize(c.behind));
      EXPECT_EQ(ReadAll(in), c.behind);
    });
  }
}

// A boundary that is longer than the buffer, and a text that agrees with nearly all of it.
TEST(Boundary, IsSeenHoweverLongItIs) {
  const std::string delimiter = "--" + std::string(5000, 'x');
  const std::string text = "A\n" + delimiter.substr(0, 4999) + "\n" + delimiter + "\nB";
  ForEverySource(text, [&](Minstream& in) {
    in.SetBoundary(delimiter);
    EXPECT_EQ(ReadAll(in), "A\n" + delimiter.substr(0, 4999));
    EXPECT_TRUE(in.InnermostHit());
  });
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

TEST(Boundary, OfAnOuterMultipartEndsTheInnerOne) {
  ForEverySource("x\r\n--in--\r\n--out\r\ny\r\n--out--", [](Minstream& in) {
    in.EnterBoundary("--out");
    in.EnterBoundary("--in");
    EXPECT_EQ(ReadAll(in), "x");
    EXPECT_TRUE(in.InnermostHit());
    EXPECT_TRUE(in.ClosingHit());
    in.LeaveBoundary();
    EXPECT_FALSE(in.BoundaryHit());
    // The line end between the two belongs to the outer one.
    in.Skip();
    EXPECT_TRUE(in.InnermostHit());
    EXPECT_EQ(in.BoundaryPosition(), 9);
    in.ClearBoundaryHit();
    in.EnterBoundary("--other");
    EXPECT_EQ(ReadAll(in), "y");
    EXPECT_FALSE(in.InnermostHit());
    in.LeaveBoundary();
    EXPECT_TRUE(in.InnermostHit()) << "a hit on the outer one stays";
  });
}

TEST(Boundary, ArmedAgainKeepsItsHit) {
  Minstream in(MemorySource{.data = "A\n--b\nB", .length = 7});
  in.SetBoundary("--b");
  in.Skip();
  in.SetBoundary("--b");
  EXPECT_TRUE(in.BoundaryHit());
  in.SetBoundary("--c");
  EXPECT_FALSE(in.BoundaryHit());
  EXPECT_EQ(ReadAll(in), "B");
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

TEST(Seek, ClearsAHit) {
  ForEverySource("A\n--b\nB", [](Minstream& in) {
    in.SetBoundary("--b");
    in.Skip();
    ASSERT_TRUE(in.BoundaryHit());
    in.Seek(0);
    EXPECT_FALSE(in.BoundaryHit());
    EXPECT_EQ(ReadAll(in), "A");
  });
}

TEST(Seek, OutsideAMemoryStreamIsIgnored) {
  Minstream in(MemorySource{.data = "abc", .length = 3});
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

int64_t AnswerTooMuch(intptr_t, void*, int64_t length) { return length + 1; }
int64_t AnswerMinusTwo(intptr_t, void*, int64_t) { return -2; }
int64_t AnswerMinusOne(intptr_t, void*, int64_t) { return -1; }
int64_t PointNowhere(intptr_t, const void** bytes, int64_t) {
  *bytes = nullptr;
  return 3;
}
int64_t PointTooFar(intptr_t, const void** bytes, int64_t length) {
  *bytes = "abc";
  return length + 1;
}
int64_t Throw(intptr_t, void*, int64_t) { throw std::runtime_error("read"); }

TEST(Callbacks, ThatAnswerNonsenseEndTheDataWithAnError) {
  const CallbackSource sources[] = {
      {.read = AnswerTooMuch},   {.read = AnswerMinusTwo}, {.read = AnswerMinusOne},
      {.readptr = PointNowhere}, {.readptr = PointTooFar},
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

TEST(Callbacks, ThatThrowLeaveAStreamThatCanBeDestroyed) {
  Minstream in(CallbackSource{.read = Throw}, 16);
  EXPECT_THROW(in.Skip(), std::runtime_error);
}

TEST(Callbacks, ThatLieAboutTheirPositionDoNotMoveIt) {
  struct Liar {
    DripSource source;
    static int64_t Tell(intptr_t) { return 0; }
  } liar{DripSource("abcdef", 2)};
  CallbackSource callbacks = liar.source.Reading();
  callbacks.tell = Liar::Tell;
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

  DripSource plain("abcdef");
  callbacks = plain.Reading();
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
    for (const int64_t size : testing::kBufferSizes) {
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
    char character = 0;
    EXPECT_EQ(in.GetChar(character), in.IsOpen());
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
}  // namespace mimora

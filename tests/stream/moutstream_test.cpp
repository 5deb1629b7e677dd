// Copyright (c) 2026 the mimora developers.
#include "stream/moutstream.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "diag/result.h"
#include "stream/copy_stream.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using Blocks = std::vector<std::string>;

// A callback that keeps what it gets and from its FAIL_AT-th call on fails as it is told.
struct Sink {
  int fail_at = INT_MAX;
  int64_t result = -1;
  int error = ENOSPC;
  Blocks blocks = {};

  CallbackSink Writing() { return {.context = reinterpret_cast<intptr_t>(this), .write = Write}; }
  static int64_t Write(intptr_t context, const void* data, int64_t length) {
    Sink& sink = *reinterpret_cast<Sink*>(context);
    sink.blocks.emplace_back(static_cast<const char*>(data), static_cast<size_t>(length));
    if (std::ssize(sink.blocks) < sink.fail_at) return length;
    errno = sink.error;
    return sink.result;
  }
};

TEST(MoutstreamMemory, DoublesUpToAMillionThenGrowsModeratelyAndEndsInAZero) {
  struct GrowthCase {
    const char* name;
    int64_t capacity;
    int64_t filled;
    int64_t write;
    int64_t want;  // capacity afterwards
  };
  constexpr GrowthCase kCases[] = {
      {"less than a kilobyte is added as one", 100, 99, 1, 1124},
      {"the last byte already makes it grow", 2000, 0, 2000, 4000},
      {"up to the last byte it does not", 2000, 0, 1999, 2000},
      {"a million doubles", 1000000, 999999, 1, 2000000},
      {"just beyond it doubling is less", 1000001, 1000000, 1, 2000002},
      {"beyond it is a million and four per cent", 2000000, 1999999, 1, 3080000},
      {"a larger block than four per cent", 2000000, 0, 2000000, 4000000},
  };
  for (const GrowthCase& c : kCases) {
    SCOPED_TRACE(c.name);
    Moutstream out(MemorySink{}, c.capacity);
    const std::string first(static_cast<size_t>(c.filled), 'a');
    const std::string second(static_cast<size_t>(c.write), 'b');
    EXPECT_TRUE(out.WriteText(first));
    EXPECT_TRUE(out.WriteText(second));
    EXPECT_TRUE(out.GetBuffer() == first + second);
    EXPECT_EQ(out.GetBuffer().data()[c.filled + c.write], '\0');
    // The heap rounds up, large blocks to pages.
    const size_t size = ::malloc_usable_size(const_cast<char*>(out.GetBuffer().data()));
    EXPECT_GE(size, static_cast<size_t>(c.want) + 1);
    EXPECT_LE(size, static_cast<size_t>(c.want) + (c.want < 100000 ? 64 : 8192));
  }
}

// ---- Callbacks ----------------------------------------------------------------------------------

TEST(MoutstreamCallback, HandsOnFullBuffersAndTheRestWhenFlushed) {
  Sink sink;
  Moutstream out(sink.Writing(), 4);
  EXPECT_TRUE(out.WriteText("abcd"));
  EXPECT_EQ(sink.blocks, Blocks{}) << "a full buffer waits for the next byte";
  EXPECT_TRUE(out.WriteText("efghijklmn"));
  EXPECT_EQ(sink.blocks, (Blocks{"abcd", "efgh", "ijkl"}));
  EXPECT_EQ(out.WritePos(), 14);
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(out.FlushBuffer());
  EXPECT_EQ(sink.blocks, (Blocks{"abcd", "efgh", "ijkl", "mn"}));
  EXPECT_EQ(out.WritePos(), 14);
}

TEST(MoutstreamCallback, KeepsItsFirstErrorAndRefusesEverythingAfterIt) {
  struct ErrorCase {
    const char* name;
    int64_t result;
    int error;
    int want;
  };
  constexpr ErrorCase kCases[] = {
      {"refused", -1, ENOSPC, ENOSPC},
      {"written in part", 1, EDQUOT, EDQUOT},
      {"more than there was", 5, EFBIG, EFBIG},
      {"no reason given", 0, 0, EIO},
  };
  for (const ErrorCase& c : kCases) {
    SCOPED_TRACE(c.name);
    Sink sink{.fail_at = 2, .result = c.result, .error = c.error};
    {
      Moutstream out(sink.Writing(), 4);
      EXPECT_TRUE(out.WriteText("abcdef"));
      EXPECT_FALSE(out.FlushBuffer());
      EXPECT_EQ(out.GetError(), c.want);
      sink.error = EBADF;
      EXPECT_FALSE(out.WriteChar('j'));
      EXPECT_FALSE(out.WriteText("k"));
      EXPECT_FALSE(out.FlushBuffer());
      EXPECT_EQ(out.GetError(), c.want);
    }
    EXPECT_EQ(sink.blocks, (Blocks{"abcd", "ef"})) << "nobody is asked again";
  }
}

TEST(MoutstreamCallback, IsFlushedAtTheEndOnlyWithAContext) {
  static Blocks written;
  written.clear();
  const auto write = [](intptr_t context, const void*, int64_t length) {
    written.push_back(std::to_string(context));
    return length;
  };
  for (const intptr_t context : {0, -1, 1, -2})
    Moutstream(CallbackSink{.context = context, .write = write}, 8).WriteText("abc");
  EXPECT_EQ(written, (Blocks{"1", "-2"}));
}

// ---- Files --------------------------------------------------------------------------------------

TEST(MoutstreamFile, ReplacesTheFileAndIsFlushedAtTheEnd) {
  for (const int64_t size : {-1, 0, 1, 7}) {
    const TextFile file("what was there before");
    Moutstream(FileSink{.name = file.Name()}, size).WriteText("some bytes");
    EXPECT_EQ(ReadFile(file.Name()), "some bytes") << "buffer of " << size;
  }
}

TEST(MoutstreamFile, WithoutANameIsATemporaryOneThatStaysForItsOwnerAlone) {
  const mode_t mask = ::umask(0);
  std::string names[2];
  for (std::string& name : names) {
    Moutstream out(FileSink{}, 4);
    name = out.GetFileName();
    EXPECT_TRUE(out.WriteText("abcdef"));
  }
  ::umask(mask);
  EXPECT_NE(names[0], names[1]);
  for (const std::string& name : names) {
    EXPECT_TRUE(std::filesystem::path(name).filename().string().starts_with("par")) << name;
    EXPECT_EQ(ReadFile(name), "abcdef");
    EXPECT_EQ(std::filesystem::status(name).permissions(), std::filesystem::perms{0600});
    std::filesystem::remove(name);
  }
}

TEST(MoutstreamFile, KeepsTheReasonWhenItCannotBeOpenedOrWritten) {
  Moutstream missing(FileSink{.name = "/nonexistent/file"}, 4);
  Moutstream full(FileSink{.name = "/dev/full"}, 4);
  EXPECT_EQ(missing.GetError(), ENOENT);
  EXPECT_TRUE(full.IsOpen() && !missing.IsOpen());
  for (Moutstream* out : {&missing, &full}) EXPECT_FALSE(out->WriteText("abcde"));
  EXPECT_EQ(missing.GetError(), ENOENT);
  EXPECT_EQ(full.GetError(), ENOSPC);
}

// A daemon that closed its standard input gets the descriptor 0 for its next file.
TEST(MoutstreamFile, IsFlushedAtTheEndOnDescriptorZero) {
  const TextFile file("");
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(0);
    Moutstream(FileSink{.name = file.Name()}, 64).WriteText("abc");
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(ReadFile(file.Name()), "abc");
}

// ---- Copies -------------------------------------------------------------------------------------

constexpr std::string_view kText = "one\r\ntwo\n--b\nthree";

TEST(CopyStream, CopiesUpToTheLengthTheEndOrADelimiter) {
  struct CopyCase {
    const char* name;
    int64_t length;
    int64_t start;
    const char* delimiter;
    std::string_view want;
  };
  constexpr CopyCase kCases[] = {
      {"from the middle", kWholeStream, 5, "", kText.substr(5)},
      {"a length", 4, 1, "", kText.substr(1, 4)},
      {"more than there is", 1000, 0, "", kText},
      {"less than nothing", -1, 0, "", ""},
      {"up to a delimiter", kWholeStream, 0, "--b", "one\r\ntwo"},
      {"a length in front of a delimiter", 6, 0, "--b", "one\r\nt"},
  };
  for (const CopyCase& c : kCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(kText, [&](Minstream& in) {
      in.Seek(c.start);
      in.SetBoundary(c.delimiter);
      Sink sink;
      Moutstream out(sink.Writing(), 100);
      EXPECT_EQ(CopyStream(in, out, c.length), kOk);
      EXPECT_EQ(sink.blocks, c.want.empty() ? Blocks{} : Blocks{std::string(c.want)})
          << "everything is flushed";
    });
  }
}

TEST(CopyStream, TellsWhichSideFailed) {
  for (int64_t at = 0; at <= std::ssize(kText); ++at) {
    SCOPED_TRACE(at);
    DripSource source(kText, 3, at);
    Minstream failing(source.Reading(), 7);
    Moutstream memory(MemorySink{});
    EXPECT_EQ(CopyStream(failing, memory, kWholeStream), kReadFailed);
    EXPECT_EQ(TextOf(memory), kText.substr(0, static_cast<size_t>(at)));
    EXPECT_EQ(failing.GetError(), EIO);

    Sink sink{.fail_at = static_cast<int>(at) + 1};
    Minstream in(MemorySource{.data = kText.data(), .length = std::ssize(kText)});
    Moutstream out(sink.Writing(), 1);
    EXPECT_EQ(CopyStream(in, out, kWholeStream), at < std::ssize(kText) ? kWriteFailed : kOk);
    // A stream with an old error takes nothing, not even nothing.
    EXPECT_EQ(CopyStream(in, out, 0), at < std::ssize(kText) ? kWriteFailed : kOk);
  }
}

}  // namespace
}  // namespace mimora::testing

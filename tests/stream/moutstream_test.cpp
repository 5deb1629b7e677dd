// Copyright (c) 2026 the mimora developers.
#include "stream/moutstream.h"

#include <malloc.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <filesystem>

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
  constexpr struct {
    const char* name;
    int64_t capacity, filled, write;
    int64_t want;  // capacity afterwards
  } kCases[] = {
      {"less than a kilobyte is added as one", 100, 99, 1, 1124},
      {"the last byte already makes it grow", 2000, 0, 2000, 4000},
      {"up to the last byte it does not", 2000, 0, 1999, 2000},
      {"a million doubles", 1000000, 999999, 1, 2000000},
      {"just beyond it doubling is less", 1000001, 1000000, 1, 2000002},
      {"beyond it is a million and four per cent", 2000000, 1999999, 1, 3080000},
      {"a larger block than four per cent", 2000000, 0, 2000000, 4000000},
  };
  for (const auto& c : kCases) {
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
  constexpr struct {
    const char* name;
    int64_t result;
    int error, want;
  } kCases[] = {
      {"refused", -1, ENOSPC, ENOSPC},
      {"written in part", 1, EDQUOT, EDQUOT},
      {"more than there was", 5, EFBIG, EFBIG},
      {"no reason given", 0, 0, EIO},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    Sink sink{.fail_at = 2, .result = c.result, .error = c.error};
    {
      Moutstream out(sink.Writing(), 4);
      EXPECT_TRUE(out.WriteText("abcdef"));
      EXPECT_FALSE(out.WriteText("ghi"));
      EXPECT_EQ(out.GetError(), c.want);
      sink.error = EBADF;
      EXPECT_FALSE(out.WriteChar('j'));
      EXPECT_FALSE(out.WriteText("k"));
      EXPECT_FALSE(out.FlushBuffer());
      EXPECT_EQ(out.GetError(), c.want);
    }
    EXPECT_EQ(sink.blocks, (Blocks{"abcd", "efgh"})) << "nobody is asked again";
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

// The rest of it is asked of all coders.
TEST(CopyStream, CopiesNoMoreThanTheLengthAndFlushes) {
  Minstream in(SourceOf("one two"));
  Sink sink;
  Moutstream out(sink.Writing(), 100);
  for (const int64_t length : {4, 0, -1, 2, 1000}) EXPECT_EQ(CopyStream(in, out, length), kOk);
  EXPECT_EQ(sink.blocks, (Blocks{"one ", "tw", "o"}));
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
//
// Whatever goes wrong, and whenever: an operation ends with the right answer, with a status that
// says that it failed, or with the exception. It never leaves anything behind, and the next one is
// as good as ever.
#include "faults/faults.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <new>

#include "faults/operations.h"

namespace mimora::testing {
namespace {

namespace fs = std::filesystem;

struct FaultCase {
  const char* name;
  Fault fault;
  bool lasts;
  bool fails;  // whether an operation that meets it may fail
};

void PrintTo(const FaultCase& c, std::ostream* out) { *out << c.name; }

constexpr FaultCase kFaults[] = {
    {"no memory once", Fault::kAllocation, false, true},
    {"no memory any more", Fault::kAllocation, true, true},
    {"a file that does not open", Fault::kOpen, false, true},
    {"no more files", Fault::kOpen, true, true},
    {"a bad block", Fault::kRead, false, true},
    {"a disk that is gone", Fault::kRead, true, true},
    {"a disk that was full", Fault::kWrite, false, true},
    {"a full disk", Fault::kWrite, true, true},
    {"no way to move once", Fault::kSeek, false, true},
    {"no way to move", Fault::kSeek, true, true},
    {"a short read or write", Fault::kShort, false, false},
    {"a byte at a time", Fault::kShort, true, false},
    {"a signal", Fault::kInterruption, false, false},
    {"an error of a callback", Fault::kCallbackError, false, true},
    {"a callback that works no more", Fault::kCallbackError, true, true},
    {"a lie", Fault::kCallbackLie, false, true},
    {"an exception", Fault::kCallbackThrows, false, true},
    {"a callback that throws all the time", Fault::kCallbackThrows, true, true},
};

size_t CountEntries(const char* folder) {
  size_t count = 0;
  DIR* const entries = ::opendir(folder);
  while (::readdir(entries) != nullptr) ++count;
  ::closedir(entries);
  return count;
}

// Everything that could be left behind.
struct Belongings {
  int64_t blocks = LiveBlocks();
  size_t files = CountEntries("/proc/self/fd");
  size_t temporary = CountEntries(std::getenv("TMPDIR")) + CountEntries(WorkFolder());
  bool operator==(const Belongings&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Belongings& b) {
  return out << b.blocks << " blocks, " << b.files << " descriptors, " << b.temporary << " files";
}

enum class End { kAnswered, kFailed, kThrew };

struct Outcome {
  End end;
  uint64_t hash;
  bool wrong;
};

Outcome Perform(const Operation& operation) {
  Answers answers;
  try {
    operation.run(answers);
  } catch (const std::exception&) {
    return {End::kThrew, 0, answers.IsWrong()};
  }
  return {answers.Failed() ? End::kFailed : End::kAnswered, answers.Hash(), answers.IsWrong()};
}

// Lets the fault happen at every chance that the operation gives it. Answers how often it did.
int64_t Torment(const Operation& operation, const FaultCase& c, const Outcome& good) {
  int64_t met = 0;
  for (int64_t at = 1;; ++at) {
    SCOPED_TRACE(::testing::Message() << operation.name << ": " << c.name << ", chance " << at);
    const Belongings before;
    Order(c.fault, at, c.lasts);
    const Outcome got = Perform(operation);
    const bool happened = EndOrder();
    const Belongings after;
    if (got.end == End::kAnswered) {
      EXPECT_EQ(got.hash, good.hash) << "a wrong answer";
    } else {
      EXPECT_TRUE(happened && c.fails);
    }
    EXPECT_FALSE(got.wrong);
    EXPECT_EQ(after, before);
    // From which byte on they come alone makes no difference.
    const bool alike = c.fault == Fault::kShort && c.lasts;
    met += happened ? 1 : 0;
    if (!happened || alike || ::testing::Test::HasFailure()) return met;
  }
}

class Faults : public ::testing::TestWithParam<FaultCase> {};

TEST_P(Faults, HarmNoOperation) {
  int64_t met = 0;
  for (const Operation& operation : Operations()) {
    // The second answer: the first one may have made what stays.
    Perform(operation);
    const Outcome good = Perform(operation);
    ASSERT_EQ(good.end, End::kAnswered) << operation.name;
    met += Torment(operation, GetParam(), good);
    const Outcome again = Perform(operation);
    EXPECT_EQ(again.end, End::kAnswered) << operation.name;
    EXPECT_EQ(again.hash, good.hash) << operation.name;
  }
  EXPECT_GT(met, 3) << "nobody meets the fault";
}

INSTANTIATE_TEST_SUITE_P(, Faults, ::testing::ValuesIn(kFaults), [](const auto& c) {
  std::string name;
  bool upper = true;
  for (const char letter : std::string(c.param.name)) {
    if (letter != ' ') name += static_cast<char>(upper ? std::toupper(letter) : letter);
    upper = letter == ' ';
  }
  return name;
});

// ---- First use ----------------------------------------------------------------------------------

enum : int { kNotMet = 0, kMet = 1, kSpoilt = 2 };

// In a process where nothing was used yet: what is made at the first use, and stays, is made again
// at the second when the first one failed.
int FirstUse(const Operation& operation, int64_t at) {
  const pid_t child = ::fork();
  if (child == 0) {
    Order(Fault::kAllocation, at, false);
    const Outcome first = Perform(operation);
    const bool happened = EndOrder();
    const Outcome second = Perform(operation), third = Perform(operation);
    const bool good = second.end == End::kAnswered && second.hash == third.hash &&
                      (first.end != End::kAnswered || first.hash == third.hash);
    ::_exit(!good ? kSpoilt : happened ? kMet : kNotMet);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSpoilt;
}

TEST(FirstUse, WithoutMemorySpoilsNoLaterOne) {
  for (const Operation& operation : Operations()) {
    int outcome = kMet;
    // There are thousands of chances: later ones are tried more rarely.
    for (int64_t at = 1; outcome == kMet; at += 1 + at / 25) {
      outcome = FirstUse(operation, at);
      ASSERT_NE(outcome, kSpoilt) << operation.name << ", chance " << at;
    }
  }
}

}  // namespace
}  // namespace mimora::testing

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  std::string temporary = "/dev/shm/faults.XXXXXX";
  // Where there is none, files are on a disk.
  if (::access("/dev/shm", W_OK) != 0) temporary = "/tmp/faults.XXXXXX";
  if (::mkdtemp(temporary.data()) == nullptr) return 1;
  const std::string work = temporary + "/work";
  std::filesystem::create_directory(work);
  ::setenv("TMPDIR", temporary.c_str(), 1);
  mimora::testing::SetWorkFolder(work.c_str());
  const int status = RUN_ALL_TESTS();
  std::filesystem::remove_all(temporary);
  return status;
}

// Copyright (c) 2026 the mimora developers.
//
// Usage: compare_NAME CORPUS loading CASE SOURCE SECONDS
//        compare_NAME CORPUS reading CASE SOURCE SECONDS
//        compare_NAME CORPUS coding CODER - SECONDS
//        compare_NAME CORPUS threads CASE COUNT SECONDS
// Measures for about that long and writes a line of JSON. Speeds are millions of input bytes a
// second of CPU time. For threads it writes how many times faster COUNT of them are than one.
#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "corpus.h"
#include "program.h"

namespace mimora::bench {
namespace {

struct Arguments {
  std::string corpus;
  std::string work;
  std::string what;
  std::string how;
  double seconds;
};

double Now(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// The most memory that the process had at any time.
long PeakKilobytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::atol(line.c_str() + 6);
  }
  return 0;
}

[[noreturn]] void Refuse(const std::string& reason) {
  std::fprintf(stderr, "%s\n", reason.c_str());
  std::exit(2);
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The median time of a pass; passes are repeated for about SECONDS.
template <typename Pass>
double TimeOf(clockid_t clock, double seconds, Pass pass) {
  std::vector<double> times;
  for (double sum = 0; times.empty() || sum < seconds; sum += times.back()) {
    const double start = Now(clock);
    pass();
    times.push_back(Now(clock) - start);
  }
  return Median(times);
}

void PrintStart(const Arguments& arguments) {
  std::printf("{\"program\": \"%s\", \"work\": \"%s\", \"what\": \"%s\", \"how\": \"%s\"",
              MakeProgram().name.c_str(), arguments.work.c_str(), arguments.what.c_str(),
              arguments.how.c_str());
}

void PrintSpeed(const Arguments& arguments, double megabytes, double time) {
  PrintStart(arguments);
  std::printf(", \"megabytes_per_second\": %.1f", megabytes / time);
}

auto FindLoader(const std::string& source) {
  for (const Loader& loader : MakeProgram().loaders) {
    if (loader.source == source) return loader.load;
  }
  Refuse("no loading from " + source);
}

// ---- Loading

struct Check {
  Contents found;
  Contents expected;
  int64_t wrong_messages = 0;
};

template <typename Load>
Check CheckContents(const Corpus& corpus, Load load) {
  Check check;
  for (const Message& message : corpus.Messages()) {
    const Contents found = load(message);
    check.found += found;
    check.expected += message.contents;
    check.wrong_messages += found != message.contents;
  }
  return check;
}

void MeasureLoading(const Arguments& arguments) {
  const auto load = FindLoader(arguments.how);
  const Corpus corpus(arguments.corpus, arguments.what);
  const long peak = PeakKilobytes();
  const Check check = CheckContents(corpus, load);
  const long extra = PeakKilobytes() - peak;
  const double time = TimeOf(CLOCK_PROCESS_CPUTIME_ID, arguments.seconds, [&] {
    for (const Message& message : corpus.Messages()) load(message);
  });
  PrintSpeed(arguments, corpus.Megabytes(), time);
  std::printf(
      ", \"leaves\": %lld, \"expected_leaves\": %lld, \"bytes\": %lld, \"expected_bytes\": %lld, "
      "\"wrong_messages\": %lld, \"extra_kilobytes\": %ld}\n",
      static_cast<long long>(check.found.leaves), static_cast<long long>(check.expected.leaves),
      static_cast<long long>(check.found.bytes), static_cast<long long>(check.expected.bytes),
      static_cast<long long>(check.wrong_messages), extra);
}

// ---- Reading alone: what a load from a source costs in any case

using Buffer = std::array<char, 16384>;  // the library's is as large

int64_t ReadFileAlone(const Message& message) {
  Buffer buffer;
  const int file = open(message.file.c_str(), O_RDONLY | O_CLOEXEC);
  int64_t bytes = 0;
  for (ssize_t count; (count = read(file, buffer.data(), buffer.size())) > 0; bytes += count) {
    if (static_cast<size_t>(count) < buffer.size()) break;
  }
  close(file);
  return bytes;
}

int64_t CopyAlone(const Message& message) {
  Buffer buffer;
  int64_t bytes = 0;
  for (std::string_view rest = message.text; !rest.empty();) {
    const size_t count = rest.copy(buffer.data(), buffer.size());
    // Or the compiler would leave out the copy.
    asm volatile("" : : "r"(buffer.data()) : "memory");
    rest.remove_prefix(count);
    bytes += static_cast<int64_t>(count);
  }
  return bytes;
}

void MeasureReading(const Arguments& arguments) {
  const Corpus corpus(arguments.corpus, arguments.what);
  const auto read = arguments.how == "file" ? ReadFileAlone : CopyAlone;
  int64_t bytes = 0;
  const double time = TimeOf(CLOCK_PROCESS_CPUTIME_ID, arguments.seconds, [&] {
    for (const Message& message : corpus.Messages()) bytes += read(message);
  });
  PrintSpeed(arguments, corpus.Megabytes(), time);
  std::printf(", \"read\": %lld}\n", static_cast<long long>(bytes));
}

// ---- Loading in several threads

// How many times faster several threads are than one, in pairs of passes that follow each other: a
// processor that is shared with others runs at another speed a second later.
class Gain {
 public:
  // PASS(first, step) does a share of the work: the pieces first, first + step and so on.
  template <typename Pass>
  void Measure(size_t count, Pass pass) {
    const Times one = TimesOf(1, pass);
    const Times several = TimesOf(count, pass);
    clock_.push_back(one.clock / several.clock);
    // What it would be if no other process took the processors away.
    cpu_.push_back(static_cast<double>(count) * one.cpu / several.cpu);
  }
  double Clock() const { return Median(clock_); }
  double Cpu() const { return Median(cpu_); }

 private:
  struct Times {
    double clock;
    double cpu;
  };

  template <typename Pass>
  static Times TimesOf(size_t count, Pass pass) {
    const Times start = {Now(CLOCK_MONOTONIC), Now(CLOCK_PROCESS_CPUTIME_ID)};
    {
      std::vector<std::jthread> threads;
      for (size_t i = 1; i < count; ++i) threads.emplace_back([=] { pass(i, count); });
      pass(0, count);
    }
    return {Now(CLOCK_MONOTONIC) - start.clock, Now(CLOCK_PROCESS_CPUTIME_ID) - start.cpu};
  }

  std::vector<double> clock_;
  std::vector<double> cpu_;
};

// Work that shares nothing, not even memory: what the machine gives to several threads. It keeps
// the units of a processor as busy as loading does, for a processor may lend them to another one.
void Calculate(size_t first, size_t step) {
  constexpr size_t kPieces = 10'000'000;
  uint64_t a = 1, b = 2, c = 3, d = 4;
  for (size_t i = first; i < kPieces; i += step) {
    a = 3 * a + i;
    b ^= b << 1 ^ i;
    c += c >> 3 ^ i;
    d = 5 * d + i;
    // Or the compiler would leave out the work.
    asm volatile("" : : "r"(a), "r"(b), "r"(c), "r"(d));
  }
}

void MeasureThreads(const Arguments& arguments) {
  const auto load = FindLoader("memory");
  const Corpus corpus(arguments.corpus, arguments.what);
  const auto& messages = corpus.Messages();
  const auto load_share = [&](size_t first, size_t step) {
    for (size_t i = first; i < messages.size(); i += step) load(messages[i]);
  };
  const auto count = static_cast<size_t>(std::stoul(arguments.how));
  Gain loading;
  Gain calculating;
  for (const double start = Now(CLOCK_MONOTONIC);
       Now(CLOCK_MONOTONIC) - start < arguments.seconds;) {
    loading.Measure(count, load_share);
    calculating.Measure(count, Calculate);
  }
  PrintStart(arguments);
  std::printf(
      ", \"clock_gain\": %.3f, \"cpu_gain\": %.3f, \"machine_clock_gain\": %.3f, "
      "\"machine_cpu_gain\": %.3f}\n",
      loading.Clock(), loading.Cpu(), calculating.Clock(), calculating.Cpu());
}

// ---- Coding

const std::map<std::string, std::string> kInputs = {
    {"base64-decode", "base64.txt"},
    {"quoted-printable-decode", "quoted-printable.txt"},
    {"uuencode-decode", "uuencode.txt"},
    {"base64-encode", "bytes.bin"},
    {"quoted-printable-encode", "text.txt"}};

// Decoders must give back what was encoded. Encoders may lay out their lines as they like.
const std::map<std::string, std::string> kAnswers = {{"base64-decode", "bytes.bin"},
                                                     {"quoted-printable-decode", "text.txt"},
                                                     {"uuencode-decode", "bytes.bin"}};

int64_t ExpectedBytes(const Arguments& arguments, int64_t found) {
  const auto answer = kAnswers.find(arguments.what);
  if (answer == kAnswers.end()) return found;
  return static_cast<int64_t>(ReadFile(arguments.corpus + "/" + answer->second).size());
}

auto FindCoder(const std::string& name) {
  for (const Coder& coder : MakeProgram().coders) {
    if (coder.name == name && kInputs.contains(name)) return coder.prepare;
  }
  Refuse("no coder " + name);
}

void MeasureCoding(const Arguments& arguments) {
  const auto prepare = FindCoder(arguments.what);
  const std::string input = ReadFile(arguments.corpus + "/" + kInputs.at(arguments.what));
  const RunCoder run = prepare(input);
  const int64_t found = run();
  const double time = TimeOf(CLOCK_PROCESS_CPUTIME_ID, arguments.seconds, run);
  PrintSpeed(arguments, static_cast<double>(input.size()) / 1e6, time);
  std::printf(", \"bytes\": %lld, \"expected_bytes\": %lld}\n", static_cast<long long>(found),
              static_cast<long long>(ExpectedBytes(arguments, found)));
}

}  // namespace
}  // namespace mimora::bench

int main(int argc, char** argv) {
  using namespace mimora::bench;
  if (argc != 6) Refuse("usage: " + std::string(argv[0]) + " CORPUS WORK WHAT HOW SECONDS");
  const Arguments arguments = {argv[1], argv[2], argv[3], argv[4], std::atof(argv[5])};
  const std::map<std::string, void (*)(const Arguments&)> works = {{"loading", MeasureLoading},
                                                                   {"reading", MeasureReading},
                                                                   {"threads", MeasureThreads},
                                                                   {"coding", MeasureCoding}};
  const auto work = works.find(arguments.work);
  if (work == works.end()) Refuse("no work " + arguments.work);
  work->second(arguments);
}

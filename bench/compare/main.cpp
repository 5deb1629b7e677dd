// Copyright (c) 2026 the mimora developers.
//
// Usage: compare_NAME CORPUS loading CASE SOURCE SECONDS
//        compare_NAME CORPUS reading CASE SOURCE SECONDS
//        compare_NAME CORPUS coding CODER - SECONDS
//        compare_NAME CORPUS threads CASE - SECONDS
// Measures for about that long and writes a line of JSON. Speeds are millions of input bytes a
// second of CPU time. For threads it writes how many times faster two of them are than one, and two
// processes, too.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
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
  std::sort(values.begin(), values.end());
  const size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

template <typename Pass>
double TimeOf(clockid_t clock, Pass pass) {
  const double start = Now(clock);
  pass();
  return Now(clock) - start;
}

// The median CPU time of a pass; passes are repeated for about SECONDS.
template <typename Pass>
double MedianTimeOf(double seconds, Pass pass) {
  std::vector<double> times;
  for (double sum = 0; times.empty() || sum < seconds; sum += times.back()) {
    times.push_back(TimeOf(CLOCK_PROCESS_CPUTIME_ID, pass));
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
  const double time = MedianTimeOf(arguments.seconds, [&] {
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
  const double time = MedianTimeOf(arguments.seconds, [&] {
    for (const Message& message : corpus.Messages()) bytes += read(message);
  });
  PrintSpeed(arguments, corpus.Megabytes(), time);
  std::printf(", \"read\": %lld}\n", static_cast<long long>(bytes));
}

// ---- Loading in two threads

// Does its share of the work whenever it is told to, in a thread or in a process of its own.
class Partner {
 public:
  enum Kind { kThread, kProcess };

  template <typename Work>
  Partner(Kind kind, Work work) {
    if (pipe2(orders_, O_CLOEXEC) != 0 || pipe2(reports_, O_CLOEXEC) != 0) Refuse("no pipes");
    const auto obey = [this, work] {
      for (char order = 0; read(orders_[0], &order, 1) == 1 && order == kGo;) {
        work();
        if (write(reports_[1], &order, 1) != 1) break;
      }
    };
    if (kind == kThread) {
      thread_ = std::jthread(obey);
      return;
    }
    process_ = fork();
    if (process_ < 0) Refuse("no process");
    // Each side keeps its own ends, or the parent would not see that the child is gone.
    if (process_ > 0) {
      CloseEnds(orders_[0], reports_[1]);
      return;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    CloseEnds(orders_[1], reports_[0]);
    obey();
    _exit(0);
  }
  ~Partner() {
    Order(kEnd);
    if (thread_.joinable()) thread_.join();
    if (process_ > 0) waitpid(process_, nullptr, 0);
    CloseEnds(orders_[0], orders_[1]);
    CloseEnds(reports_[0], reports_[1]);
  }
  Partner(const Partner&) = delete;
  Partner& operator=(const Partner&) = delete;

  void Start() { Order(kGo); }
  void Wait() {
    char report = 0;
    if (read(reports_[0], &report, 1) != 1) Refuse("a partner is lost");
  }

 private:
  static constexpr char kGo = 'g';
  static constexpr char kEnd = 'e';

  void Order(char order) {
    if (write(orders_[1], &order, 1) != 1) Refuse("a partner is lost");
  }

  static void CloseEnds(int& one, int& other) {
    for (int* const end : {&one, &other}) {
      if (*end >= 0) close(*end);
      *end = -1;
    }
  }

  int orders_[2];
  int reports_[2];
  pid_t process_ = 0;
  std::jthread thread_;
};

// A pass by one alone, by two threads and by two processes follow each other, again and again: a
// processor that is shared with others runs at another speed a second later. Two processes have
// nothing in common but the machine; they show what it gives.
void MeasureThreads(const Arguments& arguments) {
  std::signal(SIGPIPE, SIG_IGN);  // so that a partner that is gone can be told of
  const auto load = FindLoader("memory");
  const Corpus corpus(arguments.corpus, arguments.what);
  const auto& messages = corpus.Messages();
  const auto load_share = [&](size_t first, size_t step) {
    for (size_t i = first; i < messages.size(); i += step) load(messages[i]);
  };
  const auto load_all = [&] { load_share(0, 1); };
  const auto load_even = [&] { load_share(0, 2); };
  const auto load_odd = [&] { load_share(1, 2); };
  // The processes come first: the C library is slower once there are threads.
  Partner single(Partner::kProcess, load_all);
  Partner processes[] = {{Partner::kProcess, load_even}, {Partner::kProcess, load_odd}};
  Partner threads[] = {{Partner::kThread, load_even}, {Partner::kThread, load_odd}};
  const auto time_of = [](auto begin, auto end) {
    return TimeOf(CLOCK_MONOTONIC, [&] {
      std::for_each(begin, end, [](Partner& partner) { partner.Start(); });
      std::for_each(begin, end, [](Partner& partner) { partner.Wait(); });
    });
  };
  std::vector<double> by_threads;
  std::vector<double> by_processes;
  std::vector<double> threads_to_processes;
  constexpr size_t kFewest = 3;
  double sum = 0;
  // The first pass of each, in which its caches fill, does not count.
  for (bool warm = false; by_threads.size() < kFewest || sum < arguments.seconds; warm = true) {
    const double alone = time_of(&single, &single + 1);
    const double in_threads = time_of(std::begin(threads), std::end(threads));
    const double in_processes = time_of(std::begin(processes), std::end(processes));
    if (!warm) continue;
    sum += alone + in_threads + in_processes;
    by_threads.push_back(alone / in_threads);
    by_processes.push_back(alone / in_processes);
    threads_to_processes.push_back(in_processes / in_threads);
  }
  PrintStart(arguments);
  std::printf(", \"threads\": %.3f, \"processes\": %.3f, \"threads_to_processes\": %.3f}\n",
              Median(by_threads), Median(by_processes), Median(threads_to_processes));
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
  const double time = MedianTimeOf(arguments.seconds, run);
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

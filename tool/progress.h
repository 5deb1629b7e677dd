// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TOOL_PROGRESS_H_
#define MIMORA_TOOL_PROGRESS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace mimora::tool {

struct Work {
  int64_t files = 0;
  int64_t bytes = 0;
};

// A bar on the standard error, which people see when work takes long. It counts on over several
// messages.
class Progress {
 public:
  explicit Progress(std::size_t messages);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { Clear(); }

  // Whether anybody would see it: it is not worth finding out the amount of work otherwise.
  bool IsWanted() const { return wanted_; }

  void BeginMessage();
  void SetWork(const Work& total);
  void AddFile(int64_t size);

  // Makes room for other lines; the bar comes back with the next file.
  void Clear();

 private:
  void Draw();
  std::string Line() const;

  using Clock = std::chrono::steady_clock;

  const bool wanted_;
  const std::size_t messages_;
  const Clock::time_point start_ = Clock::now();
  std::size_t message_ = 0;  // the present one, counted from 1
  Work total_, done_;
  std::size_t drawn_ = 0;  // characters
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_PROGRESS_H_

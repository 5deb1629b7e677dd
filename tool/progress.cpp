// Copyright (c) 2026 the mimora developers.
#include "tool/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace mimora::tool {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 500ms;
constexpr std::size_t kBarWidth = 16;

// A line that reaches the edge would wrap, and could not be taken back.
std::size_t LongestLine() {
  winsize window{};
  const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 0;
  return known ? window.ws_col - 1u : 79u;
}

double Part(int64_t done, int64_t total) {
  // Sizes of translated texts are not known before.
  return total > 0 ? std::min(static_cast<double>(done) / static_cast<double>(total), 1.0) : 0.0;
}

}  // namespace

Progress::Progress(std::size_t messages)
    : wanted_(::isatty(STDERR_FILENO) == 1), messages_(messages) {}

void Progress::BeginMessage() {
  ++message_;
  total_ = done_ = {};
}

void Progress::SetWork(const Work& total) {
  total_ = total;
  Draw();
}

void Progress::AddFile(int64_t size) {
  ++done_.files;
  done_.bytes += size;
  Draw();
}

void Progress::Clear() {
  if (drawn_ == 0) return;
  std::fprintf(stderr, "\r%*s\r", static_cast<int>(drawn_), "");
  drawn_ = 0;
}

void Progress::Draw() {
  if (!wanted_ || Clock::now() - start_ < kPatience) return;
  Clear();
  const std::string line = Line().substr(0, LongestLine());
  std::fputs(line.c_str(), stderr);
  drawn_ = line.size();
}

std::string Progress::Line() const {
  const double fraction = (static_cast<double>(message_ - 1) + Part(done_.bytes, total_.bytes)) /
                          static_cast<double>(messages_);
  std::string bar(static_cast<std::size_t>(fraction * kBarWidth), '#');
  bar.resize(kBarWidth, '-');
  const auto megabytes = [](int64_t bytes) { return static_cast<double>(bytes) / 1e6; };
  std::array<char, 160> text;
  std::snprintf(text.data(), text.size(), "[%s] %3.0f%%  %lld of %lld files, %.1f of %.1f MB",
                bar.c_str(), fraction * 100, static_cast<long long>(done_.files),
                static_cast<long long>(total_.files), megabytes(done_.bytes),
                megabytes(total_.bytes));
  std::string line = text.data();
  if (messages_ > 1)
    line += ", message " + std::to_string(message_) + " of " + std::to_string(messages_);
  return line;
}

}  // namespace mimora::tool

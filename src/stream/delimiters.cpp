// Copyright (c) 2026 the mimora developers.
#include "stream/delimiters.h"

#include <algorithm>
#include <cstring>

#include "diag/limits.h"
#include "platform/ascii.h"
#include "platform/load.h"

namespace mimora {
namespace {

// Behind a closing delimiter: nothing but white space up to the end of the line.
DelimiterMatch MatchPadding(const char* p, int64_t available, bool at_end) {
  const int64_t length = std::min(available, kLongestDelimiterPadding);
  const char* end = std::find_if_not(p, p + length, IsBlank);
  if (end == p + length) {
    const bool decided = at_end || length == kLongestDelimiterPadding;
    if (!decided) return {.verdict = DelimiterMatch::kMore, .needed = 2 * available + 1};
  } else if (!IsLineEnd(*end)) {
    return {};
  }
  return {.verdict = DelimiterMatch::kYes, .closes = true};
}

// What follows the text of a delimiter decides whether it is one: the end of the line, a space, or
// the "--" of a closing delimiter. A single hyphen may belong to a longer boundary.
DelimiterMatch MatchTail(const char* p, int64_t available, bool at_end) {
  if (available == 0) {
    if (at_end) return {.verdict = DelimiterMatch::kYes};
    return {.verdict = DelimiterMatch::kMore, .needed = 1};
  }
  if (IsLineEnd(*p) || *p == ' ') return {.verdict = DelimiterMatch::kYes};
  if (*p != '-') return {};
  if (available == 1) {
    if (at_end) return {};
    return {.verdict = DelimiterMatch::kMore, .needed = 2};
  }
  if (p[1] != '-') return {};
  DelimiterMatch match = MatchPadding(p + 2, available - 2, at_end);
  match.needed += 2;
  return match;
}

}  // namespace

void Delimiters::Clear() {
  stack_.clear();
  texts_.clear();
}

bool Delimiters::Sample::Fits(const char* line) const {
  return ((Load<uint64_t>(line + start) ^ bytes) & mask) == 0;
}

// COUNT bytes from START on.
Delimiters::Sample Delimiters::SampleOf(std::string_view delimiter, size_t start, size_t count) {
  static constexpr char kOnesAndZeros[2 * Sample::kSize] = "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF";
  const char* const from = delimiter.data() + start;
  Sample sample{start, 0, Load<uint64_t>(kOnesAndZeros + Sample::kSize - count)};
  if (start + Sample::kSize <= delimiter.size()) {
    sample.bytes = Load<uint64_t>(from);
  } else {
    std::memcpy(&sample.bytes, from, count);
  }
  return sample;
}

// How many bytes, as far as a sample goes, it has at its start in common with all in force.
size_t Delimiters::SharedWith(std::string_view delimiter) const {
  if (stack_.empty()) return std::min(delimiter.size(), Sample::kSize);
  const std::string_view outer = Innermost();
  const size_t most = std::min(delimiter.size(), stack_.back().shared);
  size_t shared = 0;
  while (shared < most && outer[shared] == delimiter[shared]) ++shared;
  return shared;
}

// Whether one in force is longer and begins with it.
bool Delimiters::BeginsAnother(std::string_view delimiter) const {
  if (stack_.empty() || stack_.back().longest <= delimiter.size()) return false;
  const size_t last = delimiter.size() - 1;
  for (size_t level = 0; level < stack_.size(); ++level) {
    const std::string_view other = At(level);
    if (other.size() <= delimiter.size() || other[last] != delimiter[last]) continue;
    if (other.starts_with(delimiter)) return true;
  }
  return false;
}

void Delimiters::Push(std::string_view delimiter) {
  const size_t size = delimiter.size();
  const size_t shared = SharedWith(delimiter);
  const size_t in_tail = std::min(size, Sample::kSize);
  const Delimiter added{.start = stack_.empty() ? 0 : stack_.back().start + stack_.back().size,
                        .size = size,
                        .longest = stack_.empty() ? size : std::max(size, stack_.back().longest),
                        .begins_another = BeginsAnother(delimiter),
                        .shared = shared,
                        .head = SampleOf(delimiter, 0, shared),
                        .tail = SampleOf(delimiter, size - in_tail, in_tail)};
  texts_.resize(added.start);  // more is there when memory ran out here
  texts_ += delimiter;
  stack_.push_back(added);
}

void Delimiters::Pop() {
  texts_.resize(stack_.back().start);
  stack_.pop_back();
}

DelimiterMatch Delimiters::MatchOne(size_t level, const char* p, int64_t available,
                                    bool at_end) const {
  const std::string_view delimiter = At(level);
  const auto length = std::ssize(delimiter);
  const auto compared = static_cast<size_t>(std::min<int64_t>(length, available));
  if (std::memcmp(p, delimiter.data(), compared) != 0) return {};
  if (available < length) {
    if (at_end) return {};
    return {.verdict = DelimiterMatch::kMore, .needed = length + 1};
  }
  DelimiterMatch match = MatchTail(p + length, available - length, at_end);
  match.needed += length;
  return match;
}

DelimiterMatch Delimiters::Match(const char* p, int64_t available, bool at_end,
                                 size_t levels) const {
  DelimiterMatch best;
  size_t best_length = 0;
  const auto differs = [&](const Sample& sample) {
    return available >= sample.End() && !sample.Fits(p);
  };
  // Most lines differ from all of them in what these have in common.
  if (differs(stack_.back().head)) return best;
  for (size_t level = levels; level-- > 0;) {
    const Delimiter& delimiter = stack_[level];
    if (differs(delimiter.tail) || delimiter.size <= best_length) continue;
    DelimiterMatch match = MatchOne(level, p, available, at_end);
    if (match.verdict == DelimiterMatch::kMore) return match;
    if (match.verdict == DelimiterMatch::kNo) continue;
    best = match;
    best.level = static_cast<uint32_t>(level);
    best_length = delimiter.size;
    if (!delimiter.begins_another) break;
  }
  return best;
}

DelimiterMatch Delimiters::MatchInnermost(std::string_view line) const {
  DelimiterMatch match = MatchOne(stack_.size() - 1, line.data(), std::ssize(line), true);
  match.level = static_cast<uint32_t>(stack_.size() - 1);
  return match;
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "stream/delimiters.h"

#include <algorithm>
#include <cstring>

#include "diag/limits.h"
#include "platform/ascii.h"

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

constexpr int64_t kTailSize = sizeof(uint64_t);

// The last bytes of a text that ends at END and has at least as many.
uint64_t TailOf(const char* end) {
  uint64_t tail = 0;
  std::memcpy(&tail, end - kTailSize, sizeof tail);
  return tail;
}

}  // namespace

void Delimiters::Clear() {
  stack_.clear();
  texts_.clear();
}

void Delimiters::Push(std::string_view delimiter) {
  const bool has_tail = std::ssize(delimiter) >= kTailSize;
  const uint64_t tail = has_tail ? TailOf(delimiter.data() + delimiter.size()) : 0;
  size_t longest = delimiter.size();
  size_t shared = delimiter.size();
  if (!stack_.empty()) {
    longest = std::max(longest, stack_.back().longest);
    const std::string_view outer = Innermost().substr(0, stack_.back().shared);
    shared = static_cast<size_t>(
        std::mismatch(outer.begin(), outer.end(), delimiter.begin(), delimiter.end()).first -
        outer.begin());
  }
  bool begins_another = false;
  const size_t levels = longest > delimiter.size() ? stack_.size() : 0;
  for (size_t level = 0; level < levels && !begins_another; ++level) {
    begins_another = stack_[level].size > delimiter.size() && At(level).starts_with(delimiter);
  }
  const size_t start = stack_.empty() ? 0 : stack_.back().start + stack_.back().size;
  texts_.resize(start);  // more is there when memory ran out here
  texts_ += delimiter;
  stack_.push_back({start, delimiter.size(), longest, shared, tail, begins_another});
}

void Delimiters::Pop() {
  texts_.resize(stack_.back().start);
  stack_.pop_back();
}

// Whether it is not even worth comparing.
bool Delimiters::DiffersInTail(const Delimiter& delimiter, const char* p, int64_t available) {
  const auto length = static_cast<int64_t>(delimiter.size);
  return available >= length && length >= kTailSize && TailOf(p + length) != delimiter.tail;
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
  // Most lines differ from all of them in what these have in common.
  const size_t shared = std::min(stack_.back().shared, static_cast<size_t>(available));
  if (std::memcmp(p, Innermost().data(), shared) != 0) return best;
  for (size_t level = levels; level-- > 0;) {
    const Delimiter& delimiter = stack_[level];
    if (delimiter.size <= best_length || DiffersInTail(delimiter, p, available)) continue;
    DelimiterMatch match = MatchOne(level, p, available, at_end);
    if (match.verdict == DelimiterMatch::kMore) return match;
    if (match.verdict == DelimiterMatch::kNo) continue;
    best = match;
    best.level = level;
    best_length = delimiter.size;
    if (!delimiter.begins_another) break;
  }
  return best;
}

DelimiterMatch Delimiters::MatchInnermost(std::string_view line) const {
  DelimiterMatch match = MatchOne(stack_.size() - 1, line.data(), std::ssize(line), true);
  match.level = stack_.size() - 1;
  return match;
}

}  // namespace mimora

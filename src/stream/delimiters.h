// Copyright (c) 2026 the mimora developers.
//
// The multipart delimiters that are in force at one place of a message, and what makes a line one
// of them (RFC 2046 5.1.1).
#ifndef MIMORA_STREAM_DELIMITERS_H_
#define MIMORA_STREAM_DELIMITERS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mimora {

struct DelimiterMatch {
  enum Verdict : uint8_t {
    kNo,
    kYes,
    kMore,  // that depends on bytes that are not in view: `needed` of them at least
  };
  Verdict verdict = kNo;
  bool closes = false;  // it is the closing delimiter
  uint32_t level = 0;   // of which multipart, the outermost is 0
  int64_t needed = 0;
};
static_assert(sizeof(DelimiterMatch) <= 16, "or it would not be handed over in registers");

// A delimiter is given whole, as it stands at the start of its line ("--" and boundary). All of
// them begin with the same character.
class Delimiters {
 public:
  bool Empty() const { return stack_.empty(); }
  size_t Count() const { return stack_.size(); }
  std::string_view Innermost() const { return At(stack_.size() - 1); }
  std::string_view At(size_t level) const {
    return {texts_.data() + stack_[level].start, stack_[level].size};
  }
  char FirstCharacter() const { return texts_.front(); }

  void Clear();
  void Push(std::string_view delimiter);
  void Pop();

  // Whether the line that begins at P, of which AVAILABLE bytes are in view, is a delimiter line.
  // AT_END: there are no bytes behind those in view. A line that fits several delimiters belongs to
  // the longest, among equals to the innermost. Only the outermost LEVELS are asked.
  DelimiterMatch Match(const char* p, int64_t available, bool at_end, size_t levels) const;

  // The same about a whole line and the innermost delimiter alone.
  DelimiterMatch MatchInnermost(std::string_view line) const;

 private:
  // A few bytes of a line that are compared at once.
  struct Sample {
    static constexpr size_t kSize = sizeof(uint64_t);

    size_t start;
    uint64_t bytes;
    uint64_t mask;  // of those that count

    bool Fits(const char* line) const;
    int64_t End() const { return static_cast<int64_t>(start + kSize); }
  };

  struct Delimiter {
    size_t start;  // of its text
    size_t size;
    size_t longest;       // of it and those outside it
    bool begins_another;  // one of those outside it is longer and begins with it
    size_t shared;        // how many bytes at its start, eight at most, all those outside it share
    Sample head;          // of those bytes
    // Those of one message mostly begin alike: the ends tell them apart, which counts when there
    // are many.
    Sample tail;
  };

  static Sample SampleOf(std::string_view delimiter, size_t start, size_t count);
  size_t SharedWith(std::string_view delimiter) const;
  bool BeginsAnother(std::string_view delimiter) const;
  DelimiterMatch MatchOne(size_t level, const char* p, int64_t available, bool at_end) const;

  std::vector<Delimiter> stack_;
  std::string texts_;  // one behind the other
};

}  // namespace mimora

#endif  // MIMORA_STREAM_DELIMITERS_H_

// Copyright (c) 2026 the mimora developers.
//
// Uuencoded data: bodies that are one file, and files that stand as blocks inside a text.
#ifndef MIMORA_CODEC_UUENCODE_H_
#define MIMORA_CODEC_UUENCODE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "diag/limits.h"
#include "platform/cpu.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// Lines out of pieces of text that are cut anywhere. A line end is CR or LF; the LF of a CR LF may
// show as an empty line. Of a line only the first kLongestUuLine bytes are kept.
class UuLines {
 public:
  // Takes bytes through the end of the line, as far as they are there; tells how many.
  size_t Take(std::string_view text);
  // Whether the end of the line was among them; true also before the first line.
  bool Complete() const { return complete_; }
  // Whether the line is longer than what is kept.
  bool Cut() const { return cut_; }
  // Lives as long as the text that was taken, at most until the next Take.
  std::string_view Line() const { return complete_ ? line_ : std::string_view(partial_); }
  void Reset();

 private:
  std::string partial_;
  std::string_view line_;
  bool complete_ = true;
  bool cut_ = false;
};

// Decodes text that arrives in pieces: what stands between the first "begin" line and "end". Lines
// that are too short count as filled up with blanks.
class UuDecoder {
 public:
  explicit UuDecoder(Moutstream& out) : out_(out) {}

  void Feed(std::string_view text);
  void Finish();

 private:
  enum class State { kBefore, kInside, kBehind };

  std::string_view FeedLines(platform::CpuLevel level, std::string_view text);
  void EndLine(std::string_view line);

  Moutstream& out_;
  UuLines lines_;
  State state_ = State::kBefore;
};

// A uuencoded file inside a text.
struct UuBlock {
  std::string name;
  int64_t offset = 0;        // of its "begin" line
  int64_t length = 0;        // through the line end of its "end" line
  int64_t decoded_size = 0;  // of the file
};

// Finds the uuencoded blocks of a text that arrives in pieces, in one pass, up to MOST of them.
// What begins like a block and has a line that cannot be one of its data lines, no line that is as
// long as it says, or no "end", is text.
class UuScanner {
 public:
  explicit UuScanner(size_t most) : most_(most) {}

  void Feed(std::string_view text);
  void Finish();

  std::vector<UuBlock>& Blocks() { return blocks_; }
  // The bytes outside the blocks.
  int64_t TextSize() const { return position_ - inside_; }

 private:
  size_t DistanceToBegin(std::string_view text) const;
  void Pass(std::string_view& text, size_t count);
  void PassDataLines(std::string_view& text);
  void EndLine(std::string_view line, bool cut);
  void EndBlock();

  const size_t most_;
  std::vector<UuBlock> blocks_;
  UuBlock open_;
  UuLines lines_;
  int64_t position_ = 0;    // bytes seen
  int64_t line_start_ = 0;  // of the line that lines_ collects
  int64_t inside_ = 0;      // bytes in blocks
  char last_ = '\n';
  bool in_block_ = false;
  bool looks_real_ = false;        // the open block has a line that is as long as it says
  bool block_just_ended_ = false;  // the LF of its CR LF may follow
};

}  // namespace mimora

#endif  // MIMORA_CODEC_UUENCODE_H_

// Copyright (c) 2026 the mimora developers.
#include "codec/uuencode.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "codec/uuencode_alphabet.h"
#include "codec/uuencode_blocks.h"
#include "platform/ascii.h"
#include "stream/scan.h"

namespace mimora {
namespace {

constexpr std::string_view kBegin = "begin";
constexpr std::string_view kEnd = "end";

// Encoders differ in what they put behind the data: a checksum, the rest of a group.
constexpr size_t kMostExtraCharacters = 4;

constexpr uint32_t ValueOf(char c) { return static_cast<uint32_t>(UuValueOf(c)); }

// The file name of a line "begin MODE NAME"; nothing when it is none.
std::optional<std::string_view> ParseBegin(std::string_view line) {
  constexpr size_t kLongestMode = 6;
  if (!line.starts_with(kBegin)) return std::nullopt;
  line.remove_prefix(kBegin.size());
  if (line.empty() || !IsBlank(line.front())) return std::nullopt;
  line = TrimLeft(line, IsBlank);
  const size_t digits = std::min(line.find_first_not_of("01234567"), line.size());
  if (digits < 3 || digits > kLongestMode) return std::nullopt;
  line.remove_prefix(digits);
  if (!line.empty() && !IsBlank(line.front())) return std::nullopt;
  return TrimRight(TrimLeft(line, IsBlank), IsBlank);
}

bool IsEnd(std::string_view line) { return TrimRight(line, IsBlank) == kEnd; }

bool IsDataLine(std::string_view line) {
  const auto in_alphabet = [](char c) {
    return c >= kLowestUuCharacter && c <= kHighestUuCharacter;
  };
  line = TrimRight(line, IsBlank);
  if (line.empty()) return true;  // a line of no bytes whose blank was lost
  const auto needed = static_cast<size_t>(UuCharactersFor(UuValueOf(line.front())));
  return line.size() - 1 <= needed + kMostExtraCharacters &&
         std::all_of(line.begin(),
                     line.begin() + static_cast<std::ptrdiff_t>(std::min(needed + 1, line.size())),
                     in_alphabet);
}

// Whether a data line has all characters that its bytes need: prose hardly ever does.
bool IsWhole(std::string_view line) {
  return !line.empty() && line.size() - 1 >= (4 * ValueOf(line.front()) + 2) / 3;
}

// A line of blanks only is one of no bytes, whatever blanks they are.
size_t DecodedSize(std::string_view line) {
  return TrimRight(line, IsBlank).empty() ? 0 : ValueOf(line.front());
}

void DecodeLine(std::string_view line, Moutstream& out) {
  const size_t size = DecodedSize(line);
  if (size == 0) return;
  if (out.Counts()) {
    out.Count(static_cast<int64_t>(size));
    return;
  }
  line.remove_prefix(1);
  std::array<char, kMostUuBytes + 2> bytes;
  const auto at = [line](size_t i) { return i < line.size() ? ValueOf(line[i]) : 0; };
  for (size_t i = 0, j = 0; i < size; i += 3, j += 4) {
    const uint32_t bits = at(j) << 18 | at(j + 1) << 12 | at(j + 2) << 6 | at(j + 3);
    bytes[i] = static_cast<char>(bits >> 16 & 0xFF);
    bytes[i + 1] = static_cast<char>(bits >> 8 & 0xFF);
    bytes[i + 2] = static_cast<char>(bits & 0xFF);
  }
  out.WriteBlock(bytes.data(), static_cast<int64_t>(size));
}

}  // namespace

// ---- Lines --------------------------------------------------------------------------------

void UuLines::Reset() {
  partial_.clear();
  complete_ = cut_ = false;
}

size_t UuLines::Take(std::string_view text) {
  if (complete_) Reset();
  const char* begin = text.data();
  const char* end = begin + text.size();
  const char* line_end = FindLineEnd(begin, end);
  const std::string_view piece = text.substr(0, static_cast<size_t>(line_end - begin));
  complete_ = line_end < end;
  if (complete_ && partial_.empty() && !cut_) {
    cut_ = piece.size() > kLongestUuLine;
    line_ = piece.substr(0, kLongestUuLine);
  } else {
    cut_ = cut_ || partial_.size() + piece.size() > kLongestUuLine;
    partial_.append(piece.substr(0, kLongestUuLine - std::min(kLongestUuLine, partial_.size())));
    line_ = partial_;
  }
  if (!complete_) return text.size();
  const bool crlf = *line_end == '\r' && line_end + 1 < end && line_end[1] == '\n';
  return piece.size() + (crlf ? 2 : 1);
}

// ---- A body that is one file ----------------------------------------------------------------

void UuDecoder::Feed(std::string_view text) {
  const platform::CpuLevel level = platform::GetCpuLevel();
  const bool in_blocks = level != platform::CpuLevel::kPortable;
  while (!text.empty() && state_ != State::kBehind) {
    if (in_blocks && state_ == State::kInside && lines_.Complete()) text = FeedLines(level, text);
    text.remove_prefix(lines_.Take(text));
    if (lines_.Complete()) EndLine(lines_.Line());
  }
}

// Takes lines that go in blocks; answers with the rest, of which there is some.
std::string_view UuDecoder::FeedLines(platform::CpuLevel level, std::string_view text) {
  std::array<char, 4096> bytes;
  const char* end = text.data() + text.size();
  for (;;) {
    const auto at =
        DecodeUuLines(level, {text.data(), bytes.data()}, end, bytes.data() + bytes.size());
    if (at.in == text.data()) return text;
    out_.WriteBlock(bytes.data(), at.out - bytes.data());
    text.remove_prefix(static_cast<size_t>(at.in - text.data()));
  }
}

void UuDecoder::Finish() {
  if (!lines_.Complete()) EndLine(lines_.Line());
}

void UuDecoder::EndLine(std::string_view line) {
  if (state_ == State::kBefore) {
    if (line.starts_with(kBegin)) state_ = State::kInside;
  } else if (IsEnd(line)) {
    state_ = State::kBehind;
  } else {
    DecodeLine(line, out_);
  }
}

// ---- Blocks inside a text -------------------------------------------------------------------

// How far it is to the next line that may open a block: one that begins with "be", or with a "b" at
// the very end.
size_t UuScanner::DistanceToBegin(std::string_view text) const {
  const char* begin = text.data();
  const char* end = begin + text.size();
  const auto at_line_start = [&](const char* p) { return IsLineEnd(p > begin ? p[-1] : last_); };
  for (const char* p = begin; (p = FindPair(p, end, 'b', 'e')) < end; ++p) {
    if (at_line_start(p)) return static_cast<size_t>(p - begin);
  }
  const bool may_begin = text.ends_with('b') && at_line_start(end - 1);
  return may_begin ? text.size() - 1 : text.size();
}

void UuScanner::Pass(std::string_view& text, size_t count) {
  if (count == 0) return;
  last_ = text[count - 1];
  position_ += static_cast<int64_t>(count);
  text.remove_prefix(count);
}

void UuScanner::Feed(std::string_view text) {
  while (!text.empty()) {
    if (std::exchange(block_just_ended_, false) && last_ == '\r' && text.front() == '\n') {
      ++blocks_.back().length;
      ++inside_;
      Pass(text, 1);
    }
    if (!in_block_ && lines_.Complete()) Pass(text, DistanceToBegin(text));
    if (in_block_ && lines_.Complete()) PassDataLines(text);
    if (text.empty()) break;
    if (lines_.Complete()) line_start_ = position_;
    Pass(text, lines_.Take(text));
    if (lines_.Complete()) EndLine(lines_.Line(), lines_.Cut());
  }
}

void UuScanner::PassDataLines(std::string_view& text) {
  const char* begin = text.data();
  const auto lines = CountUuLines(platform::GetCpuLevel(), begin, begin + text.size());
  if (lines.in == begin) return;
  open_.decoded_size += lines.bytes;
  looks_real_ = true;
  Pass(text, static_cast<size_t>(lines.in - begin));
}

void UuScanner::Finish() {
  if (!lines_.Complete()) EndLine(lines_.Line(), lines_.Cut());
}

void UuScanner::EndLine(std::string_view line, bool cut) {
  if (in_block_ && !cut) {
    if (IsEnd(line) && looks_real_) return EndBlock();
    if (IsDataLine(line)) {
      open_.decoded_size += static_cast<int64_t>(DecodedSize(line));
      looks_real_ = looks_real_ || IsWhole(line);
      return;
    }
  }
  const auto name = cut ? std::nullopt : ParseBegin(line);
  in_block_ = name && blocks_.size() < most_;
  looks_real_ = false;
  if (in_block_) open_ = {.name = std::string(*name), .offset = line_start_};
}

void UuScanner::EndBlock() {
  open_.length = position_ - open_.offset;
  inside_ += open_.length;
  blocks_.push_back(std::move(open_));
  in_block_ = false;
  block_just_ended_ = true;
}

}  // namespace mimora

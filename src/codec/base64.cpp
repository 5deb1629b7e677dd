// Copyright (c) 2026 the mimora developers.
#include "codec/base64.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "codec/base64_alphabet.h"
#include "codec/base64_blocks.h"
#include "codec/run_coder.h"
#include "stream/scan.h"

namespace mimora {
namespace {

constexpr char kPadding = '=';

// Cuts the characters into lines.
class LineWriter {
 public:
  LineWriter(Moutstream& out, int32_t line_length) : out_(out), line_length_(line_length) {}

  void Write(std::string_view characters) {
    if (line_length_ < 1) {
      out_.WriteText(characters);
      return;
    }
    while (!characters.empty()) {
      const std::string_view piece =
          characters.substr(0, static_cast<size_t>(line_length_ - column_));
      out_.WriteText(piece);
      column_ += static_cast<int32_t>(piece.size());
      characters.remove_prefix(piece.size());
      if (column_ == line_length_) EndLine();
    }
  }

  // How many groups it takes to end the line.
  size_t GroupsLeft() const {
    return column_ == 0 ? 0 : (static_cast<size_t>(line_length_ - column_) + 3) / 4;
  }

  // Encodes whole lines, where they are made of whole groups, and tells how many bytes those were.
  size_t EncodeLines(std::string_view bytes) {
    constexpr int kUnbrokenPiece = 256;
    if (column_ > 0 || (line_length_ > 0 && line_length_ % 4 != 0)) return 0;
    const Base64Lines lines =
        line_length_ > 0 ? Base64Lines{line_length_, 2} : Base64Lines{kUnbrokenPiece, 0};
    std::array<char, 8192> text;
    const char* end = bytes.data() + bytes.size();
    const char* in = bytes.data();
    for (;;) {
      const auto at = EncodeBase64Lines({in, text.data()}, end, text.data() + text.size(), lines);
      if (at.in == in) return static_cast<size_t>(in - bytes.data());
      out_.WriteBlock(text.data(), at.out - text.data());
      in = at.in;
    }
  }

  void EndLine() {
    if (column_ > 0) out_.WriteText("\r\n");
    column_ = 0;
  }

 private:
  Moutstream& out_;
  const int32_t line_length_;
  int32_t column_ = 0;
};

// Encodes bytes that arrive in pieces; up to two of them wait for their group.
class Encoder {
 public:
  explicit Encoder(LineWriter& lines) : lines_(lines) {}

  void Feed(std::string_view bytes) {
    while (!bytes.empty() && waiting_ > 0) {
      Push(bytes.front());
      bytes.remove_prefix(1);
    }
    bytes.remove_prefix(EncodeGroups(bytes, lines_.GroupsLeft()));
    bytes.remove_prefix(lines_.EncodeLines(bytes));
    while (bytes.size() >= 3) bytes.remove_prefix(EncodeGroups(bytes, SIZE_MAX));
    for (const char c : bytes) Push(c);
  }

  void Finish() {
    if (waiting_ == 0) return lines_.EndLine();
    const int missing = 3 - waiting_;
    for (int i = 0; i < missing; ++i) group_[waiting_ + i] = 0;
    char characters[4];
    EncodeBase64Group(group_, characters);
    for (int i = 0; i < missing; ++i) characters[3 - i] = kPadding;
    lines_.Write({characters, 4});
    lines_.EndLine();
  }

 private:
  // Encodes groups, at most so many and some of them, and tells how many bytes those were.
  size_t EncodeGroups(std::string_view bytes, size_t most) {
    std::array<char, 4096> characters;
    const size_t groups = std::min({bytes.size() / 3, characters.size() / 4, most});
    for (size_t i = 0; i < groups; ++i) EncodeBase64Group(&bytes[3 * i], &characters[4 * i]);
    lines_.Write({characters.data(), 4 * groups});
    return 3 * groups;
  }

  void Push(char c) {
    group_[waiting_++] = c;
    if (waiting_ < 3) return;
    char characters[4];
    EncodeBase64Group(group_, characters);
    lines_.Write({characters, 4});
    waiting_ = 0;
  }

  LineWriter& lines_;
  char group_[3] = {};
  int waiting_ = 0;
};

}  // namespace

int32_t EncodeBase64(Minstream& in, Moutstream& out, int32_t line_length) {
  LineWriter lines(out, std::min(line_length, kLongestBase64Line));
  Encoder encoder(lines);
  return RunCoder(in, out, encoder);
}

void Base64Decoder::EndGroup() {
  // Two characters hold one whole byte, three hold two.
  const int whole = std::max(characters_ - 1, 0);
  const uint32_t bits = group_ << (6 * (4 - characters_));
  const char bytes[2] = {static_cast<char>(bits >> 16 & 0xFF), static_cast<char>(bits >> 8 & 0xFF)};
  characters_ = 0;
  group_ = 0;
  out_.WriteBlock(bytes, whole);
}

void Base64Decoder::Feed(std::string_view text) {
  std::array<char, 6144> bytes;
  size_t filled = 0;
  const char* p = text.data();
  const char* end = p + text.size();
  while (p < end) {
    if (padded_) {
      p = FindLineEnd(p, end);
      padded_ = p == end;
      continue;
    }
    if (filled + 3 > bytes.size()) {
      out_.WriteBlock(bytes.data(), static_cast<int64_t>(filled));
      filled = 0;
    }
    if (characters_ == 0) {
      char* out = bytes.data() + filled;
      const auto at = DecodeBase64Groups({p, out}, end, bytes.data() + bytes.size());
      filled += static_cast<size_t>(at.out - out);
      p = at.in;
      if (p == end || filled + 3 > bytes.size()) continue;
    }
    const char c = *p++;
    const uint8_t value = Base64Value(c);
    if (value != kForeignToBase64) {
      group_ = group_ << 6 | value;
      if (++characters_ < 4) continue;
      bytes[filled++] = static_cast<char>(group_ >> 16 & 0xFF);
      bytes[filled++] = static_cast<char>(group_ >> 8 & 0xFF);
      bytes[filled++] = static_cast<char>(group_ & 0xFF);
      characters_ = 0;
      group_ = 0;
    } else if (c == kPadding) {
      out_.WriteBlock(bytes.data(), static_cast<int64_t>(filled));
      filled = 0;
      EndGroup();
      padded_ = true;
    }
  }
  out_.WriteBlock(bytes.data(), static_cast<int64_t>(filled));
}

void Base64Counter::EndGroup() {
  bytes_ += characters_ / 4 * 3 + std::max<int64_t>(characters_ % 4 - 1, 0);
  characters_ = 0;
}

void Base64Counter::Feed(std::string_view text) {
  const char* p = text.data();
  const char* end = p + text.size();
  while (p < end) {
    if (padded_) {
      p = FindLineEnd(p, end);
      padded_ = p == end;
      continue;
    }
    const auto* padding =
        static_cast<const char*>(std::memchr(p, kPadding, static_cast<size_t>(end - p)));
    const char* stop = padding != nullptr ? padding : end;
    characters_ += CountBase64Characters(p, stop);
    p = stop;
    if (padding == nullptr) break;
    EndGroup();
    padded_ = true;
  }
}

void Base64Counter::Finish() {
  EndGroup();
  out_.Count(bytes_);
}

}  // namespace mimora

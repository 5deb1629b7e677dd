// Copyright (c) 2026 the mimora developers.
//
// Base64 (RFC 2045 6.8).
#ifndef MIMORA_CODEC_BASE64_H_
#define MIMORA_CODEC_BASE64_H_

#include <cstdint>
#include <string_view>

#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// The longest line that the encoder writes.
constexpr int32_t kLongestBase64Line = 80;

// Encodes the rest of IN. LINE_LENGTH: characters a line, at most kLongestBase64Line, each line
// ended by CR LF; below 1: no line ends. Answers 0, -1 when reading failed, -2 when writing did.
int32_t EncodeBase64(Minstream& in, Moutstream& out, int32_t line_length);

// Decodes text that arrives in pieces, cut anywhere. Padding ends a line, other characters outside
// the alphabet are skipped, and a group may go on in the next line.
class Base64Decoder {
 public:
  explicit Base64Decoder(Moutstream& out) : out_(out) {}

  void Feed(std::string_view text);

  // At the end of the text the whole bytes of a group that lacks its padding are written.
  void Finish() { EndGroup(); }

 private:
  void EndGroup();

  Moutstream& out_;
  uint32_t group_ = 0;  // the bits of the incomplete group
  int characters_ = 0;  // how many characters those are, 0 to 3
  bool padded_ = false;
};

// Tells a counting stream how much Base64Decoder would write.
class Base64Counter {
 public:
  explicit Base64Counter(Moutstream& out) : out_(out) {}

  void Feed(std::string_view text);
  void Finish();

 private:
  void EndGroup();

  Moutstream& out_;
  int64_t bytes_ = 0;
  int64_t characters_ = 0;  // of the alphabet, since the last padding
  bool padded_ = false;
};

}  // namespace mimora

#endif  // MIMORA_CODEC_BASE64_H_

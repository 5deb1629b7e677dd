// Copyright (c) 2026 the mimora developers.
//
// Quoted-printable (RFC 2045 6.7).
#ifndef MIMORA_CODEC_QUOTED_PRINTABLE_H_
#define MIMORA_CODEC_QUOTED_PRINTABLE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// Both answer 0, -1 when reading failed, -2 when writing did.
int32_t EncodeQuotedPrintable(Minstream& in, Moutstream& out);
int32_t DecodeQuotedPrintable(Minstream& in, Moutstream& out);

// Decodes text that arrives in pieces, cut anywhere. Blanks in front of a line end are dropped,
// line ends become CR LF, and what is no proper escape is passed through.
class QuotedPrintableDecoder {
 public:
  explicit QuotedPrintableDecoder(Moutstream& out) : out_(out) {}

  void Feed(std::string_view text);
  void Finish() { EndLine(""); }

 private:
  enum class Escape {
    kNone,
    kBegun,  // behind "="
    kDigit,  // behind "=" and one digit
  };

  const char* FeedPlain(const char* p, const char* end);
  const char* FeedText(const char* p, const char* end);
  const char* FeedEscape(const char* p, const char* end);
  void EndLine(std::string_view line_end);
  void Hold(const char* p, const char* end);
  void Release();
  void GiveUpEscape();

  Moutstream& out_;
  Escape escape_ = Escape::kNone;
  char digit_ = 0;
  bool after_cr_ = false;
  std::string held_;  // blanks that a line end would drop
};

}  // namespace mimora

#endif  // MIMORA_CODEC_QUOTED_PRINTABLE_H_

// Copyright (c) 2026 the mimora developers.
//
// Quoted-printable in blocks, as wide as the machine's vectors. All take what is plain and leave
// the rest, possibly everything, to their callers.
#ifndef MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_
#define MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_

#include <cstdint>

#include "platform/ascii.h"

namespace mimora {

// How far a coder has come, in what it reads and in what it writes.
struct QuotedPrintableProgress {
  const char* in;
  char* out;
};

// Decodes text, whole escapes, soft breaks and line ends. Stops outside of escapes and in front of
// blanks. Between the returned place and OUT_END there may be rubbish.
QuotedPrintableProgress DecodeQuotedPrintableBlocks(QuotedPrintableProgress at, const char* end,
                                                    const char* out_end);

struct QuotedPrintableCount {
  const char* in;
  int64_t bytes;
};

// The same, but only counts what would be written.
QuotedPrintableCount CountQuotedPrintableBlocks(const char* p, const char* end);

// The encoder's output, of which the last line is not yet complete.
struct QuotedPrintableLines {
  // A line is broken once it holds more than this.
  static constexpr int64_t kLongestPlainLine = 71;

  const char* in;
  char* out;
  char* line;  // where the last line begins

  void AddEscape(char c) {
    const auto byte = static_cast<uint8_t>(c);
    out[0] = '=';
    out[1] = kUpperHexDigits[byte >> 4];
    out[2] = kUpperHexDigits[byte & 15];
    out += 3;
  }

  bool BreakLongLine() {
    if (out - line <= kLongestPlainLine) return false;
    *out++ = '=';
    AddLineEnd();
    return true;
  }

  // A blank at the end of a line would be lost on the way.
  void EndLine() {
    if (out > line && IsBlank(out[-1])) AddEscape(*--out);
    AddLineEnd();
  }

  void AddLineEnd() {
    *out++ = '\r';
    *out++ = '\n';
    line = out;
  }
};

// Encodes as much as goes in blocks.
QuotedPrintableLines EncodeQuotedPrintableBlocks(QuotedPrintableLines at, const char* end,
                                                 const char* out_end);

}  // namespace mimora

#endif  // MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_

// Copyright (c) 2026 the mimora developers.
//
// Quoted-printable in blocks, as wide as the machine's vectors. All take what is plain and leave
// the rest, possibly everything, to their callers.
#ifndef MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_
#define MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_

#include <cstdint>

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

}  // namespace mimora

#endif  // MIMORA_CODEC_QUOTED_PRINTABLE_BLOCKS_H_

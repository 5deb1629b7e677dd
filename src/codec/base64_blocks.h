// Copyright (c) 2026 the mimora developers.
//
// Base64 in blocks, as wide as the machine's vectors. All take what is plain and leave the rest,
// possibly everything, to their callers.
#ifndef MIMORA_CODEC_BASE64_BLOCKS_H_
#define MIMORA_CODEC_BASE64_BLOCKS_H_

#include <cstdint>

namespace mimora {

// How far a coder has come, in what it reads and in what it writes.
struct Base64Progress {
  const char* in;
  char* out;
};

// Decodes whole groups as far as nothing but line ends stands between them. Between the returned
// place and OUT_END there may be rubbish.
Base64Progress DecodeBase64Groups(Base64Progress at, const char* end, const char* out_end);

// Lines of that many characters, which are whole groups, and what stands behind each: CR LF or
// nothing.
struct Base64Lines {
  int length;
  int line_end;
};

// Encodes whole lines, as many as there are bytes and room for.
Base64Progress EncodeBase64Lines(Base64Progress at, const char* end, const char* out_end,
                                 Base64Lines lines);

// How many characters of the alphabet there are in [p, end).
int64_t CountBase64Characters(const char* p, const char* end);

}  // namespace mimora

#endif  // MIMORA_CODEC_BASE64_BLOCKS_H_

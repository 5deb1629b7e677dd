// Copyright (c) 2026 the mimora developers.
//
// The parser: from the bytes of a stream to a tree of parts (RFC 5322, RFC 2046). Damaged mail is
// kept as well as it can be read; only a stream that fails ends a load early.
#ifndef MIMORA_MIME_PARSER_H_
#define MIMORA_MIME_PARSER_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "diag/result.h"
#include "mime/bodypart.h"
#include "stream/minstream.h"

namespace mimora {

// Makes the part what stands in the stream, from its present position on. What the part held before
// is gone. Results: kOk; kHeaderCut, kNoBoundary (the tree is complete); kNotOpen; kHeaderFailed,
// kReadFailed, kTempNotWritten (the tree holds what was read until then).
Result Load(Bodypart& part, Minstream& in);

// The same from a block of memory, over a stream that the part owns from then on.
Result LoadFromMemory(Bodypart& part, std::string_view data);

// The same from a private copy of the text.
Result LoadFromCopy(Bodypart& part, std::string_view text);

}  // namespace mimora

#endif  // MIMORA_MIME_PARSER_H_

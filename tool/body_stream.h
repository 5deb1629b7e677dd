// Copyright (c) 2026 the mimora developers.
//
// Bodies, passed on piece by piece.
#ifndef MIMORA_TOOL_BODY_STREAM_H_
#define MIMORA_TOOL_BODY_STREAM_H_

#include <mimora/mimora.h>

#include <cstdint>
#include <functional>
#include <string_view>

namespace mimora::tool {

// What it throws passes through the library.
using TakeBytes = std::function<void(std::string_view)>;

// Has SAVE write into a stream whose bytes go to TAKE. Returns what SAVE returns.
int32_t StreamBody(const std::function<int32_t(S_OutStream*)>& save, const TakeBytes& take);

// The same for bytes that are at hand.
void StreamBytes(std::string_view bytes, const TakeBytes& take);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_BODY_STREAM_H_

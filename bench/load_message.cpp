// Copyright (c) 2026 the mimora developers.
#include "load_message.h"

#include <mimora/mimora.h>

#include <algorithm>
#include <cstring>

namespace mimora::bench {
namespace {

constexpr int32_t kDefaultBuffer = 0;

Contents Count(M_Bodypart* part) {
  M_Bodypart* enclosed = M_GetMessageBodypartBody(part);
  if (enclosed && enclosed != part) return Count(enclosed);
  const int32_t children = M_GetChildBodypartsCount(part);
  Contents contents;
  for (int32_t i = 0; i < children; ++i) contents += Count(M_GetNthChildBodypart(part, i));
  if (children > 0) return contents;
  M_GetBodypartSize(part, &contents.bytes, nullptr);
  contents.leaves = 1;
  return contents;
}

Contents LoadAndDestroy(S_InStream* in) {
  M_Bodypart* message = M_CreateMessage();
  const bool loaded = M_LoadMessage(message, in) == MIMORA_OK;
  const Contents contents = loaded ? Count(message) : Contents();
  M_DestroyMessage(message);
  S_DestroyInStream(in);
  return contents;
}

// A source behind callbacks.
struct Position {
  std::string_view text;
  size_t at = 0;
};

Position& PositionOf(S_Context context) { return *reinterpret_cast<Position*>(context); }

int64_t Read(S_Context context, void* buffer, int64_t size) {
  Position& position = PositionOf(context);
  const size_t count = std::min(static_cast<size_t>(size), position.text.size() - position.at);
  std::memcpy(buffer, position.text.data() + position.at, count);
  position.at += count;
  return static_cast<int64_t>(count);
}

void Seek(S_Context context, int64_t to) { PositionOf(context).at = static_cast<size_t>(to); }

int64_t Tell(S_Context context) { return static_cast<int64_t>(PositionOf(context).at); }

}  // namespace

Contents LoadFromMemory(const Message& message) {
  const auto size = static_cast<int32_t>(message.text.size());
  return LoadAndDestroy(
      S_CreateInStream(message.text.data(), size, 0, nullptr, nullptr, nullptr, kDefaultBuffer));
}

Contents LoadFromFile(const Message& message) {
  return LoadAndDestroy(
      S_CreateInStream(message.file.c_str(), -1, 0, nullptr, nullptr, nullptr, kDefaultBuffer));
}

Contents LoadFromCallbacks(const Message& message) {
  Position position{message.text};
  return LoadAndDestroy(S_CreateInStream(nullptr, 0, reinterpret_cast<S_Context>(&position), Read,
                                         Seek, Tell, kDefaultBuffer));
}

}  // namespace mimora::bench

// Copyright (c) 2026 the mimora developers.
#include "tool/body_stream.h"

#include <new>

#include "tool/message.h"

namespace mimora::tool {
namespace {

constexpr int32_t kPiece = 65536;

int64_t PassOn(S_Context context, const void* data, int64_t length) {
  const auto& take = *reinterpret_cast<const TakeBytes*>(context);
  take({static_cast<const char*>(data), static_cast<std::size_t>(length)});
  return length;
}

}  // namespace

int32_t StreamBody(const std::function<int32_t(S_OutStream*)>& save, const TakeBytes& take) {
  const OutStreamHandle stream(S_CreateOutStream(nullptr, reinterpret_cast<S_Context>(&take),
                                                 &PassOn, nullptr, nullptr, kPiece));
  if (stream == nullptr) throw std::bad_alloc();
  return save(stream.get());
}

void StreamBytes(std::string_view bytes, const TakeBytes& take) {
  for (std::size_t at = 0; at < bytes.size(); at += kPiece) take(bytes.substr(at, kPiece));
}

}  // namespace mimora::tool

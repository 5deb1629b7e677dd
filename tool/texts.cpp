// Copyright (c) 2026 the mimora developers.
#include "tool/texts.h"

#include <utility>

namespace mimora::tool {
namespace {

// Types beyond this are cut; none in use comes near it.
constexpr uint32_t kLongestType = 256;

// The library only tells that a name does not fit. Few tries with much more room each time keep
// the cost of a name in proportion to it; one that never fits is cut.
constexpr uint32_t kRoomForNames = 512;
constexpr uint32_t kMostRoomForNames = kRoomForNames << 15;

std::optional<std::string> TextUpToZero(const std::string& buffer) {
  std::string text = buffer.c_str();
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

std::string LowerCase(std::string text) {
  for (char& letter : text)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return text;
}

std::string DecodedValue(const char* value, const char* charset) {
  const auto copy = [=](char* buffer, uint32_t* size) {
    return M_DecodeHeaderFieldValue(value, charset, buffer, size) == 1 ? 0 : 1;
  };
  return CopiedText(copy).value_or("");
}

std::optional<std::string> AttachmentName(M_Bodypart* part, int32_t number, const char* charset) {
  std::string buffer;
  for (uint32_t room = kRoomForNames; room <= kMostRoomForNames; room <<= 5) {
    buffer.resize(room);
    if (M_GetAttachmentName(number, part, buffer.data(), room, charset) == 0)
      return TextUpToZero(buffer);
  }
  M_GetBodypartName(part, buffer.data(), static_cast<uint32_t>(buffer.size()));
  return TextUpToZero(buffer);
}

std::optional<std::string> AttachmentType(M_Bodypart* part, int32_t number) {
  char type[kLongestType] = "";
  M_GetAttachmentMimeType(number, part, type, sizeof type);
  return *type == '\0' ? std::nullopt : std::optional(LowerCase(type));
}

}  // namespace mimora::tool

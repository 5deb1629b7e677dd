// Copyright (c) 2026 the mimora developers.
//
// Texts that the library copies, as strings.
#ifndef MIMORA_TOOL_TEXTS_H_
#define MIMORA_TOOL_TEXTS_H_

#include <mimora/mimora.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace mimora::tool {

inline constexpr const char* kUtf8 = "utf-8";

// Takes a text from a function that tells the room it needs before it copies.
template <typename Copy>
std::optional<std::string> CopiedText(Copy copy) {
  uint32_t size = 0;
  if (copy(nullptr, &size) != 1) return std::nullopt;
  std::string text(size, '\0');
  if (copy(text.data(), &size) != 0) return std::nullopt;
  text.resize(std::strlen(text.c_str()));
  return text;
}

// ASCII letters only, whatever the locale.
std::string LowerCase(std::string text);

// A header value without folding and encoded words.
std::string DecodedValue(const char* value, const char* charset);

// The name of a part (NUMBER 0) or of a file embedded in its body, if it has one.
std::optional<std::string> AttachmentName(M_Bodypart* part, int32_t number, const char* charset);

// The type of the same in lower case; missing when it is not known.
std::optional<std::string> AttachmentType(M_Bodypart* part, int32_t number);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_TEXTS_H_

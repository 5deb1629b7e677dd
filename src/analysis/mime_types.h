// Copyright (c) 2026 the mimora developers.
//
// Content types and file name extensions.
#ifndef MIMORA_ANALYSIS_MIME_TYPES_H_
#define MIMORA_ANALYSIS_MIME_TYPES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "mime/bodypart.h"

namespace mimora {

// The extension of files of that type ("text/plain"), in upper case with its dot, from the
// library's own short table; empty for a type that is not in it.
std::string_view ExtensionForType(std::string_view type);

// The type that this machine gives to files with that extension, which begins with its dot; else
// that of the library's own table.
std::optional<std::string> TypeForExtension(std::string_view extension);

// The type of a part (number 0), or of the n-th file inside its body, which only its name can tell.
std::optional<std::string> AttachmentType(const Bodypart& part, int32_t number);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_MIME_TYPES_H_

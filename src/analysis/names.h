// Copyright (c) 2026 the mimora developers.
//
// Header texts as people read and write them: names of parts, and fields that are added.
#ifndef MIMORA_ANALYSIS_NAMES_H_
#define MIMORA_ANALYSIS_NAMES_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "mime/bodypart.h"

namespace mimora {

// The name that the header gives to a part, with its encoded words decoded into the target charset
// (empty: UTF-8); empty when it gives none.
std::string BodypartName(const Bodypart& part, std::string_view target_charset);

// That of a part (number 0), or of the n-th file inside its body.
std::string AttachmentName(const Bodypart& part, int32_t number, std::string_view target_charset);

// Appends a field to the header, its value encoded and without line ends that would begin another
// field. False for what is no name of a field.
bool AddHeaderField(Bodypart& part, std::string_view name, std::string_view value);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_NAMES_H_

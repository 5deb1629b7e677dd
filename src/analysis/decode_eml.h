// Copyright (c) 2026 the mimora developers.
//
// A stored message taken apart into files.
#ifndef MIMORA_ANALYSIS_DECODE_EML_H_
#define MIMORA_ANALYSIS_DECODE_EML_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "mime/bodypart.h"

namespace mimora {

// Told of each file that was written: the part, 0 for its own body or the number of the file inside
// it, where it is, and how many bytes it has.
using OnDecodedPart =
    std::function<void(Bodypart& part, int32_t number, const std::string& path, int64_t size)>;

// Writes every leaf of the message, and every file embedded in one, decoded into files of the
// directory. Text is translated into the target charset, unless that is empty or the text's own is
// not known. No file that exists is touched, and none lands elsewhere. A file that cannot be
// written is removed again, and the others follow.
//
// Counts the files that were written. Answers kUnknownCharset for a target charset that is not
// known, the loader's result when the message could not be loaded, else the result of the first
// file that failed, else the loader's.
int32_t DecodeEml(const char* file_name, const std::string& directory,
                  std::string_view target_charset, const OnDecodedPart& on_part, uint32_t& count);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_DECODE_EML_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_CODEC_FILE_CODERS_H_
#define MIMORA_CODEC_FILE_CODERS_H_

#include <cstdint>

#include "diag/result.h"

namespace mimora {

// From file to file, by name; the output file is created or emptied. Results: kOk, kInputNotOpened,
// kOutputNotOpened, kReadFailed, kWriteFailed.
Result EncodeBase64File(const char* input, const char* output, int32_t line_length);
Result DecodeBase64File(const char* input, const char* output);

}  // namespace mimora

#endif  // MIMORA_CODEC_FILE_CODERS_H_

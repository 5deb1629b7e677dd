// Copyright (c) 2026 the mimora developers.
//
// A part's bytes as they stand in the source, undecoded.
#ifndef MIMORA_ANALYSIS_RAW_BODY_H_
#define MIMORA_ANALYSIS_RAW_BODY_H_

#include <cstdint>

#include "mime/bodypart.h"
#include "stream/minstream.h"

namespace mimora {

// Read up to *SIZE bytes into BUFFER, from OFFSET bytes behind the start of the body, or of the
// part, and store how many there were. The stream is IN, or without one that of the part. A part
// other than the root ends with its body. Result 0, the stream's error, or kNotOpen when something
// is missing.
int32_t ReadBodyText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                     uint32_t* size);
int32_t ReadBodypartText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                         uint32_t* size);

// Write *COUNT bytes from there into a file and store how many it were: all of them, or the file is
// removed again. Result 0, the stream's error, kOutputNotOpened, kReadFailed when there are fewer
// bytes, kWriteFailed, or kNotOpen.
int32_t SaveText(const Bodypart* part, Minstream* in, const char* file_name, bool body_only,
                 int32_t offset, uint32_t* count);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_RAW_BODY_H_

// Copyright (c) 2026 the mimora developers.
//
// The attachment table of a TNEF stream ("winmail.dat").
#ifndef MIMORA_MIME_TNEF_H_
#define MIMORA_MIME_TNEF_H_

#include <cstdint>
#include <vector>

#include "mime/bodypart.h"
#include "stream/minstream.h"

namespace mimora {

// Appends the files of a TNEF stream of SIZE bytes, which begins at the position 0 of IN. Every
// length in the stream is checked against what is there; a stream that breaks off keeps the files
// found until then. At most MOST files are listed. False when it is no TNEF stream at all.
bool ReadTnefAttachments(Minstream& in, int64_t size, size_t most,
                         std::vector<EmbeddedAttachment>& files);

}  // namespace mimora

#endif  // MIMORA_MIME_TNEF_H_

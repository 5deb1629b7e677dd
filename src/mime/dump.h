// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_MIME_DUMP_H_
#define MIMORA_MIME_DUMP_H_

#include <cstdio>

#include "mime/bodypart.h"

namespace mimora {

// Writes a readable dump of the part and all below it, line by line.
void DumpBodypart(const Bodypart* part, std::FILE* file);

}  // namespace mimora

#endif  // MIMORA_MIME_DUMP_H_

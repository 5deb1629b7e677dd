// Copyright (c) 2026 the mimora developers.
#include "analysis/raw_body.h"

#include <algorithm>

#include "diag/result.h"

namespace mimora {
namespace {

int32_t ReadAt(const Bodypart* part, Minstream* in, int64_t start, int64_t end, void* buffer,
               uint32_t* size) {
  if (in == nullptr) in = part->BodyStream;
  if (in == nullptr) return kNotOpen;
  in->SetBoundary({});
  in->SetReadLimit(kNoReadLimit);
  in->Seek(start);
  // Where the source cannot go there is nothing to read.
  const bool arrived = in->Position() == start;
  const int64_t count = arrived ? std::clamp<int64_t>(end - start, 0, *size) : 0;
  *size = static_cast<uint32_t>(in->ReadBlock(static_cast<char*>(buffer), count));
  return in->GetError();
}

}  // namespace

int32_t ReadBodyText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                     uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  return ReadAt(part, in, part->BodyStart + offset, kWholeStream, buffer, size);
}

int32_t ReadBodypartText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                         uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  const int64_t end = part->Parent != nullptr ? part->BodyStart + part->BodyLength : kWholeStream;
  return ReadAt(part, in, part->PartStart + offset, end, buffer, size);
}

}  // namespace mimora

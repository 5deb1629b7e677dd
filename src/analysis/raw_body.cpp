// Copyright (c) 2026 the mimora developers.
#include "analysis/raw_body.h"

#include "diag/result.h"

namespace mimora {
namespace {

int32_t ReadAt(Minstream& in, int64_t position, int64_t limit, void* buffer, uint32_t* size) {
  in.SetBoundary({});
  in.SetReadLimit(kNoReadLimit);
  in.Seek(position);
  in.SetReadLimit(limit);
  *size = static_cast<uint32_t>(in.ReadBlock(static_cast<char*>(buffer), *size));
  in.SetReadLimit(kNoReadLimit);
  return in.GetError();
}

}  // namespace

int32_t ReadBodyText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                     uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  if (in == nullptr) in = part->BodyStream;
  if (in == nullptr) return kNotOpen;
  return ReadAt(*in, part->BodyStart + offset, kNoReadLimit, buffer, size);
}

int32_t ReadBodypartText(const Bodypart* part, Minstream* in, void* buffer, int32_t offset,
                         uint32_t* size) {
  if (part == nullptr || buffer == nullptr || size == nullptr) return kNotOpen;
  if (in == nullptr) in = part->BodyStream;
  if (in == nullptr) return kNotOpen;
  const int64_t limit = part->Parent != nullptr ? part->BodyStart + part->BodyLength : kNoReadLimit;
  return ReadAt(*in, part->PartStart + offset, limit, buffer, size);
}

}  // namespace mimora

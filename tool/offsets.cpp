// Copyright (c) 2026 the mimora developers.
#include "tool/offsets.h"

#include <new>

namespace mimora::tool {
namespace {

int64_t ReadNothing(S_Context, const void**, int64_t) { return 0; }

void NotePosition(S_Context context, int64_t position) {
  *reinterpret_cast<int64_t*>(context) = position;
}

// Answering with the noted place keeps the stream consistent: being asked for the place where it
// stands already, it need not be moved.
int64_t TellPosition(S_Context context) { return *reinterpret_cast<int64_t*>(context); }

}  // namespace

OffsetProbe::OffsetProbe()
    : stream_(S_CreateInStream1(reinterpret_cast<S_Context>(&position_), 0, &ReadNothing,
                                &NotePosition, &TellPosition)) {
  if (stream_ == nullptr) throw std::bad_alloc();
}

int64_t OffsetProbe::HeaderOffset(M_Bodypart* part) { return Ask(&M_GetBodypartText, part); }

int64_t OffsetProbe::BodyOffset(M_Bodypart* part) { return Ask(&M_GetBodyText, part); }

int64_t OffsetProbe::Ask(ReadText* read_text, M_Bodypart* part) {
  char none;
  uint32_t size = 0;
  const int32_t result = read_text(part, stream_.get(), &none, 0, &size);
  if (result != MIMORA_OK) throw MessageError("the place of a part cannot be found out", result);
  return position_;
}

}  // namespace mimora::tool

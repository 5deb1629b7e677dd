// Copyright (c) 2026 the mimora developers.
//
// The letter of a message: the plain text that a person wrote, wherever the structure has put it.
#ifndef MIMORA_ANALYSIS_TEXT_LETTER_H_
#define MIMORA_ANALYSIS_TEXT_LETTER_H_

#include "mime/bodypart.h"

namespace mimora {

// Searches the message or part and what is below it; null when there is no letter. Of a mixed
// multipart the first text part decides: one that is HTML means that there is none.
Bodypart* FindTextLetter(Bodypart& part);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_TEXT_LETTER_H_

// Copyright (c) 2026 the mimora developers.
//
// Signed and encrypted messages as MIME entities (RFC 8551 3).
#ifndef MIMORA_SMIME_ENTITY_H_
#define MIMORA_SMIME_ENTITY_H_

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "stream/moutstream.h"

namespace mimora {

// Writes a signature. With the CONTENT that was signed, which is a MIME entity itself, it becomes a
// multipart/signed with that BOUNDARY; without it the BLOB holds the content. HASH: the algorithm.
void WriteSignedEntity(std::optional<std::string_view> content, std::string_view blob,
                       std::string_view boundary, std::string_view hash, Moutstream& out);

void WriteEnvelopedEntity(std::string_view blob, Moutstream& out);

// Three random numbers in hexadecimal, the last one first, drawn again until the content does
// not have them in it. DRAW gives the numbers.
std::string MakeBoundary(std::string_view content, const std::function<uint32_t()>& draw);

}  // namespace mimora

#endif  // MIMORA_SMIME_ENTITY_H_

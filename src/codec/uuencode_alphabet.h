// Copyright (c) 2026 the mimora developers.
//
// The characters of uuencoded data. A line is the number of bytes as one character, then four
// characters for three bytes.
#ifndef MIMORA_CODEC_UUENCODE_ALPHABET_H_
#define MIMORA_CODEC_UUENCODE_ALPHABET_H_

namespace mimora {

constexpr char kLowestUuCharacter = ' ';
constexpr char kHighestUuCharacter = '`';
constexpr int kMostUuBytes = 63;

constexpr int UuValueOf(char c) { return (c - kLowestUuCharacter) & 63; }

constexpr int UuCharactersFor(int bytes) { return (bytes + 2) / 3 * 4; }

}  // namespace mimora

#endif  // MIMORA_CODEC_UUENCODE_ALPHABET_H_

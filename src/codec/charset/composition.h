// Copyright (c) 2026 the mimora developers.
//
// Letters with marks: one character, or the letter and the mark behind it.
#ifndef MIMORA_CODEC_CHARSET_COMPOSITION_H_
#define MIMORA_CODEC_CHARSET_COMPOSITION_H_

#include <cstddef>
#include <tuple>

namespace mimora {

struct Composition {
  char16_t letter;  // which may be composed itself
  char16_t mark;
  char16_t composed;
};

constexpr std::tuple<char16_t, char16_t> ByMark(const Composition& row) {
  return {row.mark, row.letter};
}

// The same rows twice, by mark and then letter, and by composed character. Made by the build.
extern const Composition kCompositionsByMark[];
extern const Composition kCompositionsByComposed[];
extern const size_t kCompositionCount;

// Whether some letter is composed with it.
bool IsMark(char16_t unit);

// 0 when there is no such character.
char16_t Compose(char16_t letter, char16_t mark);

// Takes off all marks. Answers the end of what it wrote into WIDE, which has the room.
constexpr size_t kLongestDecomposition = 4;
char16_t* Decompose(char16_t unit, char16_t* wide);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_COMPOSITION_H_

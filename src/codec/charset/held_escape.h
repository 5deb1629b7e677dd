// Copyright (c) 2026 the mimora developers.
//
// Escape sequences that arrive byte by byte.
#ifndef MIMORA_CODEC_CHARSET_HELD_ESCAPE_H_
#define MIMORA_CODEC_CHARSET_HELD_ESCAPE_H_

#include <span>

#include "codec/charset/shift_decoder.h"

namespace mimora {

constexpr uint8_t kEscape = 0x1B;

// Bytes from 21 to 7E are graphic characters or their halves; those below stand for themselves in
// whatever state a text is.
constexpr uint8_t kFirstGraphic = 0x21;
constexpr uint8_t kLastGraphic = 0x7E;

// The bytes of what may become an escape sequence.
class HeldEscape {
 public:
  bool Any() const { return length_ > 0; }

  // Takes bytes, the first of which is kEscape if there is none yet. Answers the index of the
  // sequence that is complete with them; otherwise the number of those known. What turns out to be
  // none of them is written as characters; a byte that cannot be part of any is left alone.
  size_t Take(DecodeCursor& cursor, std::span<const std::string_view> known) {
    if (!Any()) {
      const size_t whole = FindWhole(cursor, known);
      if (whole < known.size()) return whole;
    }
    const uint8_t byte = cursor.Byte();
    if (Any() && (byte < kFirstGraphic || byte > kLastGraphic)) {
      cursor.wide = Release(cursor.wide);
      return known.size();
    }
    ++cursor.p;
    bytes_[length_++] = static_cast<char>(byte);
    return Decide(cursor, known);
  }

  char16_t* Release(char16_t* wide) {
    for (size_t i = 0; i < length_; ++i) *wide++ = static_cast<char16_t>(bytes_[i]);
    length_ = 0;
    return wide;
  }

 private:
  // Most sequences are in view from their beginning to their end.
  static size_t FindWhole(DecodeCursor& cursor, std::span<const std::string_view> known) {
    const std::string_view rest(cursor.p, static_cast<size_t>(cursor.end - cursor.p));
    for (size_t i = 0; i < known.size(); ++i) {
      if (!rest.starts_with(known[i])) continue;
      cursor.p += known[i].size();
      return i;
    }
    return known.size();
  }

  size_t Decide(DecodeCursor& cursor, std::span<const std::string_view> known) {
    bool may_become_one = false;
    for (size_t i = 0; i < known.size(); ++i) {
      if (!known[i].starts_with({bytes_, length_})) continue;
      if (known[i].size() == length_) {
        length_ = 0;
        return i;
      }
      may_become_one = true;
    }
    if (!may_become_one) cursor.wide = Release(cursor.wide);
    return known.size();
  }

  char bytes_[4] = {};  // the longest sequence, known or not
  size_t length_ = 0;
};

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_HELD_ESCAPE_H_

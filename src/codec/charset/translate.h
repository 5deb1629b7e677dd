// Copyright (c) 2026 the mimora developers.
//
// Text from one character set to another. What has no meaning in the one, or no place in the other,
// is replaced; a byte-order mark in front is no part of the text. No page may be unknown to
// MakeDecoder and MakeEncoder.
#ifndef MIMORA_CODEC_CHARSET_TRANSLATE_H_
#define MIMORA_CODEC_CHARSET_TRANSLATE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "codec/charset/charset_coder.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

// Translates a text that arrives in pieces, cut anywhere.
class Translator {
 public:
  Translator(uint32_t from, uint32_t to, size_t longest_piece);

  // What a piece becomes. The answer lives until the next call.
  std::string_view Translate(std::string_view piece);

  // The end of the text.
  std::string_view Finish();

 private:
  char* Encode(const char16_t* end);

  std::unique_ptr<CharsetDecoder> decoder_;
  std::unique_ptr<CharsetEncoder> encoder_;
  std::unique_ptr<char16_t[]> wide_;
  std::unique_ptr<char[]> bytes_;
  bool mark_may_follow_;
};

// Translates the rest of IN. Answers 0, -1 when reading failed, -2 when writing did.
int32_t TranslateStream(Minstream& in, Moutstream& out, uint32_t from, uint32_t to);

// Translates a text that is known as a whole.
std::string TranslateText(std::string_view text, uint32_t from, uint32_t to);

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_TRANSLATE_H_

// Copyright (c) 2026 the mimora developers.
//
// Text of any character set to UTF-16 and back, piece by piece: characters, escape sequences and
// shift states may be cut anywhere between two pieces. A coder belongs to one thread at a time.
#ifndef MIMORA_CODEC_CHARSET_CHARSET_CODER_H_
#define MIMORA_CODEC_CHARSET_CHARSET_CODER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace mimora {

constexpr char16_t kReplacement = 0xFFFD;  // for what is no character
constexpr char16_t kByteOrderMark = 0xFEFF;

// The room that a decoder needs for the next COUNT bytes, or for its end (0).
constexpr size_t DecodedRoom(size_t count) { return count + 8; }

class CharsetDecoder {
 public:
  virtual ~CharsetDecoder() = default;

  // Decodes the next piece and answers the end of what it wrote into WIDE, which has the room. What
  // may be the beginning of a character is held back.
  virtual char16_t* Decode(std::string_view bytes, char16_t* wide) = 0;

  // Ends the text: writes what stands for the bytes that are held back, and is as new.
  virtual char16_t* Finish(char16_t* wide) = 0;

  // Whether something had no meaning, so that a substitute was written, since the coder was made.
  bool FoundInvalid() const { return invalid_; }

 protected:
  bool invalid_ = false;
};

// The room that an encoder needs for the next COUNT units, or for its end (0).
constexpr size_t EncodedRoom(size_t count) { return 8 * count + 8; }

struct EncodeOptions {
  // Whether a character that the set lacks may become a similar one.
  bool best_fit = true;
  // What is written for a character that has no encoding, one byte or two; 0: the page's own.
  uint16_t default_char = 0;
};

class CharsetEncoder {
 public:
  virtual ~CharsetEncoder() = default;

  // Encodes the next piece and answers the end of what it wrote into BYTES, which has the room. The
  // first half of a surrogate pair at the end is held back.
  virtual char* Encode(std::u16string_view wide, char* bytes) = 0;

  // Ends the text: writes what is held back, returns to the initial shift state, and is as new.
  virtual char* Finish(char* bytes) = 0;

  // Whether a character had no encoding, so that the default character was written, since the coder
  // was made.
  bool UsedDefault() const { return used_default_; }

 protected:
  bool used_default_ = false;
};

// Null for a page that is not known. The pages 1200 and 1201 are UTF-16.
std::unique_ptr<CharsetDecoder> MakeDecoder(uint32_t code_page);
std::unique_ptr<CharsetEncoder> MakeEncoder(uint32_t code_page, EncodeOptions options = {});

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_CHARSET_CODER_H_

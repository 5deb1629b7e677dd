// Copyright (c) 2026 the mimora developers.
//
// The alphabet of base64 (RFC 2045 6.8), which UTF-7 has as well.
#ifndef MIMORA_CODEC_BASE64_ALPHABET_H_
#define MIMORA_CODEC_BASE64_ALPHABET_H_

#include <array>
#include <cstdint>
#include <string_view>

namespace mimora {

constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Above every value of the alphabet, in a bit that none of them has.
constexpr uint8_t kForeignToBase64 = 0x80;

consteval std::array<uint8_t, 256> MakeBase64Values() {
  std::array<uint8_t, 256> values;
  values.fill(kForeignToBase64);
  for (uint8_t i = 0; i < kBase64Alphabet.size(); ++i) {
    values[static_cast<uint8_t>(kBase64Alphabet[i])] = i;
  }
  return values;
}

constexpr std::array<uint8_t, 256> kBase64Values = MakeBase64Values();

constexpr uint8_t Base64Value(char c) { return kBase64Values[static_cast<uint8_t>(c)]; }

// Three bytes become four characters.
constexpr void EncodeBase64Group(const char* bytes, char* characters) {
  const uint32_t bits = static_cast<uint32_t>(static_cast<uint8_t>(bytes[0])) << 16 |
                        static_cast<uint32_t>(static_cast<uint8_t>(bytes[1])) << 8 |
                        static_cast<uint8_t>(bytes[2]);
  characters[0] = kBase64Alphabet[bits >> 18];
  characters[1] = kBase64Alphabet[bits >> 12 & 63];
  characters[2] = kBase64Alphabet[bits >> 6 & 63];
  characters[3] = kBase64Alphabet[bits & 63];
}

}  // namespace mimora

#endif  // MIMORA_CODEC_BASE64_ALPHABET_H_

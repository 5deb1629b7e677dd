// Copyright (c) 2026 the mimora developers.
//
// The digest MD5 (RFC 1321).
#ifndef MIMORA_UTIL_MD5_H_
#define MIMORA_UTIL_MD5_H_

#include <array>
#include <cstdint>
#include <string_view>

namespace mimora {

using Md5Digest = std::array<uint8_t, 16>;

Md5Digest Md5(std::string_view data);

// The bytes that WriteMd5Text writes at most, its zero included.
constexpr size_t kMd5TextSize = 39;

// Writes the digest as zero-terminated text as callers have stored it for long: a byte is two
// hexadecimal digits, but one from 0x80 on is "ff", and when it is the last one "ffffff" and its
// digits.
void WriteMd5Text(const Md5Digest& digest, char* text);

}  // namespace mimora

#endif  // MIMORA_UTIL_MD5_H_

// Copyright (c) 2026 the mimora developers.
//
// The checksum CRC-32 of IEEE 802.3.
#ifndef MIMORA_UTIL_CRC32_H_
#define MIMORA_UTIL_CRC32_H_

#include <cstdint>
#include <string_view>

namespace mimora {

// What the register begins with. The usual CRC-32 is the complement of the register in the end.
constexpr uint32_t kCrc32Start = 0xFFFFFFFF;

// The register after some more data.
uint32_t UpdateCrc32(uint32_t crc, std::string_view data);

// The same by tables alone, as machines without the multiplication for it do it.
uint32_t UpdateCrc32ByTables(uint32_t crc, std::string_view data);

}  // namespace mimora

#endif  // MIMORA_UTIL_CRC32_H_

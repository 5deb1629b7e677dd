// Copyright (c) 2026 the mimora developers.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "util/crc32.h"
#include "util/md5.h"

namespace mimora::testing {
namespace {

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(static_cast<uint8_t>(byte)));
    hex += digits;
  }
  return hex;
}

std::string_view View(const Md5Digest& digest) {
  return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

TEST(Crc32, IsThatOfIeeeWithoutTheInversion) {
  EXPECT_EQ(UpdateCrc32(kCrc32Start, ""), 0xFFFFFFFF);
  EXPECT_EQ(UpdateCrc32(kCrc32Start, "123456789"), 0x340BC6D9u);
  EXPECT_EQ(UpdateCrc32(kCrc32Start, std::string(1000, 'a')), ~0x9A38DA03u);
}

TEST(Crc32, IsTheSameInOneWayAndTheOtherAndInPieces) {
  std::mt19937 random(1);
  std::string bytes(1000, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  for (size_t size = 0; size < 600; ++size) {
    const std::string_view data = std::string_view(bytes).substr(random() % 400, size);
    uint32_t by_byte = kCrc32Start;
    for (size_t i = 0; i < size; ++i) by_byte = UpdateCrc32ByTables(by_byte, data.substr(i, 1));
    const size_t cut = random() % (size + 1);
    EXPECT_EQ(UpdateCrc32(kCrc32Start, data), by_byte) << size;
    EXPECT_EQ(UpdateCrc32ByTables(kCrc32Start, data), by_byte) << size;
    EXPECT_EQ(UpdateCrc32(UpdateCrc32(kCrc32Start, data.substr(0, cut)), data.substr(cut)),
              by_byte);
  }
}

TEST(Md5, IsThatOfTheStandard) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& [text, want] : cases) EXPECT_EQ(Hex(View(Md5(text))), want) << text;
  EXPECT_EQ(Md5(std::string_view()), Md5("")) << "no text at all";
  std::string digests;
  for (size_t size = 0; size <= 200; ++size) digests += View(Md5(std::string(size, 'a')));
  EXPECT_EQ(Hex(View(Md5(digests))), "d2a4f9fd5d451c0381f758277052e173") << "all sizes up to 200";
}

TEST(Md5, AsTextKeepsOnlyTheLowHalfOfTheBytes) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", "ff1dffffff00ff04ffff09ffffff427e"},
      {"b", "ffff5fffffff2fff3aff1c77753157ffffff8f"},
  };
  for (const auto& [text, want] : cases) {
    char buffer[kMd5TextSize + 1];
    std::fill(std::begin(buffer), std::end(buffer), '#');
    WriteMd5Text(Md5(text), buffer);
    EXPECT_EQ(buffer, want);
    EXPECT_EQ(buffer[want.size() + 1], '#');
  }
}

}  // namespace
}  // namespace mimora::testing

// Copyright (c) 2026 the mimora developers.
#include <mimora/mimora.h>

#include <memory>
#include <vector>

#include "benchmarks.h"
#include "corpus.h"

namespace mimora::bench {
namespace {

constexpr size_t kBlock = 1 << 20;
constexpr uint32_t kLongestCrc = 65535;

uint32_t SizeOf(const std::string& text) { return static_cast<uint32_t>(text.size()); }

std::vector<char> Compress(const std::string& text) {
  std::vector<char> block(1 + text.size() + text.size() / 256);
  block.resize(P_LZ_Compress(text.data(), block.data(), SizeOf(text)));
  return block;
}

void RegisterCompression(const std::string& name, const std::string& text) {
  Register("lz/compress/" + name, text.size(), [text] { return Compress(text).size(); });
  const std::vector<char> block = Compress(text);
  const auto out = std::make_shared<std::string>(text.size(), '\0');
  Register("lz/uncompress/" + name, text.size(), [block, out] {
    return P_LZ_Uncompress(block.data(), out->data(), static_cast<uint32_t>(block.size()));
  });
}

}  // namespace

void RegisterUtilities(const std::string& corpus) {
  const std::string mail = ReadFile(corpus + "/small.mail").substr(0, kBlock);
  const std::string bytes = ReadFile(corpus + "/bytes.bin").substr(0, kBlock);
  RegisterCompression("mail", mail);
  RegisterCompression("random", bytes);
  Register("crc32", kLongestCrc, [bytes] { return P_CRC32(bytes.data(), kLongestCrc); });
  Register("md5", bytes.size(), [bytes] {
    unsigned char digest[16];
    P_MD5SumBin(bytes.data(), SizeOf(bytes), digest);
    return digest[0];
  });
}

}  // namespace mimora::bench

// Copyright (c) 2026 the mimora developers.
//
// The algorithms that mail is signed and encrypted with. What is broken is not among them.
#ifndef MIMORA_SMIME_ALGORITHMS_H_
#define MIMORA_SMIME_ALGORITHMS_H_

#include <cstdint>
#include <string_view>

namespace mimora {

enum class AlgorithmKind : uint32_t { kHash = 1, kCipher = 2 };

struct Algorithm {
  const char* name;  // OpenSSL knows it by the same
  uint32_t bits;     // of the digest, or of the key
  AlgorithmKind kind;
};

constexpr Algorithm kAlgorithms[] = {
    {"SHA1", 160, AlgorithmKind::kHash},          {"SHA224", 224, AlgorithmKind::kHash},
    {"SHA256", 256, AlgorithmKind::kHash},        {"SHA384", 384, AlgorithmKind::kHash},
    {"SHA512", 512, AlgorithmKind::kHash},        {"AES-128-CBC", 128, AlgorithmKind::kCipher},
    {"AES-192-CBC", 192, AlgorithmKind::kCipher}, {"AES-256-CBC", 256, AlgorithmKind::kCipher},
    {"DES-EDE3-CBC", 168, AlgorithmKind::kCipher}};

// By name in any case; "SHA-256" is SHA256. Empty: SHA256. Null when it is not in the list.
const Algorithm* FindHash(std::string_view name);

// By name in any case and size of the key; "AES" is AES-CBC of that size, and size 0 leaves it to
// the name. Empty: AES-CBC, of 256 bits unless there is a size. Null when none is so.
const Algorithm* FindCipher(std::string_view name, uint32_t key_bits);

}  // namespace mimora

#endif  // MIMORA_SMIME_ALGORITHMS_H_

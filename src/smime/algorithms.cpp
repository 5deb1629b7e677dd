// Copyright (c) 2026 the mimora developers.
#include "smime/algorithms.h"

#include <algorithm>
#include <string>

#include "platform/ascii.h"

namespace mimora {
namespace {

constexpr uint32_t kDefaultKeyBits = 256;

template <typename IsWanted>
const Algorithm* FindAlgorithm(AlgorithmKind kind, IsWanted is_wanted) {
  for (const Algorithm& algorithm : kAlgorithms) {
    if (algorithm.kind == kind && is_wanted(algorithm)) return &algorithm;
  }
  return nullptr;
}

}  // namespace

const Algorithm* FindHash(std::string_view name) {
  std::string plain(name.empty() ? "SHA256" : name);
  std::erase(plain, '-');
  return FindAlgorithm(AlgorithmKind::kHash,
                       [&](const Algorithm& a) { return EqualIgnoringCase(a.name, plain); });
}

const Algorithm* FindCipher(std::string_view name, uint32_t key_bits) {
  const bool any_aes = name.empty() || EqualIgnoringCase(name, "AES");
  if (any_aes && key_bits == 0) key_bits = kDefaultKeyBits;
  return FindAlgorithm(AlgorithmKind::kCipher, [&](const Algorithm& a) {
    const bool named =
        any_aes ? std::string_view(a.name).starts_with("AES") : EqualIgnoringCase(a.name, name);
    return named && (key_bits == 0 || key_bits == a.bits);
  });
}

}  // namespace mimora

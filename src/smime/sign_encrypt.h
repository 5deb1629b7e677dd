// Copyright (c) 2026 the mimora developers.
//
// Whole messages signed and encrypted. The prototypes follow those of the exports.
#ifndef MIMORA_SMIME_SIGN_ENCRYPT_H_
#define MIMORA_SMIME_SIGN_ENCRYPT_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "diag/result.h"
#include "stream/moutstream.h"

namespace mimora {

// The line ends of TEXT, whichever it has, become CR LF: software that verifies a signature, and
// mail on its way, does not keep others.
std::string Canonical(std::string_view text);

struct SignOptions {
  const char* store = nullptr;
  const char* password = nullptr;
  std::string_view signer;
  std::string_view hash;
  bool detached = false;
};

// Nothing is written unless all went well.
Result SignData(std::string_view message, const SignOptions& options, Moutstream& out);

struct EncryptOptions {
  const char* store = nullptr;
  std::vector<std::string_view> recipients;
  std::string_view cipher;
  uint32_t key_bits = 0;
  bool oaep = false;
};

Result EncryptData(std::string_view message, const EncryptOptions& options, uint32_t& failed,
                   Moutstream& out);

}  // namespace mimora

#endif  // MIMORA_SMIME_SIGN_ENCRYPT_H_

// Copyright (c) 2026 the mimora developers.
//
// Files with certificates and private keys: PEM (RFC 7468) and PKCS #12 (RFC 7292).
#ifndef MIMORA_SMIME_KEY_FILE_H_
#define MIMORA_SMIME_KEY_FILE_H_

#include <functional>
#include <string>
#include <vector>

#include "smime/certificate.h"

namespace mimora {

// A private key that has to be opened with a password, which may be null; null when that is wrong.
using LockedKey = std::function<KeyPtr(const char* password)>;

// What was found in a file. What is broken is left out.
struct KeyFile {
  std::vector<CertificatePtr> certificates;
  std::vector<KeyPtr> keys;
  std::vector<LockedKey> locked_keys;
  bool locked = false;  // there is something in PKCS #12 that the password does not open
};

// Keys that are made later from the locked ones need the context, too.
KeyFile ParsePem(std::string_view text, const CryptoContext& context);
KeyFile ParsePkcs12(std::string_view bytes, const char* password, const CryptoContext& context);

}  // namespace mimora

#endif  // MIMORA_SMIME_KEY_FILE_H_

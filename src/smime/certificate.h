// Copyright (c) 2026 the mimora developers.
//
// What a certificate (RFC 5280) says.
#ifndef MIMORA_SMIME_CERTIFICATE_H_
#define MIMORA_SMIME_CERTIFICATE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "smime/openssl.h"

namespace mimora {

// Reads the DER form from BYTES on; null when there is none.
CertificatePtr ParseCertificate(std::string_view bytes, const CryptoContext& context);

// The SHA-256 of the DER form in small hexadecimal letters.
std::string CertificateId(const X509& certificate, const CryptoContext& context);

// A name in the form of RFC 2253, UTF-8.
std::string NameText(const X509_NAME* name);

// Null when it is of a kind that OpenSSL does not know. The certificate keeps it.
EVP_PKEY* PublicKeyOf(const X509& certificate);

// The addresses that it is made out to, of printable ASCII.
std::vector<std::string> Addresses(const X509& certificate);

struct Validity {
  int64_t not_before = 0, not_after = 0;  // seconds since 1970 began; both 0: they make no sense

  bool IncludesNow() const;
};
Validity ValidityOf(const X509& certificate);

// Whether its kind of key and what it says of its use (RFC 8550 4.4) allow it.
bool MaySign(const X509& certificate);
bool MayEncrypt(const X509& certificate);

// All of it for people, in lines. HAS_KEY: whether its private key is at hand.
std::string DescribeCertificate(const X509& certificate, const std::string& id, bool has_key);

}  // namespace mimora

#endif  // MIMORA_SMIME_CERTIFICATE_H_

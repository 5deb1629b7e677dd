// Copyright (c) 2026 the mimora developers.
//
// The S/MIME engine: makes CMS objects (RFC 5652, PKCS #7) with the keys of a store.
#ifndef MIMORA_SMIME_SMIME_ORV_H_
#define MIMORA_SMIME_SMIME_ORV_H_

#include <string>
#include <string_view>
#include <vector>

#include "smime/algorithms.h"
#include "smime/certificate_store.h"

namespace mimora {

// An object serves one call. The texts it is given must outlive it.
class SMimeOrv {
 public:
  // STORE null: the default one. PASSWORD opens what is locked in it; it may be null.
  explicit SMimeOrv(const char* store, const char* password = nullptr);

  // Before anything else. Answers kOk when the store can be used.
  Result Open();

  const CertificateStore& Store() const { return store_; }

  // Signs TEXT with the key of a certificate. The blob holds the text unless it is DETACHED, the
  // signer's certificate, and those on the way to its root.
  Result Sign(std::string_view text, std::string_view signer, const Algorithm& hash, bool detached,
              std::string& blob) const;

  // Encrypts TEXT for all recipients. When it is one of them that does not do, FAILED is its
  // number, else it stays as it was. OAEP: with RSA keys pad as RFC 8017 7.1 has it.
  Result Encrypt(std::string_view text, const std::vector<std::string_view>& recipients,
                 const Algorithm& cipher, bool oaep, uint32_t& failed, std::string& blob) const;

 private:
  bool AddRecipient(CMS_ContentInfo& cms, X509* certificate, bool oaep) const;
  Result Finish(CMS_ContentInfo& cms, std::string_view text, unsigned flags,
                std::string& blob) const;

  const std::string directory_;
  const ErrorMark mark_;
  const CryptoContext& context_;
  CertificateStore store_;
};

}  // namespace mimora

#endif  // MIMORA_SMIME_SMIME_ORV_H_

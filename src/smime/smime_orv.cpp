// Copyright (c) 2026 the mimora developers.
#include "smime/smime_orv.h"

#include <openssl/rsa.h>

namespace mimora {
namespace {

// Line ends are not OpenSSL's business, and an object is complete only at the end.
constexpr unsigned kFlags = CMS_BINARY | CMS_PARTIAL;

// What answers may be encrypted with, the best first. OpenSSL's own list goes down to 40 bits.
constexpr int kCapabilities[] = {NID_aes_256_cbc, NID_aes_192_cbc, NID_aes_128_cbc,
                                 NID_des_ede3_cbc};

Result EngineFailed(const char* what) {
  LogOpensslError(what);
  return kEngineFailed;
}

bool AddCapabilities(CMS_SignerInfo& signer) {
  STACK_OF(X509_ALGOR)* list = nullptr;
  bool added = true;
  for (const int cipher : kCapabilities)
    added = added && CMS_add_simple_smimecap(&list, cipher, -1) == 1;
  added = added && CMS_add_smimecap(&signer, list) == 1;
  sk_X509_ALGOR_pop_free(list, X509_ALGOR_free);
  return added;
}

bool AddSigner(CMS_ContentInfo& cms, X509* certificate, EVP_PKEY* key, const EVP_MD* digest) {
  // Without the flag a key for PSS would be said to sign as of old.
  const bool is_pss = EVP_PKEY_is_a(key, "RSA-PSS") == 1;
  const unsigned flags = kFlags | CMS_NOSMIMECAP | (is_pss ? CMS_KEY_PARAM : 0);
  CMS_SignerInfo* const signer = CMS_add1_signer(&cms, certificate, key, digest, flags);
  return signer != nullptr && AddCapabilities(*signer);
}

}  // namespace

SMimeOrv::SMimeOrv(const char* store, const char* password)
    : directory_(store != nullptr ? store : DefaultStore()),
      context_(CryptoContext::Shared()),
      store_(context_, password) {}

Result SMimeOrv::Open() {
  if (!context_.IsReady()) return EngineFailed("OpenSSL");
  return store_.Read(directory_);
}

Result SMimeOrv::Sign(std::string_view text, std::string_view signer, const Algorithm& hash,
                      bool detached, std::string& blob) const {
  const StoredCertificate* certificate = nullptr;
  if (const Result result = store_.Find(signer, Purpose::kSign, certificate)) return result;
  KeyPtr key;
  if (const Result result = store_.FindKey(*certificate, key)) return result;

  const unsigned flags = kFlags | (detached ? CMS_DETACHED : 0);
  const DigestPtr digest(EVP_MD_fetch(context_.Get(), hash.name, nullptr));
  const CmsPtr cms(CMS_sign_ex(nullptr, nullptr, nullptr, nullptr, flags, context_.Get(), nullptr));
  if (digest == nullptr || cms == nullptr ||
      !AddSigner(*cms, certificate->certificate.get(), key.get(), digest.get()))
    return EngineFailed("signing");
  for (X509* const intermediate : store_.Intermediates(*certificate)) {
    if (CMS_add1_cert(cms.get(), intermediate) != 1) return EngineFailed("signing");
  }
  return Finish(*cms, text, flags, blob);
}

Result SMimeOrv::Encrypt(std::string_view text, const std::vector<std::string_view>& recipients,
                         const Algorithm& cipher, bool oaep, uint32_t& failed,
                         std::string& blob) const {
  const CipherPtr fetched(EVP_CIPHER_fetch(context_.Get(), cipher.name, nullptr));
  if (fetched == nullptr) return EngineFailed("encrypting");
  const CmsPtr cms(
      CMS_encrypt_ex(nullptr, nullptr, fetched.get(), kFlags, context_.Get(), nullptr));
  if (cms == nullptr) return EngineFailed("encrypting");
  for (size_t i = 0; i < recipients.size(); ++i) {
    const StoredCertificate* found = nullptr;
    Result result = store_.Find(recipients[i], Purpose::kEncrypt, found);
    if (result == kOk && !AddRecipient(*cms, found->certificate.get(), oaep))
      result = EngineFailed("encrypting");
    if (result == kOk) continue;
    failed = static_cast<uint32_t>(i);
    return result;
  }
  return Finish(*cms, text, kFlags, blob);
}

bool SMimeOrv::AddRecipient(CMS_ContentInfo& cms, X509* certificate, bool oaep) const {
  const bool is_rsa = EVP_PKEY_is_a(X509_get0_pubkey(certificate), "RSA") == 1;
  const unsigned flags = kFlags | (oaep && is_rsa ? CMS_KEY_PARAM : 0);
  CMS_RecipientInfo* const recipient = CMS_add1_recipient_cert(&cms, certificate, flags);
  if (recipient == nullptr) return false;
  if (!oaep || !is_rsa) return true;
  EVP_PKEY_CTX* const parameters = CMS_RecipientInfo_get0_pkey_ctx(recipient);
  return EVP_PKEY_CTX_set_rsa_padding(parameters, RSA_PKCS1_OAEP_PADDING) == 1;
}

Result SMimeOrv::Finish(CMS_ContentInfo& cms, std::string_view text, unsigned flags,
                        std::string& blob) const {
  const BioPtr in = MakeReader(text);
  const BioPtr out = MakeWriter();
  if (in == nullptr || out == nullptr || CMS_final(&cms, in.get(), nullptr, flags) != 1 ||
      i2d_CMS_bio(out.get(), &cms) != 1)
    return EngineFailed("making the object");
  blob = Written(out);
  return kOk;
}

}  // namespace mimora

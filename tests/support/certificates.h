// Copyright (c) 2026 the mimora developers.
//
// Certificates for tests, and a store to put them in.
#ifndef MIMORA_TESTS_SUPPORT_CERTIFICATES_H_
#define MIMORA_TESTS_SUPPORT_CERTIFICATES_H_

#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "smime/openssl.h"

namespace mimora::testing {

struct Owner {
  std::string name;
  KeyPtr key;
  CertificatePtr certificate;
};

struct CertificateForm {
  const char* type = "EC";
  const char* usage = "digitalSignature,keyEncipherment,keyAgreement";
  long first_second = -3600, last_second = 3600;  // from now on
  const Owner* issuer = nullptr;                  // null: itself
};

inline KeyPtr MakeKey(const std::string& type) {
  if (type == "RSA") return KeyPtr(EVP_RSA_gen(2048));
  if (type == "EC") return KeyPtr(EVP_EC_gen("P-256"));
  const OpensslPtr<EVP_PKEY_CTX, &EVP_PKEY_CTX_free> context(
      EVP_PKEY_CTX_new_from_name(nullptr, type.c_str(), nullptr));
  EVP_PKEY* key = nullptr;
  EVP_PKEY_keygen_init(context.get());
  EVP_PKEY_generate(context.get(), &key);
  return KeyPtr(key);
}

inline void AddExtension(X509* certificate, int kind, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* const made = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
  ASSERT_NE(made, nullptr) << value;
  X509_add_ext(certificate, made, -1);
  X509_EXTENSION_free(made);
}

// NAME is "CN", and the address is NAME@example.org.
inline Owner MakeOwner(const std::string& name, const CertificateForm& form = {}) {
  static long serial = 0;
  Owner owner = {name, MakeKey(form.type), CertificatePtr(X509_new())};
  X509* const certificate = owner.certificate.get();
  X509_set_version(certificate, X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate), ++serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate), form.first_second);
  X509_gmtime_adj(X509_getm_notAfter(certificate), form.last_second);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  const Owner& issuer = form.issuer != nullptr ? *form.issuer : owner;
  X509_set_issuer_name(certificate, X509_get_subject_name(issuer.certificate.get()));
  X509_set_pubkey(certificate, owner.key.get());
  const bool is_authority = std::string_view(form.usage) == "keyCertSign";
  AddExtension(certificate, NID_basic_constraints, is_authority ? "CA:TRUE" : "CA:FALSE");
  AddExtension(certificate, NID_key_usage, form.usage);
  AddExtension(certificate, NID_subject_alt_name, "email:" + name + "@example.org");
  const bool digests = std::string(form.type) != "ED25519";
  X509_sign(certificate, issuer.key.get(), digests ? EVP_sha256() : nullptr);
  return owner;
}

inline std::string Pem(const Owner& owner) {
  const BioPtr out = MakeWriter();
  PEM_write_bio_X509(out.get(), owner.certificate.get());
  return std::string(Written(out));
}

enum class KeyForm { kPlain, kLocked, kOldPlain, kOldLocked };

inline std::string KeyPem(const Owner& owner, KeyForm form = KeyForm::kPlain,
                          std::string password = "") {
  const BioPtr out = MakeWriter();
  const bool locked = form == KeyForm::kLocked || form == KeyForm::kOldLocked;
  const bool old = form == KeyForm::kOldPlain || form == KeyForm::kOldLocked;
  const auto write = old ? PEM_write_bio_PrivateKey_traditional : PEM_write_bio_PrivateKey;
  write(out.get(), owner.key.get(), locked ? EVP_aes_128_cbc() : nullptr,
        reinterpret_cast<unsigned char*>(password.data()), static_cast<int>(password.size()),
        nullptr, nullptr);
  return std::string(Written(out));
}

// What passes for a key that is locked like that.
inline std::string SealedPem(const X509_ALGOR* algorithm) {
  const OpensslPtr<X509_SIG, &X509_SIG_free> sealed(X509_SIG_new());
  X509_ALGOR* stated = nullptr;
  ASN1_OCTET_STRING* key = nullptr;
  X509_SIG_getm(sealed.get(), &stated, &key);
  X509_ALGOR_copy(stated, algorithm);
  ASN1_OCTET_STRING_set(key, reinterpret_cast<const unsigned char*>("sixteen letters."), 16);
  const BioPtr out = MakeWriter();
  PEM_write_bio_PKCS8(out.get(), sealed.get());
  return std::string(Written(out));
}

enum class Pkcs12Form { kUsual, kKeyLocked };  // the key alone: without a checksum

inline std::string Pkcs12(const Owner& owner, const char* password,
                          Pkcs12Form form = Pkcs12Form::kUsual) {
  const int others = form == Pkcs12Form::kUsual ? 0 : -1;
  PKCS12* const made = PKCS12_create(password, nullptr, owner.key.get(), owner.certificate.get(),
                                     nullptr, 0, others, 0, others, 0);
  const BioPtr out = MakeWriter();
  i2d_PKCS12_bio(out.get(), made);
  PKCS12_free(made);
  return std::string(Written(out));
}

// A directory of its own.
class Store {
 public:
  Store() : path_((std::filesystem::temp_directory_path() / "store.XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << path_;
  }
  ~Store() { std::filesystem::remove_all(path_); }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  const char* Path() const { return path_.c_str(); }
  void Add(const std::string& name, const std::string& bytes) const {
    std::ofstream(path_ + "/" + name, std::ios::binary) << bytes;
  }

 private:
  std::string path_;
};

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_SUPPORT_CERTIFICATES_H_

// Copyright (c) 2026 the mimora developers.
//
// The certificates and private keys in the files of a directory.
#ifndef MIMORA_SMIME_CERTIFICATE_STORE_H_
#define MIMORA_SMIME_CERTIFICATE_STORE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "diag/result.h"
#include "smime/key_file.h"

namespace mimora {

enum class Purpose : uint32_t { kAny = 0, kSign = 1, kEncrypt = 2 };

struct StoredCertificate {
  CertificatePtr certificate;
  std::string id;
  std::vector<std::string> addresses;
  Validity validity;
  std::vector<size_t> files;  // that it is in
  bool has_key = false;
};

class CertificateStore {
 public:
  // PASSWORD opens files and keys; it may be null. Both must outlive the store.
  CertificateStore(const CryptoContext& context, const char* password)
      : context_(context), password_(password) {}

  // Reads all PEM files, and all files in PKCS #12 (.p12, .pfx), of a directory. What is in several
  // of them counts once. A file that cannot be read is passed over, with a line in the log.
  Result Read(const std::string& directory);

  // A key in a PEM file that has a password is only opened by FindKey. Until then it is taken for
  // that of the first certificate in its file.
  const std::vector<StoredCertificate>& Certificates() const { return certificates_; }

  // Finds the certificate that NAME stands for: its id, an unambiguous beginning of it, or an
  // e-mail address. Of several with one address it is the one that serves the purpose best. The
  // answer is not kOk when it does not serve it.
  Result Find(std::string_view name, Purpose purpose, const StoredCertificate*& found) const;

  Result FindKey(const StoredCertificate& of, KeyPtr& key) const;

  // The certificates between this one and its root.
  std::vector<X509*> Intermediates(const StoredCertificate& of) const;

 private:
  struct StoredKey {
    LockedKey open;
    size_t file;
  };

  void ReadFile(const std::string& path);
  void AddCertificate(CertificatePtr certificate, bool has_key);
  void MarkKeys();
  std::vector<const StoredCertificate*> FindAll(std::string_view name) const;
  Result NotFound() const;
  const StoredCertificate* FindIssuer(X509* certificate) const;

  const CryptoContext& context_;
  const char* const password_;
  std::vector<StoredCertificate> certificates_;
  std::unordered_map<std::string, size_t> by_id_;  // places in them
  std::vector<KeyPtr> keys_;
  std::vector<StoredKey> locked_keys_;
  size_t files_ = 0;
  bool has_locked_files_ = false;
};

// Whether a certificate serves a purpose.
Result CheckUse(const StoredCertificate& certificate, Purpose purpose);

// The directory that is used when none is named: the setting Cert_Store, else /etc/mimora/certs.
std::string DefaultStore();

}  // namespace mimora

#endif  // MIMORA_SMIME_CERTIFICATE_STORE_H_

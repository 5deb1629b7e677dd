// Copyright (c) 2026 the mimora developers.
#include "smime/certificate_store.h"

#include <openssl/x509v3.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <tuple>
#include <unordered_set>

#include "diag/limits.h"
#include "diag/log.h"
#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora {
namespace {

constexpr const char* kDefaultStore = "/etc/mimora/certs";

// Nothing when it cannot be read, and when it is larger than such files ever are.
std::optional<SecretBytes> ReadBytes(const std::string& path) {
  constexpr size_t kStep = 64 * 1024;
  const platform::OpenFile file(platform::OpenForReading(path.c_str()));
  if (file.Number() == platform::kNoFile) return std::nullopt;
  SecretBytes bytes;
  int64_t count = 0;
  do {
    const size_t size = bytes.size();
    bytes.resize(size + kStep);
    count = platform::Read(file.Number(), bytes.data() + size, kStep);
    bytes.resize(size + static_cast<size_t>(std::max<int64_t>(count, 0)));
  } while (count > 0 && bytes.size() <= kLargestKeyFile);
  if (count != 0) return std::nullopt;
  return bytes;
}

std::string_view View(const SecretBytes& bytes) { return {bytes.data(), bytes.size()}; }

bool IsPkcs12(const std::string& path) {
  const std::string suffix = std::filesystem::path(path).extension();
  return EqualIgnoringCase(suffix, ".p12") || EqualIgnoringCase(suffix, ".pfx");
}

bool IsKeyOf(const EVP_PKEY* key, const StoredCertificate& certificate) {
  return EVP_PKEY_eq(key, PublicKeyOf(*certificate.certificate)) == 1;
}

// In the form that certificates have it in.
std::string PublicKey(const EVP_PKEY* key) {
  unsigned char* bytes = nullptr;
  const int size = i2d_PUBKEY(key, &bytes);
  const BytesPtr owned(bytes);
  if (size < 0) return {};
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
}

KeyPtr Share(const KeyPtr& key) {
  EVP_PKEY_up_ref(key.get());
  return KeyPtr(key.get());
}

// What makes one certificate better than another of the same owner.
auto Merits(const StoredCertificate& certificate, Purpose purpose) {
  const Result use = CheckUse(certificate, purpose);
  return std::tuple(use != kCertificatePurpose, use == kOk,
                    purpose != Purpose::kSign || certificate.has_key,
                    certificate.validity.not_before);
}

}  // namespace

std::string DefaultStore() { return platform::ReadSetting("Cert_Store").value_or(kDefaultStore); }

Result CheckUse(const StoredCertificate& certificate, Purpose purpose) {
  const X509& x509 = *certificate.certificate;
  if (purpose == Purpose::kSign && !MaySign(x509)) return kCertificatePurpose;
  if (purpose == Purpose::kEncrypt && !MayEncrypt(x509)) return kCertificatePurpose;
  return certificate.validity.IncludesNow() ? kOk : kCertificateOutsideTime;
}

// ---- Reading ------------------------------------------------------------------------------------

Result CertificateStore::Read(const std::string& directory) {
  const auto files = platform::ListDirectory(directory);
  if (!files) return kStoreUnreadable;
  for (const std::string& file : *files) {
    if (platform::IsRegularFile(file.c_str())) ReadFile(file);
  }
  MarkKeys();
  return kOk;
}

void CertificateStore::ReadFile(const std::string& path) {
  const auto bytes = ReadBytes(path);
  if (!bytes) return LogError("<E> certificate store: cannot read %s", path.c_str());
  KeyFile file = IsPkcs12(path) ? ParsePkcs12(View(*bytes), password_, context_)
                                : ParsePem(View(*bytes), context_);
  has_locked_files_ |= file.locked;
  bool has_key = !file.locked_keys.empty();
  for (CertificatePtr& certificate : file.certificates) {
    AddCertificate(std::move(certificate), has_key);
    has_key = false;
  }
  std::ranges::move(file.keys, std::back_inserter(keys_));
  for (LockedKey& key : file.locked_keys) locked_keys_.push_back({std::move(key), files_});
  ++files_;
}

void CertificateStore::AddCertificate(CertificatePtr certificate, bool has_key) {
  std::string id = CertificateId(*certificate, context_);
  const auto [place, is_new] = by_id_.emplace(id, certificates_.size());
  if (is_new) {
    StoredCertificate added;
    added.id = std::move(id);
    added.addresses = Addresses(*certificate);
    added.validity = ValidityOf(*certificate);
    added.certificate = std::move(certificate);
    certificates_.push_back(std::move(added));
  }
  StoredCertificate& stored = certificates_[place->second];
  stored.files.push_back(files_);
  stored.has_key |= has_key;
}

void CertificateStore::MarkKeys() {
  std::unordered_set<std::string> public_keys;
  for (const KeyPtr& key : keys_) public_keys.insert(PublicKey(key.get()));
  for (StoredCertificate& stored : certificates_) {
    const EVP_PKEY* const key = PublicKeyOf(*stored.certificate);
    stored.has_key |= key != nullptr && public_keys.contains(PublicKey(key));
  }
}

// ---- Finding ------------------------------------------------------------------------------------

std::vector<const StoredCertificate*> CertificateStore::FindAll(std::string_view name) const {
  std::vector<const StoredCertificate*> found;
  const bool is_address = name.find('@') != std::string_view::npos;
  for (const StoredCertificate& certificate : certificates_) {
    const bool is_named =
        is_address
            ? std::ranges::any_of(certificate.addresses,
                                  [name](auto& a) { return EqualIgnoringCase(a, name); })
            : EqualIgnoringCase(std::string_view(certificate.id).substr(0, name.size()), name);
    if (is_named && !name.empty()) found.push_back(&certificate);
  }
  if (!is_address && found.size() > 1) found.clear();
  return found;
}

// What was not found may be where the password does not lead.
Result CertificateStore::NotFound() const {
  return password_ != nullptr && has_locked_files_ ? kWrongPassword : kCertificateNotFound;
}

Result CertificateStore::Find(std::string_view name, Purpose purpose,
                              const StoredCertificate*& found) const {
  const auto named = FindAll(name);
  if (named.empty()) return NotFound();
  found = *std::ranges::max_element(
      named, {}, [purpose](const StoredCertificate* c) { return Merits(*c, purpose); });
  return CheckUse(*found, purpose);
}

// Opening a key takes time: those of the certificate's own files have their turn first.
Result CertificateStore::FindKey(const StoredCertificate& of, KeyPtr& key) const {
  for (const KeyPtr& stored : keys_) {
    if (IsKeyOf(stored.get(), of)) return key = Share(stored), kOk;
  }
  std::vector<const StoredKey*> locked;
  for (const StoredKey& stored : locked_keys_) locked.push_back(&stored);
  std::stable_partition(locked.begin(), locked.end(), [&of](const StoredKey* k) {
    return std::ranges::count(of.files, k->file) != 0;
  });
  bool all_opened = true;
  for (const StoredKey* stored : locked) {
    const ErrorMark mark;
    key = stored->open(password_);
    if (key != nullptr && IsKeyOf(key.get(), of)) return kOk;
    all_opened &= key != nullptr;
  }
  key.reset();
  return all_opened && !has_locked_files_ ? kNoPrivateKey : kWrongPassword;
}

// An authority may have had several keys, and several certificates for one of them.
const StoredCertificate* CertificateStore::FindIssuer(X509* certificate) const {
  const StoredCertificate* found = nullptr;
  for (const StoredCertificate& stored : certificates_) {
    const ErrorMark mark;
    if (X509_check_issued(stored.certificate.get(), certificate) != X509_V_OK) continue;
    if (X509_verify(certificate, PublicKeyOf(*stored.certificate)) != 1) continue;
    if (found == nullptr || stored.validity.not_after > found->validity.not_after) found = &stored;
  }
  return found;
}

std::vector<X509*> CertificateStore::Intermediates(const StoredCertificate& of) const {
  constexpr size_t kMost = 10;
  std::vector<X509*> chain;
  const auto is_root = [](X509* x509) { return (X509_get_extension_flags(x509) & EXFLAG_SI) != 0; };
  for (X509* last = of.certificate.get(); chain.size() < kMost && !is_root(last);) {
    const StoredCertificate* const issuer = FindIssuer(last);
    if (issuer == nullptr || is_root(issuer->certificate.get())) break;
    last = issuer->certificate.get();
    if (last == of.certificate.get() || std::ranges::count(chain, last) != 0) break;
    chain.push_back(last);
  }
  return chain;
}

}  // namespace mimora

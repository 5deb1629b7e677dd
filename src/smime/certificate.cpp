// Copyright (c) 2026 the mimora developers.
#include "smime/certificate.h"

#include <openssl/x509v3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "platform/ascii.h"

namespace mimora {
namespace {

using TimePtr = OpensslPtr<ASN1_TIME, &ASN1_TIME_free>;
using AddressesPtr = OpensslPtr<STACK_OF(OPENSSL_STRING), &X509_email_free>;

// Fractions of a second do not matter, nor do leap seconds. False when it makes no sense.
bool ReadTime(const ASN1_TIME* time, int64_t& read) {
  constexpr int64_t kSecondsPerDay = 86'400;
  const TimePtr start(ASN1_TIME_set(nullptr, 0));
  int days = 0, seconds = 0;
  if (start == nullptr || ASN1_TIME_diff(&days, &seconds, start.get(), time) != 1) return false;
  read = days * kSecondsPerDay + seconds;
  return true;
}

// OpenSSL remembers what it finds in the extensions: it takes no const there.
X509* Mutable(const X509& certificate) { return const_cast<X509*>(&certificate); }

bool IsForMail(const X509& certificate) {
  constexpr uint32_t kPurposes = XKU_SMIME | XKU_ANYEKU;
  return (X509_get_extended_key_usage(Mutable(certificate)) & kPurposes) != 0;
}

bool HasUsage(const X509& certificate, uint32_t any_of) {
  return IsForMail(certificate) && (X509_get_key_usage(Mutable(certificate)) & any_of) != 0;
}

int KeyType(const X509& certificate) {
  const EVP_PKEY* const key = PublicKeyOf(certificate);
  return key != nullptr ? EVP_PKEY_get_base_id(key) : EVP_PKEY_NONE;
}

// What one of OpenSSL's functions prints.
template <typename Print>
std::string Printed(Print print) {
  const BioPtr out = MakeWriter();
  if (out == nullptr) return {};
  print(out.get());
  return std::string(Written(out));
}

std::string SerialText(const X509& certificate) {
  return Printed([&](BIO* out) { i2a_ASN1_INTEGER(out, X509_get0_serialNumber(&certificate)); });
}

std::string KeyText(const X509& certificate) {
  const EVP_PKEY* const key = PublicKeyOf(certificate);
  if (key == nullptr) return "unknown";
  const char* const name = EVP_PKEY_get0_type_name(key);
  return std::string(name != nullptr ? name : "unknown") + ", " +
         std::to_string(EVP_PKEY_get_bits(key)) + " bits";
}

std::string TimeText(const ASN1_TIME* time) {
  return Printed([time](BIO* out) { ASN1_TIME_print_ex(out, time, ASN1_DTFLGS_ISO8601); });
}

std::string SignatureText(const X509& certificate) {
  const char* const name = OBJ_nid2ln(X509_get_signature_nid(&certificate));
  return name != nullptr ? name : "unknown";
}

std::string UseText(const X509& certificate) {
  const bool sign = MaySign(certificate), encrypt = MayEncrypt(certificate);
  if (sign && encrypt) return "sign, encrypt";
  return sign ? "sign" : encrypt ? "encrypt" : "none";
}

}  // namespace

CertificatePtr ParseCertificate(std::string_view bytes, const CryptoContext& context) {
  const ErrorMark mark;
  X509* certificate = X509_new_ex(context.Get(), nullptr);
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  // Frees it and sets it to null when it fails.
  if (certificate != nullptr) d2i_X509(&certificate, &p, static_cast<long>(bytes.size()));
  // Reads the extensions, which complains of broken ones once.
  if (certificate != nullptr) X509_check_purpose(certificate, -1, 0);
  return CertificatePtr(certificate);
}

std::string CertificateId(const X509& certificate, const CryptoContext& context) {
  const DigestPtr sha256(EVP_MD_fetch(context.Get(), "SHA256", nullptr));
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  std::string id;
  if (sha256 == nullptr || X509_digest(&certificate, sha256.get(), digest, &size) != 1) return id;
  for (unsigned i = 0; i < size; ++i)
    id += {kHexDigits[digest[i] >> 4], kHexDigits[digest[i] & 0xF]};
  return id;
}

std::string NameText(const X509_NAME* name) {
  constexpr unsigned long kForm =
      XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
  return Printed([name](BIO* out) { X509_NAME_print_ex(out, name, 0, kForm); });
}

EVP_PKEY* PublicKeyOf(const X509& certificate) {
  const ErrorMark mark;
  return X509_get0_pubkey(&certificate);
}

// One with other characters would pass for something else where it is shown.
std::vector<std::string> Addresses(const X509& certificate) {
  const ErrorMark mark;
  const AddressesPtr found(X509_get1_email(Mutable(certificate)));
  std::vector<std::string> addresses;
  for (int i = 0; i < sk_OPENSSL_STRING_num(found.get()); ++i) {
    const std::string_view address = sk_OPENSSL_STRING_value(found.get(), i);
    if (std::ranges::all_of(address, [](char c) { return c >= ' ' && c < '\x7F'; }))
      addresses.emplace_back(address);
  }
  return addresses;
}

Validity ValidityOf(const X509& certificate) {
  Validity validity;
  const bool makes_sense = ReadTime(X509_get0_notBefore(&certificate), validity.not_before) &&
                           ReadTime(X509_get0_notAfter(&certificate), validity.not_after);
  return makes_sense ? validity : Validity();
}

bool Validity::IncludesNow() const {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const int64_t seconds = std::chrono::duration_cast<std::chrono::seconds>(now).count();
  return seconds >= not_before && seconds <= not_after;
}

bool MaySign(const X509& certificate) {
  const int type = KeyType(certificate);
  return (type == EVP_PKEY_RSA || type == EVP_PKEY_RSA_PSS || type == EVP_PKEY_EC) &&
         HasUsage(certificate, KU_DIGITAL_SIGNATURE | KU_NON_REPUDIATION);
}

// A key for RSA encrypts the message's key, one for elliptic curves agrees on a key for that.
bool MayEncrypt(const X509& certificate) {
  const int type = KeyType(certificate);
  if (type == EVP_PKEY_RSA) return HasUsage(certificate, KU_KEY_ENCIPHERMENT);
  return type == EVP_PKEY_EC && HasUsage(certificate, KU_KEY_AGREEMENT);
}

std::string DescribeCertificate(const X509& certificate, const std::string& id, bool has_key) {
  std::string text = "Id: " + id + "\nSubject: " + NameText(X509_get_subject_name(&certificate)) +
                     "\nIssuer: " + NameText(X509_get_issuer_name(&certificate));
  for (const std::string& address : Addresses(certificate)) text += "\nE-mail: " + address;
  text += "\nSerial number: " + SerialText(certificate) +
          "\nNot before: " + TimeText(X509_get0_notBefore(&certificate)) +
          "\nNot after: " + TimeText(X509_get0_notAfter(&certificate)) +
          (ValidityOf(certificate).IncludesNow() ? "" : " (not valid now)") +
          "\nKey: " + KeyText(certificate) + (has_key ? ", private key present" : "") +
          "\nMay: " + UseText(certificate) + "\nSigned with: " + SignatureText(certificate) + "\n";
  return text;
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "smime/key_file.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/ascii.h"

namespace mimora {
namespace {

using AlgorithmPtr = OpensslPtr<X509_ALGOR, &X509_ALGOR_free>;
using CipherContextPtr = OpensslPtr<EVP_CIPHER_CTX, &EVP_CIPHER_CTX_free>;
using AuthSafes = STACK_OF(PKCS7);
using Bags = STACK_OF(PKCS12_SAFEBAG);
using Pbe2Ptr = OpensslPtr<PBE2PARAM, &PBE2PARAM_free>;
using Pbkdf2Ptr = OpensslPtr<PBKDF2PARAM, &PBKDF2PARAM_free>;
using PbePtr = OpensslPtr<PBEPARAM, &PBEPARAM_free>;
using Pkcs12Ptr = OpensslPtr<PKCS12, &PKCS12_free>;
using PlainKeyPtr = OpensslPtr<PKCS8_PRIV_KEY_INFO, &PKCS8_PRIV_KEY_INFO_free>;
using ScryptPtr = OpensslPtr<SCRYPT_PARAMS, &SCRYPT_PARAMS_free>;
using SealedKeyPtr = OpensslPtr<X509_SIG, &X509_SIG_free>;

int Length(const char* password) {
  return password != nullptr ? static_cast<int>(std::strlen(password)) : 0;
}

// ---- Keys ---------------------------------------------------------------------------------------

// A file may ask for so many rounds that opening it would never end.
constexpr int64_t kMostRounds = 10'000'000;

bool IsBearable(const ASN1_INTEGER* rounds) {
  int64_t number = 0;
  return rounds == nullptr ||
         (ASN1_INTEGER_get_int64(&number, rounds) == 1 && number <= kMostRounds);
}

template <typename Pointer, typename T = typename Pointer::element_type>
Pointer Unpack(const ASN1_ITEM* item, const X509_ALGOR& algorithm) {
  const ASN1_TYPE* const parameter = algorithm.parameter;
  if (parameter == nullptr || parameter->type != V_ASN1_SEQUENCE) return nullptr;
  return Pointer(static_cast<T*>(ASN1_item_unpack(parameter->value.sequence, item)));
}

// OpenSSL bounds the memory that it takes, not the time.
bool IsBearable(const SCRYPT_PARAMS& scrypt) {
  int64_t rounds = 1;
  for (const ASN1_INTEGER* const factor :
       {scrypt.costParameter, scrypt.blockSize, scrypt.parallelizationParameter}) {
    int64_t number = 0;
    if (ASN1_INTEGER_get_int64(&number, factor) != 1) return false;
    if (number < 1 || number > kMostRounds / rounds) return false;
    rounds *= number;
  }
  return true;
}

bool IsBearable(const X509_ALGOR& algorithm) {
  if (OBJ_obj2nid(algorithm.algorithm) != NID_pbes2) {
    const PbePtr pbe = Unpack<PbePtr>(ASN1_ITEM_rptr(PBEPARAM), algorithm);
    return pbe != nullptr && IsBearable(pbe->iter);
  }
  const Pbe2Ptr pbes2 = Unpack<Pbe2Ptr>(ASN1_ITEM_rptr(PBE2PARAM), algorithm);
  if (pbes2 == nullptr) return false;
  if (OBJ_obj2nid(pbes2->keyfunc->algorithm) == NID_id_scrypt) {
    const ScryptPtr scrypt = Unpack<ScryptPtr>(ASN1_ITEM_rptr(SCRYPT_PARAMS), *pbes2->keyfunc);
    return scrypt != nullptr && IsBearable(*scrypt);
  }
  const Pbkdf2Ptr pbkdf2 = Unpack<Pbkdf2Ptr>(ASN1_ITEM_rptr(PBKDF2PARAM), *pbes2->keyfunc);
  return pbkdf2 != nullptr && IsBearable(pbkdf2->iter);
}

bool IsBearable(const X509_SIG& sealed) {
  const X509_ALGOR* algorithm = nullptr;
  X509_SIG_get0(&sealed, &algorithm, nullptr);
  return IsBearable(*algorithm);
}

KeyPtr ToKey(const PKCS8_PRIV_KEY_INFO* plain, const CryptoContext& context) {
  return KeyPtr(plain != nullptr ? EVP_PKCS82PKEY_ex(plain, context.Get(), nullptr) : nullptr);
}

// PKCS #8. Whether no password is an empty one is a matter of taste.
KeyPtr Unseal(const X509_SIG& sealed, const char* password, const CryptoContext& context) {
  const auto open = [&](const char* text) {
    const PlainKeyPtr plain(PKCS8_decrypt_ex(&sealed, text, Length(text), context.Get(), nullptr));
    return ToKey(plain.get(), context);
  };
  if (!IsBearable(sealed)) return nullptr;
  if (Length(password) != 0) return open(password);
  KeyPtr key = open("");
  return key != nullptr ? std::move(key) : open(nullptr);
}

void AddSealedKey(SealedKeyPtr sealed, const CryptoContext& context, KeyFile& file) {
  if (sealed == nullptr) return;
  const std::shared_ptr<const X509_SIG> shared(std::move(sealed));
  file.locked_keys.push_back(
      [shared, &context](const char* password) { return Unseal(*shared, password, context); });
}

void AddPlainKey(const PKCS8_PRIV_KEY_INFO* plain, const CryptoContext& context, KeyFile& file) {
  if (KeyPtr key = ToKey(plain, context)) file.keys.push_back(std::move(key));
}

void AddCertificate(CertificatePtr certificate, KeyFile& file) {
  if (certificate != nullptr) file.certificates.push_back(std::move(certificate));
}

// ---- PEM ----------------------------------------------------------------------------------------

// One block of a file.
struct PemBlock {
  std::string_view label;
  std::string header;  // its lines, when it has any
  SecretBytes bytes;
};

constexpr std::string_view kDashes = "-----";

std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return TrimRight(line, IsSpace);
}

// The label of the line "-----BEGIN LABEL-----"; empty when it is none. The same for "END".
std::string_view LabelOf(std::string_view line, std::string_view word) {
  if (!line.starts_with(kDashes) || !line.ends_with(kDashes)) return {};
  line.remove_prefix(kDashes.size());
  if (!line.starts_with(word)) return {};
  line.remove_prefix(word.size());
  return line.size() > kDashes.size() ? line.substr(0, line.size() - kDashes.size()) : "";
}

// Leaves no copies behind, as OpenSSL's reading of a stream would. Empty when it is no base64.
SecretBytes DecodeBase64(const SecretBytes& text) {
  SecretBytes bytes(text.size() / 4 * 3 + 3);
  const int size = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                   reinterpret_cast<const unsigned char*>(text.data()),
                                   static_cast<int>(text.size()));
  const auto padding =
      std::count(text.rbegin(), text.rbegin() + std::min<long>(2, std::ssize(text)), '=');
  bytes.resize(static_cast<size_t>(std::max<long>(size - padding, 0)));
  return bytes;
}

// The next block of the text; one without its end ends where the next one begins.
bool TakeBlock(std::string_view& text, PemBlock& block) {
  block = {};
  while (!text.empty() && block.label.empty()) block.label = LabelOf(TakeLine(text), "BEGIN ");
  SecretBytes base64;
  while (!text.empty()) {
    std::string_view rest = text;
    const std::string_view line = TakeLine(rest);
    if (!LabelOf(line, "BEGIN ").empty()) break;
    text = rest;
    if (!LabelOf(line, "END ").empty()) break;
    if (line.find(':') != std::string_view::npos) {
      block.header.append(line).append("\n");
    } else {
      base64.insert(base64.end(), line.begin(), line.end());
    }
  }
  block.bytes = DecodeBase64(base64);
  return !block.label.empty();
}

KeyPtr ParseKey(const SecretBytes& bytes, const CryptoContext& context) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto size = static_cast<long>(bytes.size());
  return KeyPtr(d2i_AutoPrivateKey_ex(nullptr, &p, size, context.Get(), nullptr));
}

// In place. PEM_do_header would do it with what the host has set up.
bool DecryptPem(const EVP_CIPHER_INFO& named, const char* password, const CryptoContext& context,
                SecretBytes& bytes) {
  const CipherPtr cipher(
      EVP_CIPHER_fetch(context.Get(), EVP_CIPHER_get0_name(named.cipher), nullptr));
  const DigestPtr md5(EVP_MD_fetch(context.Get(), "MD5", nullptr));
  const CipherContextPtr decryption(EVP_CIPHER_CTX_new());
  SecretBytes secret(EVP_MAX_KEY_LENGTH);
  auto* const key = reinterpret_cast<unsigned char*>(secret.data());
  auto* const text = reinterpret_cast<unsigned char*>(bytes.data());
  int size = 0, rest = 0;
  if (cipher == nullptr || md5 == nullptr || decryption == nullptr ||
      EVP_BytesToKey(cipher.get(), md5.get(), named.iv,
                     reinterpret_cast<const unsigned char*>(password), Length(password), 1, key,
                     nullptr) == 0 ||
      EVP_DecryptInit_ex(decryption.get(), cipher.get(), nullptr, key, named.iv) != 1 ||
      EVP_DecryptUpdate(decryption.get(), text, &size, text, static_cast<int>(bytes.size())) != 1 ||
      EVP_DecryptFinal_ex(decryption.get(), text + size, &rest) != 1)
    return false;
  bytes.resize(static_cast<size_t>(size + rest));
  return true;
}

// As PEM files were locked before PKCS #8 (RFC 1421).
KeyPtr UnlockPemKey(std::string header, SecretBytes bytes, const char* password,
                    const CryptoContext& context) {
  EVP_CIPHER_INFO named;
  if (password == nullptr || PEM_get_EVP_CIPHER_INFO(header.data(), &named) != 1) return nullptr;
  if (named.cipher == nullptr || !DecryptPem(named, password, context, bytes)) return nullptr;
  return ParseKey(bytes, context);
}

void AddOldKey(PemBlock block, const CryptoContext& context, KeyFile& file) {
  if (!block.header.empty()) {
    file.locked_keys.push_back([header = std::move(block.header), bytes = std::move(block.bytes),
                                &context](const char* password) {
      return UnlockPemKey(header, bytes, password, context);
    });
  } else if (KeyPtr key = ParseKey(block.bytes, context)) {
    file.keys.push_back(std::move(key));
  }
}

void AddPemBlock(PemBlock block, const CryptoContext& context, KeyFile& file) {
  const ErrorMark mark;
  const std::string_view label = block.label;
  const auto* p = reinterpret_cast<const unsigned char*>(block.bytes.data());
  const auto size = static_cast<long>(block.bytes.size());
  if (label == PEM_STRING_X509 || label == PEM_STRING_X509_OLD ||
      label == PEM_STRING_X509_TRUSTED) {
    AddCertificate(ParseCertificate({block.bytes.data(), block.bytes.size()}, context), file);
  } else if (label == PEM_STRING_PKCS8INF) {
    const PlainKeyPtr plain(d2i_PKCS8_PRIV_KEY_INFO(nullptr, &p, size));
    AddPlainKey(plain.get(), context, file);
  } else if (label == PEM_STRING_PKCS8) {
    AddSealedKey(SealedKeyPtr(d2i_X509_SIG(nullptr, &p, size)), context, file);
  } else if (label == PEM_STRING_RSA || label == PEM_STRING_ECPRIVATEKEY) {
    AddOldKey(std::move(block), context, file);
  }
}

// ---- PKCS #12 -----------------------------------------------------------------------------------

struct FreeSafes {
  void operator()(AuthSafes* safes) const { sk_PKCS7_pop_free(safes, PKCS7_free); }
};
struct FreeBags {
  void operator()(Bags* bags) const { sk_PKCS12_SAFEBAG_pop_free(bags, PKCS12_SAFEBAG_free); }
};

Pkcs12Ptr ReadPkcs12(std::string_view bytes, const CryptoContext& context) {
  PKCS12* pkcs12 = PKCS12_init_ex(NID_pkcs7_data, context.Get(), nullptr);
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  if (pkcs12 != nullptr) d2i_PKCS12(&pkcs12, &p, static_cast<long>(bytes.size()));
  return Pkcs12Ptr(pkcs12);
}

// Stores the form in which the password is right: null and empty are not the same here. Without a
// checksum there is nothing to tell by.
bool CheckPassword(PKCS12& pkcs12, const char*& password) {
  if (PKCS12_mac_present(&pkcs12) != 1) return true;
  const ASN1_INTEGER* rounds = nullptr;
  PKCS12_get0_mac(nullptr, nullptr, nullptr, &rounds, &pkcs12);
  if (!IsBearable(rounds)) return false;
  if (PKCS12_verify_mac(&pkcs12, password, Length(password)) == 1) return true;
  if (Length(password) != 0) return false;
  password = password == nullptr ? "" : nullptr;
  return PKCS12_verify_mac(&pkcs12, password, 0) == 1;
}

CertificatePtr CertificateIn(const PKCS12_SAFEBAG& bag, const CryptoContext& context) {
  const CertificatePtr found(PKCS12_SAFEBAG_get1_cert(&bag));
  if (found == nullptr) return nullptr;
  unsigned char* bytes = nullptr;
  const int size = i2d_X509(found.get(), &bytes);
  const BytesPtr owned(bytes);
  if (size < 0) return nullptr;
  return ParseCertificate({reinterpret_cast<const char*>(bytes), static_cast<size_t>(size)},
                          context);
}

void AddBag(const PKCS12_SAFEBAG& bag, const char* password, const CryptoContext& context,
            KeyFile& file) {
  const ErrorMark mark;
  switch (PKCS12_SAFEBAG_get_nid(&bag)) {
    case NID_keyBag:
      AddPlainKey(PKCS12_SAFEBAG_get0_p8inf(&bag), context, file);
      break;
    case NID_pkcs8ShroudedKeyBag:
      if (KeyPtr key = Unseal(*PKCS12_SAFEBAG_get0_pkcs8(&bag), password, context)) {
        file.keys.push_back(std::move(key));
      } else {
        file.locked = true;
      }
      break;
    case NID_certBag:
      AddCertificate(CertificateIn(bag, context), file);
      break;
    default:
      break;
  }
}

Bags* UnpackSafe(PKCS7& safe, const char* password) {
  const ErrorMark mark;
  if (PKCS7_type_is_data(&safe)) return PKCS12_unpack_p7data(&safe);
  if (!PKCS7_type_is_encrypted(&safe) || safe.d.encrypted == nullptr) return nullptr;
  if (!IsBearable(*safe.d.encrypted->enc_data->algorithm)) return nullptr;
  return PKCS12_unpack_p7encdata(&safe, password, Length(password));
}

}  // namespace

KeyFile ParsePem(std::string_view text, const CryptoContext& context) {
  KeyFile file;
  for (PemBlock block; TakeBlock(text, block);) AddPemBlock(std::move(block), context, file);
  return file;
}

KeyFile ParsePkcs12(std::string_view bytes, const char* password, const CryptoContext& context) {
  const ErrorMark mark;
  KeyFile file;
  const Pkcs12Ptr pkcs12 = ReadPkcs12(bytes, context);
  if (pkcs12 == nullptr) return file;
  file.locked = !CheckPassword(*pkcs12, password);
  if (file.locked) return file;
  const std::unique_ptr<AuthSafes, FreeSafes> safes(PKCS12_unpack_authsafes(pkcs12.get()));
  for (int i = 0; i < sk_PKCS7_num(safes.get()); ++i) {
    const std::unique_ptr<Bags, FreeBags> bags(
        UnpackSafe(*sk_PKCS7_value(safes.get(), i), password));
    if (bags == nullptr) file.locked = true;
    for (int j = 0; j < sk_PKCS12_SAFEBAG_num(bags.get()); ++j)
      AddBag(*sk_PKCS12_SAFEBAG_value(bags.get(), j), password, context, file);
  }
  return file;
}

}  // namespace mimora

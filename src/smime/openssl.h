// Copyright (c) 2026 the mimora developers.
//
// OpenSSL's objects as owned ones, and a context of its own for the library: what the host has set
// up in OpenSSL neither counts here nor is it touched.
#ifndef MIMORA_SMIME_OPENSSL_H_
#define MIMORA_SMIME_OPENSSL_H_

#include <openssl/bio.h>
#include <openssl/cms.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/pkcs12.h>
#include <openssl/provider.h>
#include <openssl/x509.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace mimora {

template <auto kFree>
struct OpensslFree {
  template <typename T>
  void operator()(T* object) const {
    kFree(object);
  }
};
template <typename T, auto kFree>
using OpensslPtr = std::unique_ptr<T, OpensslFree<kFree>>;

using BioPtr = OpensslPtr<BIO, &BIO_free_all>;
using CertificatePtr = OpensslPtr<X509, &X509_free>;
using CipherPtr = OpensslPtr<EVP_CIPHER, &EVP_CIPHER_free>;
using CmsPtr = OpensslPtr<CMS_ContentInfo, &CMS_ContentInfo_free>;
using DigestPtr = OpensslPtr<EVP_MD, &EVP_MD_free>;
using KeyPtr = OpensslPtr<EVP_PKEY, &EVP_PKEY_free>;

// OPENSSL_free is a macro.
inline void FreeBytes(unsigned char* bytes) { OPENSSL_free(bytes); }
using BytesPtr = OpensslPtr<unsigned char, &FreeBytes>;

// Reads BYTES, which must outlive it. At most 2 GiB; null beyond, and when there is no memory.
BioPtr MakeReader(std::string_view bytes);

BioPtr MakeWriter();

// What was written; it lives as long as the writer.
std::string_view Written(const BioPtr& writer);

// Wipes what it gives back.
template <typename T>
struct WipingAllocator {
  using value_type = T;
  WipingAllocator() = default;
  template <typename U>
  explicit WipingAllocator(const WipingAllocator<U>&) {}

  T* allocate(size_t count) { return std::allocator<T>().allocate(count); }
  void deallocate(T* block, size_t count) {
    OPENSSL_cleanse(block, count * sizeof(T));
    std::allocator<T>().deallocate(block, count);
  }
  bool operator==(const WipingAllocator&) const { return true; }
};
using SecretBytes = std::vector<char, WipingAllocator<char>>;

// Any threads may use it at once.
class CryptoContext {
 public:
  // The one of this process. It is made when it is first asked for, since that takes longer than a
  // signature, and stays: at exit OpenSSL may be gone before us.
  static const CryptoContext& Shared();

  // False when OpenSSL cannot work here.
  bool IsReady() const { return is_ready_; }

  OSSL_LIB_CTX* Get() const { return context_; }

 private:
  CryptoContext();

  OSSL_LIB_CTX* const context_;
  bool is_ready_ = false;
};

// What OpenSSL has to say about failures while there is such an object does not stay in the
// thread's queue. That holds 16: whatever may fail more than a few times has one for each time,
// or what the host had there would be pushed out.
class ErrorMark {
 public:
  ErrorMark();
  ~ErrorMark();
  ErrorMark(const ErrorMark&) = delete;
  ErrorMark& operator=(const ErrorMark&) = delete;
};

// Writes OpenSSL's reason for its last failure into the log.
void LogOpensslError(const char* what);

}  // namespace mimora

#endif  // MIMORA_SMIME_OPENSSL_H_

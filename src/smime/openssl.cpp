// Copyright (c) 2026 the mimora developers.
#include "smime/openssl.h"

#include <openssl/err.h>

#include <climits>

#include "diag/log.h"

namespace mimora {

BioPtr MakeReader(std::string_view bytes) {
  if (bytes.size() > INT_MAX) return nullptr;
  return BioPtr(
      BIO_new_mem_buf(bytes.data() != nullptr ? bytes.data() : "", static_cast<int>(bytes.size())));
}

BioPtr MakeWriter() { return BioPtr(BIO_new(BIO_s_mem())); }

std::string_view Written(const BioPtr& writer) {
  char* bytes = nullptr;
  const long size = BIO_get_mem_data(writer.get(), &bytes);
  return size > 0 ? std::string_view(bytes, static_cast<size_t>(size)) : std::string_view();
}

CryptoContext::CryptoContext() : context_(OSSL_LIB_CTX_new()) {
  if (context_ == nullptr) return;
  is_ready_ = OSSL_PROVIDER_load(context_, "default") != nullptr;
  // Where it is not installed, files in old formats cannot be read.
  OSSL_PROVIDER_load(context_, "legacy");
}

const CryptoContext& CryptoContext::Shared() {
  static const CryptoContext* const shared = new CryptoContext;
  return *shared;
}

ErrorMark::ErrorMark() { ERR_set_mark(); }

ErrorMark::~ErrorMark() { ERR_pop_to_mark(); }

void LogOpensslError(const char* what) {
  char reason[256];
  ERR_error_string_n(ERR_peek_last_error(), reason, sizeof reason);
  LogError("<E> %s: %s", what, reason);
}

}  // namespace mimora

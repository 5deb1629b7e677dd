// Copyright (c) 2026 the mimora developers.
#include "smime/sign_encrypt.h"

#include <random>

#include "smime/entity.h"
#include "smime/smime_orv.h"
#include "stream/scan.h"

namespace mimora {
namespace {

Result ResultOf(Moutstream& out) { return out.FlushBuffer() ? kOk : kWriteFailed; }

}  // namespace

std::string Canonical(std::string_view text) {
  std::string canonical;
  canonical.reserve(text.size() + text.size() / 32);
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    const char* const stop = FindLineEnd(p, end);
    canonical.append(p, stop);
    if (stop == end) break;
    canonical += "\r\n";
    p = stop + (*stop == '\r' && end - stop > 1 && stop[1] == '\n' ? 2 : 1);
  }
  return canonical;
}

Result SignData(std::string_view message, const SignOptions& options, Moutstream& out) {
  const Algorithm* const hash = FindHash(options.hash);
  if (hash == nullptr) return kAlgorithmRefused;
  const std::string content = Canonical(message);
  std::string blob;
  SMimeOrv engine(options.store, options.password);
  Result result = engine.Open();
  if (result == kOk) result = engine.Sign(content, options.signer, *hash, options.detached, blob);
  if (result != kOk) return result;
  if (options.detached) {
    // The generator of the C library is the host's.
    std::random_device draw;
    WriteSignedEntity(content, blob, MakeBoundary(content, std::ref(draw)), hash->name, out);
  } else {
    WriteSignedEntity(std::nullopt, blob, "", "", out);
  }
  return ResultOf(out);
}

Result EncryptData(std::string_view message, const EncryptOptions& options, uint32_t& failed,
                   Moutstream& out) {
  const Algorithm* const cipher = FindCipher(options.cipher, options.key_bits);
  if (cipher == nullptr) return kAlgorithmRefused;
  if (options.recipients.empty()) return kCertificateNotFound;
  std::string blob;
  SMimeOrv engine(options.store);
  Result result = engine.Open();
  if (result == kOk)
    result =
        engine.Encrypt(Canonical(message), options.recipients, *cipher, options.oaep, failed, blob);
  if (result != kOk) return result;
  WriteEnvelopedEntity(blob, out);
  return ResultOf(out);
}

}  // namespace mimora

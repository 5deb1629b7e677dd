// Copyright (c) 2026 the mimora developers.
//
// Any bytes as a file of a certificate store, and any text as what is signed.
#include <openssl/err.h>

#include <cstring>

#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "fuzz.h"
#include "mime/parser.h"
#include "mimora/mimora.h"
#include "platform/ascii.h"
#include "private_directory.h"
#include "smime/entity.h"
#include "smime/key_file.h"
#include "smime/sign_encrypt.h"

namespace mimora::fuzz {
namespace {

constexpr const char* kPasswords[] = {nullptr, "", "secret"};

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < 0x7F; });
}

void CheckCertificate(const X509& certificate, const CryptoContext& context) {
  const std::string id = CertificateId(certificate, context);
  FUZZ_CHECK(id.size() == 64 && id.find_first_not_of("0123456789abcdef") == std::string::npos);
  for (const std::string& address : Addresses(certificate)) FUZZ_CHECK(IsPrintable(address));
  const std::string text = "x" + DescribeCertificate(certificate, id, false);
  FUZZ_CHECK(TranslateText(text, kUtf8Page, kUtf8Page) == text);
  FUZZ_CHECK(!MaySign(certificate) || PublicKeyOf(certificate) != nullptr);
  FUZZ_CHECK(!MayEncrypt(certificate) || PublicKeyOf(certificate) != nullptr);
  ValidityOf(certificate).IncludesNow();
}

void CheckKeyFile(const KeyFile& file, const char* password, const CryptoContext& context) {
  for (const CertificatePtr& certificate : file.certificates) {
    FUZZ_CHECK(certificate != nullptr);
    CheckCertificate(*certificate, context);
  }
  for (const KeyPtr& key : file.keys) FUZZ_CHECK(key != nullptr);
  for (const LockedKey& open : file.locked_keys) open(password);
}

// As the exports see such a file.
void CheckStore(std::string_view bytes, const char* name) {
  static const PrivateDirectory store;
  WriteFile(store.File(name), bytes);
  P_Certificate* list = nullptr;
  uint32_t count = 0;
  FUZZ_CHECK(P_GetCertificatesList(store.Path().c_str(), MIMORA_PURPOSE_ANY, &list, &count) == 0);
  for (uint32_t i = 0; i < count; ++i) {
    const P_Certificate& certificate = list[i];
    FUZZ_CHECK(std::strlen(certificate.id) == 64 && certificate.flags <= 15);
    FUZZ_CHECK(std::memchr(certificate.subject, '\0', sizeof certificate.subject) != nullptr);
    FUZZ_CHECK(std::memchr(certificate.issuer, '\0', sizeof certificate.issuer) != nullptr);
    FUZZ_CHECK(std::memchr(certificate.email, '\0', sizeof certificate.email) != nullptr);
    const auto describe = [&](char* buffer, uint32_t* size) {
      return P_SMimeGetCertInfo(store.Path().c_str(), certificate.id, buffer, size);
    };
    FUZZ_CHECK(!Copied(describe, 1, 0).empty());
  }
  P_FreeCertificatesList(list, count);
  std::filesystem::remove(store.File(name));
}

void CheckFile(Input input) {
  const CryptoContext& context = CryptoContext::Shared();
  const char* const password = input.Choose(kPasswords);
  const bool pem = input.Flag();
  const ExactCopy copy(input.Rest());
  {
    const ErrorMark mark;
    const KeyFile file =
        pem ? ParsePem(copy.Text(), context) : ParsePkcs12(copy.Text(), password, context);
    CheckKeyFile(file, password, context);
    const CertificatePtr certificate = ParseCertificate(copy.Text(), context);
    if (certificate != nullptr) CheckCertificate(*certificate, context);
  }
  CheckStore(copy.Text(), pem ? "file.pem" : "file.p12");
  // The host's errors would be among them.
  FUZZ_CHECK(ERR_peek_error() == 0);
}

// What was signed stands in the message as it was, behind whatever it says itself.
void CheckSigned(Input input) {
  uint32_t number = input.Byte() % 4;
  const std::string content = Canonical(input.Rest());
  const std::string boundary = MakeBoundary(content, [&number] { return number++; });
  FUZZ_CHECK(content.find(boundary) == std::string::npos);
  const std::string text = WrittenBy(
      [&](Moutstream& out) { WriteSignedEntity(content, "the blob", boundary, "SHA256", out); });
  Bodypart message;
  FUZZ_CHECK(LoadFromMemory(message, text) == kOk);
  FUZZ_CHECK((message.Flags() & kSigned) != 0 && message.Children.size() == 2);
  const Bodypart& part = *message.Children[0];
  FUZZ_CHECK(
      std::string_view(text).substr(static_cast<size_t>(part.PartStart)).starts_with(content));
  const int64_t end = part.PartStart + std::ssize(content);
  FUZZ_CHECK(message.Children[1]->PartStart ==
             end + std::ssize("\r\n--\r\n") - 1 + std::ssize(boundary));
  FUZZ_CHECK(message.Children[1]->DecodedSize == std::ssize("the blob") - 1);
}

}  // namespace

void CheckInput(Input input) {
  if (input.Byte() % 4 == 0) {
    CheckSigned(input);
  } else {
    CheckFile(input);
  }
}

}  // namespace mimora::fuzz

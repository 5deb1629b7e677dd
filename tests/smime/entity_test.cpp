// Copyright (c) 2026 the mimora developers.
#include "smime/entity.h"

#include "smime/algorithms.h"
#include "smime/sign_encrypt.h"
#include "support/sources.h"

namespace mimora {
namespace {

using testing::TextOf;

// 56 bytes: one line of base64 and a bit more.
const std::string kBlob(56, '\0');
const std::string kBase64 = std::string(72, 'A') + "\r\nAAA=\r\n";

const std::string kPkcs7Rest =
    " name=\"smime.p7m\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-Disposition: attachment; filename=\"smime.p7m\"\r\n"
    "\r\n" +
    kBase64;

std::string SignedEntity(std::optional<std::string_view> content, std::string_view hash) {
  Moutstream out(MemorySink{});
  WriteSignedEntity(content, kBlob, "b1", hash, out);
  return TextOf(out);
}

TEST(SmimeEntity, HoldsTheBlobAlone) {
  Moutstream out(MemorySink{});
  WriteEnvelopedEntity(kBlob, out);
  const std::string type = "Content-Type: application/x-pkcs7-mime;\tsmime-type=";
  EXPECT_EQ(TextOf(out), type + "enveloped-data;\r\n" + kPkcs7Rest);
  EXPECT_EQ(SignedEntity(std::nullopt, "SHA1"), type + "signed-data;\r\n" + kPkcs7Rest);
}

TEST(SmimeEntity, HoldsTheContentAndItsSignature) {
  const struct {
    const char *content, *hash, *micalg;
  } cases[] = {{"a: b\r\n\r\nc\r\n", "SHA1", " micalg=sha1;"},
               {"c", "sha1WithRSA", " micalg=sha1;"},
               {"", "SHA256", ""},
               {"c", "MD5", ""},
               {"c", "", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.hash);
    EXPECT_EQ(SignedEntity(c.content, c.hash),
              "Content-Type: multipart/signed; protocol=\"application/x-pkcs7-signature\";" +
                  std::string(c.micalg) +
                  "\r\n boundary=\"b1\"\r\n"
                  "\r\n"
                  "--b1\r\n" +
                  c.content +
                  "\r\n"
                  "--b1\r\n"
                  "Content-Type: application/x-pkcs7-signature; name=\"smime.p7s\"\r\n"
                  "Content-Transfer-Encoding: base64\r\n"
                  "Content-Disposition: attachment; filename=\"smime.p7s\"\r\n"
                  "\r\n" +
                  kBase64 + "--b1--\r\n");
  }
}

TEST(SmimeEntity, TakesABoundaryThatIsNotInTheContent) {
  uint32_t drawn = 0x0A;
  const auto draw = [&drawn] { return drawn++; };
  EXPECT_EQ(MakeBoundary("--cba", draw), "fed");
  drawn = 0xFFFFFFFE;
  EXPECT_EQ(MakeBoundary("", draw), "0fffffffffffffffe");
}

TEST(SmimeText, HasCrLfForEveryLineEnd) {
  const char* const cases[][2] = {{"", ""},
                                  {"a", "a"},
                                  {"a\nb\n", "a\r\nb\r\n"},
                                  {"a\r\nb\r\n", "a\r\nb\r\n"},
                                  {"a\rb\r", "a\r\nb\r\n"},
                                  {"\n\r\n\r\r\n", "\r\n\r\n\r\n\r\n"}};
  for (const auto& [text, want] : cases) EXPECT_EQ(Canonical(text), want);
}

TEST(SmimeAlgorithms, AreFoundByNameAndSize) {
  const auto name = [](const Algorithm* found) { return found != nullptr ? found->name : "none"; };
  const char* const hashes[][2] = {{"", "SHA256"},  {"sha-1", "SHA1"},   {"SHA512", "SHA512"},
                                   {"MD5", "none"}, {"SHA-3-9", "none"}, {"AES-128-CBC", "none"}};
  for (const auto& [wanted, found] : hashes) EXPECT_STREQ(name(FindHash(wanted)), found) << wanted;
  const struct {
    const char* wanted;
    uint32_t bits;
    const char* found;
  } ciphers[] = {{"", 0, "AES-256-CBC"},
                 {"", 128, "AES-128-CBC"},
                 {"aes", 192, "AES-192-CBC"},
                 {"aes-128-cbc", 0, "AES-128-CBC"},
                 {"AES-128-CBC", 256, "none"},
                 {"", 168, "none"},
                 {"DES-EDE3-CBC", 168, "DES-EDE3-CBC"},
                 {"DES-CBC", 0, "none"},
                 {"SHA256", 256, "none"}};
  for (const auto& c : ciphers)
    EXPECT_STREQ(name(FindCipher(c.wanted, c.bits)), c.found) << c.wanted << c.bits;
}

}  // namespace
}  // namespace mimora

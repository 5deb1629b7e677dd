// Copyright (c) 2026 the mimora developers.
#include "smime/entity.h"

#include <charconv>

#include "codec/base64.h"
#include "platform/ascii.h"

namespace mimora {
namespace {

constexpr int32_t kLineLength = 72;

void WriteBase64(std::string_view blob, Moutstream& out) {
  Minstream in(MemorySource{blob.data(), static_cast<int64_t>(blob.size())});
  EncodeBase64(in, out, kLineLength);
}

// KIND is the smime-type.
void WritePkcs7Entity(std::string_view kind, std::string_view blob, Moutstream& out) {
  out.WriteLine("Content-Type: application/x-pkcs7-mime;\tsmime-type=" + std::string(kind) +
                ";\r\n name=\"smime.p7m\"");
  out.WriteLine("Content-Transfer-Encoding: base64");
  out.WriteLine("Content-Disposition: attachment; filename=\"smime.p7m\"");
  out.WriteLine("");
  WriteBase64(blob, out);
}

void WriteMultipartSigned(std::string_view content, std::string_view blob,
                          std::string_view boundary, std::string_view hash, Moutstream& out) {
  // Readers have got by without the parameter for the others.
  const bool is_sha1 = EqualIgnoringCase(hash.substr(0, 4), "SHA1");
  const std::string delimiter = "--" + std::string(boundary);
  out.WriteLine("Content-Type: multipart/signed; protocol=\"application/x-pkcs7-signature\";" +
                std::string(is_sha1 ? " micalg=sha1;" : "") + "\r\n boundary=\"" +
                std::string(boundary) + "\"");
  out.WriteLine("");
  out.WriteLine(delimiter);
  out.WriteText(content);
  out.WriteLine("");
  out.WriteLine(delimiter);
  out.WriteLine("Content-Type: application/x-pkcs7-signature; name=\"smime.p7s\"");
  out.WriteLine("Content-Transfer-Encoding: base64");
  out.WriteLine("Content-Disposition: attachment; filename=\"smime.p7s\"");
  out.WriteLine("");
  WriteBase64(blob, out);
  out.WriteLine(delimiter + "--");
}

void AppendHex(uint32_t number, std::string& text) {
  char digits[8];
  const char* const end = std::to_chars(digits, digits + sizeof digits, number, 16).ptr;
  text.append(digits, static_cast<size_t>(end - digits));
}

}  // namespace

void WriteSignedEntity(std::optional<std::string_view> content, std::string_view blob,
                       std::string_view boundary, std::string_view hash, Moutstream& out) {
  if (content) return WriteMultipartSigned(*content, blob, boundary, hash, out);
  WritePkcs7Entity("signed-data", blob, out);
}

void WriteEnvelopedEntity(std::string_view blob, Moutstream& out) {
  WritePkcs7Entity("enveloped-data", blob, out);
}

std::string MakeBoundary(std::string_view content, const std::function<uint32_t()>& draw) {
  while (true) {
    const uint32_t first = draw(), second = draw(), third = draw();
    std::string boundary;
    for (const uint32_t number : {third, second, first}) AppendHex(number, boundary);
    if (content.find(boundary) == std::string_view::npos) return boundary;
  }
}

}  // namespace mimora

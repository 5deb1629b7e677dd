// Copyright (c) 2026 the mimora developers.
//
// Takes damaged messages apart: every STEP-th prefix of each sample, and each sample CHANGES times
// with one byte changed. Each lies in a block of its own size, so that a sanitizer sees a read
// behind it. Everything has to end; what it ends with, nobody can tell.
//
// Usage: damage_samples STEP CHANGES SEED FILE...
#include <mimora/mimora.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>

namespace {

constexpr uint32_t kRoom = 4096;

int64_t Swallow(S_Context, const void*, int64_t length) { return length; }

void ReadHeader(M_Bodypart* part) {
  char text[kRoom];
  const int32_t count = M_HeaderFieldsCount(part);
  for (int32_t i = 0; i < count; ++i) {
    const char* name = nullptr;
    const char* value = nullptr;
    M_BodypartHeaderField(part, i, &name, &value);
    uint32_t size = kRoom;
    M_DecodeHeaderFieldValue(value, "iso-8859-2", text, &size);
    for (const char* parameter : {"charset", "boundary", "filename", "name"})
      M_MimeParameter(part, name, parameter, text, &(size = kRoom));
  }
}

void ReadBody(M_Bodypart* part) {
  S_OutStream* const out = S_CreateOutStream(nullptr, 1, Swallow, nullptr, nullptr, 0);
  M_SaveBodypartBody(part, "quoted-printable", "utf-8", nullptr, out);
  M_SaveBodypartBodyEx(part, "base64", "utf-16", nullptr, out, 0);
  char text[kRoom];
  for (int32_t n = 0; M_GetAttachmentSize(n, part) >= 0; ++n) {
    M_GetAttachmentName(n, part, text, kRoom, "utf-8");
    M_GetAttachmentMimeType(n, part, text, kRoom);
    M_SaveAttachment(n, part, nullptr, out);
  }
  uint32_t size = kRoom;
  M_GetBodypartText(part, nullptr, text, 0, &size);
  S_DestroyOutStream(out);
}

// The library bounds how deep trees are.
void ReadTree(M_Bodypart* part) {
  ReadHeader(part);
  ReadBody(part);
  const int32_t count = M_GetChildBodypartsCount(part);
  for (int32_t i = 0; i < count; ++i) ReadTree(M_GetNthChildBodypart(part, i));
  M_Bodypart* const enclosed = M_GetMessageBodypartBody(part);
  if (enclosed != part) ReadTree(enclosed);
}

void ReadPage(std::string_view bytes) {
  std::u16string page;
  for (const char c : bytes) page += static_cast<char16_t>(static_cast<unsigned char>(c));
  uint32_t length = 0;
  M_HTMLToText(page.c_str(), nullptr, &length);
}

void Read(std::string_view bytes) {
  const auto block = std::make_unique<char[]>(bytes.size());
  if (!bytes.empty()) std::memcpy(block.get(), bytes.data(), bytes.size());
  M_Bodypart* const message = M_CreateMessage();
  M_LoadBodypartFromBuffer(message, block.get(), static_cast<int32_t>(bytes.size()));
  ReadTree(message);
  M_FindTextLetterBodypart(message);
  M_DestroyMessage(message);
  ReadPage(bytes);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fputs("usage: damage_samples STEP CHANGES SEED FILE...\n", stderr);
    return 2;
  }
  const size_t step = std::strtoull(argv[1], nullptr, 10);
  const size_t changes = std::strtoull(argv[2], nullptr, 10);
  std::mt19937 random(static_cast<unsigned>(std::strtoull(argv[3], nullptr, 10)));
  size_t variants = 0;
  for (int i = 4; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    std::string sample{std::istreambuf_iterator<char>(file), {}};
    for (size_t size = 0; size < sample.size(); size += step, ++variants)
      Read(std::string_view(sample).substr(0, size));
    for (size_t change = 0; change < changes && !sample.empty(); ++change, ++variants) {
      char& byte = sample[random() % sample.size()];
      const char former = byte;
      byte = static_cast<char>(random());
      Read(sample);
      byte = former;
    }
  }
  std::printf("%zu damaged messages, seed %s\n", variants, argv[3]);
  return variants > 0 ? 0 : 1;
}

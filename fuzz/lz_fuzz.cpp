// Copyright (c) 2026 the mimora developers.
//
// What was compressed comes back, and any bytes as a compressed block do no harm.
#include "fuzz.h"
#include "util/lz.h"

namespace mimora::fuzz {
namespace {

// A larger output is only counted.
constexpr uint32_t kLargestOutput = 1 << 16;

void* NoMemory(size_t) { return nullptr; }

std::string Compressed(std::string_view bytes, LzAllocate allocate) {
  const size_t room = 1 + bytes.size() + bytes.size() / 256;
  const std::unique_ptr<uint8_t[]> out(new uint8_t[room]);
  const uint32_t size = LzCompress(bytes, out.get(), allocate);
  FUZZ_CHECK(size <= room && (size == 0) == bytes.empty());
  return std::string(reinterpret_cast<const char*>(out.get()), size);
}

std::string Uncompressed(std::string_view block) {
  const uint32_t size = LzUncompress(block, nullptr);
  if (size > kLargestOutput) return {};
  const std::unique_ptr<uint8_t[]> out(new uint8_t[size]());
  FUZZ_CHECK(LzUncompress(block, out.get()) == size);
  return std::string(reinterpret_cast<const char*>(out.get()), size);
}

}  // namespace

void CheckInput(Input input) {
  const std::string_view bytes = input.Rest();
  const std::string compressed = Compressed(bytes, std::malloc);
  FUZZ_CHECK(Uncompressed(compressed) == bytes);
  FUZZ_CHECK(Compressed(bytes, NoMemory) == compressed);
  // What is in the input may be a block itself, of which more can be made.
  const std::string plain = Uncompressed(bytes);
  FUZZ_CHECK(Uncompressed(Compressed(plain, std::malloc)) == plain);
}

}  // namespace mimora::fuzz

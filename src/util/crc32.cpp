// Copyright (c) 2026 the mimora developers.
#include "util/crc32.h"

#include <array>
#include <bit>

#include "platform/cpu.h"
#include "platform/load.h"

#if MIMORA_HAS_VECTORS
#include <immintrin.h>
#endif

namespace mimora {
namespace {

// ---- By tables ----------------------------------------------------------------------------------

constexpr uint32_t kPolynomial = 0xEDB88320;  // reflected: bit 31 stands for 1, bit 0 for x^31
constexpr size_t kBlock = 16;

// Times x.
constexpr uint32_t Advance(uint32_t crc) { return crc >> 1 ^ ((crc & 1) != 0 ? kPolynomial : 0); }

using Table = std::array<uint32_t, 256>;

// Table I tells what a byte does to the register when I more bytes follow: so a block of bytes can
// be looked up at once instead of one after the other.
consteval std::array<Table, kBlock> MakeTables() {
  std::array<Table, kBlock> tables = {};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = Advance(crc);
    tables[0][byte] = crc;
  }
  for (size_t i = 1; i < kBlock; ++i) {
    for (uint32_t byte = 0; byte < 256; ++byte) {
      const uint32_t crc = tables[i - 1][byte];
      tables[i][byte] = crc >> 8 ^ tables[0][crc & 0xFF];
    }
  }
  return tables;
}

constexpr std::array<Table, kBlock> kTables = MakeTables();
static_assert(kTables[0][1] == 0x77073096);

// Four bytes in the order of the memory, behind which FOLLOWING more bytes are looked up.
uint32_t LookUp(uint32_t word, size_t following) {
  return kTables[following + 3][word & 0xFF] ^ kTables[following + 2][word >> 8 & 0xFF] ^
         kTables[following + 1][word >> 16 & 0xFF] ^ kTables[following][word >> 24];
}

// ---- By multiplication --------------------------------------------------------------------------

#if MIMORA_HAS_VECTORS

constexpr size_t kLanes = 4;

// x^N modulo the polynomial, as a factor for a product of reflected numbers, which comes out a bit
// too low.
constexpr int64_t PowerOfX(int n) {
  uint32_t power = 0x80000000;
  while (n-- > 0) power = Advance(power);
  return int64_t{power} << 1;
}

// Moves a block over DISTANCE bits of data behind it: its two halves, the earlier one further, are
// multiplied with what they are worth there.
template <int kDistance>
MIMORA_FOR_SSE __m128i Move(__m128i block) {
  constexpr int64_t kEarlier = PowerOfX(kDistance + 32), kLater = PowerOfX(kDistance - 32);
  const __m128i factors = _mm_set_epi64x(kLater, kEarlier);
  return _mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x00),
                       _mm_clmulepi64_si128(block, factors, 0x11));
}

MIMORA_FOR_SSE __m128i LoadBlock(const char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Adds whole rounds of blocks, at least one, up into one block that has the same remainder.
MIMORA_FOR_SSE uint32_t MultiplyRounds(uint32_t crc, const char* p, size_t rounds) {
  __m128i lanes[kLanes];
  for (size_t i = 0; i < kLanes; ++i) lanes[i] = LoadBlock(p + i * kBlock);
  lanes[0] = _mm_xor_si128(lanes[0], _mm_cvtsi32_si128(static_cast<int>(crc)));
  while (--rounds > 0) {
    p += kLanes * kBlock;
    for (size_t i = 0; i < kLanes; ++i) {
      lanes[i] = _mm_xor_si128(Move<512>(lanes[i]), LoadBlock(p + i * kBlock));
    }
  }
  __m128i sum = lanes[0];
  for (size_t i = 1; i < kLanes; ++i) sum = _mm_xor_si128(Move<128>(sum), lanes[i]);
  char block[kBlock];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(block), sum);
  return UpdateCrc32ByTables(0, {block, kBlock});
}

#endif

}  // namespace

uint32_t UpdateCrc32ByTables(uint32_t crc, std::string_view data) {
  const char* p = data.data();
  const char* const end = p + data.size();
  if constexpr (std::endian::native == std::endian::little) {
    for (; end - p >= std::ptrdiff_t{kBlock}; p += kBlock) {
      const auto load = Load<uint32_t>;
      crc = LookUp(crc ^ load(p), 12) ^ LookUp(load(p + 4), 8) ^ LookUp(load(p + 8), 4) ^
            LookUp(load(p + 12), 0);
    }
  }
  for (; p < end; ++p) crc = crc >> 8 ^ kTables[0][(crc ^ static_cast<uint8_t>(*p)) & 0xFF];
  return crc;
}

uint32_t UpdateCrc32(uint32_t crc, std::string_view data) {
#if MIMORA_HAS_VECTORS
  const bool multiplies = platform::GetCpuLevel() != platform::CpuLevel::kPortable;
  const size_t rounds = data.size() / (kLanes * kBlock);
  if (multiplies && rounds > 0) {
    crc = MultiplyRounds(crc, data.data(), rounds);
    data.remove_prefix(rounds * kLanes * kBlock);
  }
#endif
  return UpdateCrc32ByTables(crc, data);
}

}  // namespace mimora

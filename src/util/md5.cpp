// Copyright (c) 2026 the mimora developers.
#include "util/md5.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

#include "platform/ascii.h"
#include "platform/load.h"

namespace mimora {
namespace {

constexpr size_t kBlock = 64;
constexpr size_t kLengthSize = 8;

// The fractions of |sin 1|, |sin 2| and so on.
constexpr std::array<uint32_t, 64> kSines = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kRotations[4][4] = {
    {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Which word of the block a step takes: I times the first number plus the second.
constexpr size_t kWordOrder[4][2] = {{1, 0}, {5, 1}, {3, 5}, {7, 0}};

using State = std::array<uint32_t, 4>;

uint32_t LoadWord(const char* p) {
  auto word = Load<uint32_t>(p);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
  return word;
}

// Makes the compiler add up SUM first: left alone, it may wait with all of it for B.
[[gnu::always_inline]] inline void AddFirst(uint32_t& sum) {
#if defined(__GNUC__)
  asm("" : "+r"(sum));
#else
  static_cast<void>(sum);
#endif
}

// Each step waits for B of the one before, so what does not need it is added first. The mix of the
// second round is taken apart for that: its halves have no bit in common and can be added.
template <size_t kStep>
[[gnu::always_inline]] inline void Step(State& s, const char* block) {
  constexpr size_t kRound = kStep / 16;
  constexpr size_t kWord = (kStep * kWordOrder[kRound][0] + kWordOrder[kRound][1]) % 16;
  uint32_t& a = s[(64 - kStep) % 4];
  const uint32_t b = s[(65 - kStep) % 4], c = s[(66 - kStep) % 4], d = s[(67 - kStep) % 4];
  uint32_t sum = a + LoadWord(block + 4 * kWord) + kSines[kStep];
  if constexpr (kRound == 1) sum += c & ~d;
  AddFirst(sum);
  if constexpr (kRound == 0) sum += d ^ (b & (c ^ d));
  if constexpr (kRound == 1) sum += b & d;
  if constexpr (kRound == 2) sum += b ^ (c ^ d);
  if constexpr (kRound == 3) sum += c ^ (b | ~d);
  a = b + std::rotl(sum, kRotations[kRound][kStep % 4]);
}

template <size_t... kSteps>
[[gnu::always_inline]] inline void AllSteps(State& s, const char* block,
                                            std::index_sequence<kSteps...>) {
  (Step<kSteps>(s, block), ...);
}

void AddBlocks(State& state, const char* data, size_t count) {
  State s = state;
  for (; count > 0; --count, data += kBlock) {
    const State before = s;
    AllSteps(s, data, std::make_index_sequence<64>());
    for (size_t i = 0; i < s.size(); ++i) s[i] += before[i];
  }
  state = s;
}

void StoreLittleEndian(uint64_t number, size_t size, char* to) {
  for (size_t i = 0; i < size; ++i) to[i] = static_cast<char>(number >> 8 * i);
}

// What is left of the data behind its whole blocks, a one, zeros, and the number of bits.
void AddEnd(State& state, std::string_view rest, uint64_t size) {
  char end[2 * kBlock] = {};
  std::copy(rest.begin(), rest.end(), end);
  end[rest.size()] = '\x80';
  const size_t blocks = rest.size() + 1 + kLengthSize <= kBlock ? 1 : 2;
  StoreLittleEndian(size * 8, kLengthSize, end + blocks * kBlock - kLengthSize);
  AddBlocks(state, end, blocks);
}

}  // namespace

Md5Digest Md5(std::string_view data) {
  State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  const size_t whole = data.size() / kBlock;
  AddBlocks(state, data.data(), whole);
  AddEnd(state, data.substr(whole * kBlock), data.size());
  char bytes[sizeof(Md5Digest)];
  for (size_t i = 0; i < state.size(); ++i) StoreLittleEndian(state[i], 4, bytes + 4 * i);
  return std::bit_cast<Md5Digest>(bytes);
}

void WriteMd5Text(const Md5Digest& digest, char* text) {
  const auto write_byte = [&text](uint8_t byte) {
    *text++ = kHexDigits[byte >> 4];
    *text++ = kHexDigits[byte & 0xF];
  };
  const uint8_t last = digest.back();
  for (size_t i = 0; i + 1 < digest.size(); ++i) write_byte(digest[i] < 0x80 ? digest[i] : 0xFF);
  for (int i = 0; last >= 0x80 && i < 3; ++i) write_byte(0xFF);
  write_byte(last);
  *text = '\0';
}

}  // namespace mimora

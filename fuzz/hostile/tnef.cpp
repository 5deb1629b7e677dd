// Copyright (c) 2026 the mimora developers.
//
// TNEF streams (winmail.dat): files in files, and lengths that are lies.
#include <cstdint>

#include "hostile.h"

namespace mimora::hostile {
namespace {

using std::size_t;
using std::string;

string LittleEndian(uint64_t value, int size) {
  string bytes;
  for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}
string U16(uint64_t value) { return LittleEndian(value, 2); }
string U32(uint64_t value) { return LittleEndian(value, 4); }

constexpr uint32_t kRendering = 0x00069002;
constexpr uint32_t kTitle = 0x00018010;
constexpr uint32_t kData = 0x0006800F;
constexpr uint32_t kProperties = 0x00069005;

// CLAIMED: the length that it says it has.
string Attribute(uint32_t id, const string& data, uint64_t claimed) {
  return "\x02" + U32(id) + U32(claimed) + data + U16(0);
}
string Attribute(uint32_t id, const string& data) { return Attribute(id, data, data.size()); }

string File() {
  return Attribute(kRendering, string(14, '\0')) + Attribute(kTitle, string("a\0", 2)) +
         Attribute(kData, "x");
}

string Property(uint64_t type, uint64_t id, uint64_t values, const string& data) {
  return U16(type) + U16(id) + U32(values) + data;
}

string Stream(const string& attributes) {
  return Body("application/ms-tnef; name=winmail.dat", "binary",
              U32(0x223E9F78) + U16(1) + attributes);
}

// Data that begins inside the data of the file before: each claims everything behind it.
string Overlapping(size_t n) {
  string files;
  for (size_t i = 0; i < n; ++i) files += Attribute(kData, "", (n - i) * 40);
  return Stream(files);
}

constexpr MessageClass kClasses[] = {
    {"tnef-files", Unit::kFile, 200'000, [](size_t n) { return Stream(Repeat(File(), n)); }},
    {"tnef-attributes", Unit::kNothing, 1'000'000,
     [](size_t n) { return Stream(Repeat(Attribute(0x12345, ""), n)); }},
    {"tnef-false-lengths", Unit::kNothing, 200'000,
     [](size_t n) {
       return Stream(Repeat(File() + Attribute(kTitle, "ab", 3) + Attribute(kData, "", ~0U), n));
     }},
    {"tnef-overlapping", Unit::kNothing, 400'000, Overlapping},
    {"tnef-properties", Unit::kNothing, 400'000,
     [](size_t n) {
       const string all = Repeat(Property(0x1003, 0x1234, 1, U32(7)), n);
       return Stream(File() + Attribute(kProperties, U32(n) + all));
     }},
    {"tnef-property-claims", Unit::kNothing, 100'000,
     [](size_t n) {
       return Stream(Repeat(Attribute(kProperties, U32(~0U) + Property(0x101E, 0x3707, ~0U, "")) +
                                Attribute(kProperties, U32(~0U) + Property(0x1014, 1, ~0U, "")),
                            n));
     }},
    {"tnef-names", Unit::kNothing, 4'000'000,
     [](size_t n) {
       return Stream(
           Attribute(kProperties,
                     U32(1) + Property(0x1F, 0x3707, 1, U32(2 * n) + Repeat(string("a\0", 2), n))) +
           File());
     }},
    {"tnef-values", Unit::kNothing, 1'000'000,
     [](size_t n) {
       return Stream(Attribute(kProperties,
                               U32(1) + Property(0x101E, 0x3707, n, Repeat(U32(4) + "abcd", n))) +
                     File());
     }},
};

}  // namespace

std::span<const MessageClass> TnefClasses() { return kClasses; }

}  // namespace mimora::hostile

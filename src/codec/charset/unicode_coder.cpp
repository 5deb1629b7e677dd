// Copyright (c) 2026 the mimora developers.
#include "codec/charset/unicode_coder.h"

#include <algorithm>
#include <array>

#include "codec/charset/ascii_run.h"

namespace mimora {
namespace {

constexpr bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

constexpr uint8_t Byte(char c) { return static_cast<uint8_t>(c); }
constexpr bool IsContinuation(char c) { return (Byte(c) & 0xC0) == 0x80; }

// ---- UTF-8 --------------------------------------------------------------------------------------

// What stands at the beginning of a text.
struct Sequence {
  enum Kind : uint8_t { kCharacter, kInvalid, kIncomplete } kind;
  uint8_t size;
  char32_t character;
};

constexpr Sequence Invalid(size_t size) {
  return {Sequence::kInvalid, static_cast<uint8_t>(size), kReplacement};
}

// How many bytes follow that lead; 0 for a byte that leads nothing.
constexpr size_t FollowingBytes(uint8_t lead) {
  if (lead < 0xC2 || lead > 0xF4) return 0;
  return lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
}

// Whether the second byte leaves the character inside its range: not too long a form, no surrogate,
// not beyond U+10FFFF.
constexpr bool SecondByteFits(uint8_t lead, uint8_t second) {
  switch (lead) {
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second < 0xA0;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second < 0x90;
    default:
      return true;
  }
}

Sequence ReadSequence(std::string_view text) {
  const uint8_t lead = Byte(text[0]);
  if (lead < 0x80) return {Sequence::kCharacter, 1, lead};
  const size_t following = FollowingBytes(lead);
  if (following == 0) return Invalid(1);
  char32_t character = lead & (0x3Fu >> following);
  for (size_t i = 1; i <= following; ++i) {
    if (i == text.size()) return {Sequence::kIncomplete, static_cast<uint8_t>(i), kReplacement};
    if (!IsContinuation(text[i])) return Invalid(i);
    if (i == 1 && !SecondByteFits(lead, Byte(text[1]))) return Invalid(2);
    character = character << 6 | (Byte(text[i]) & 0x3Fu);
  }
  return {Sequence::kCharacter, static_cast<uint8_t>(following + 1), character};
}

char16_t* PutCharacter(char32_t character, char16_t* wide) {
  if (character < 0x10000) {
    *wide++ = static_cast<char16_t>(character);
    return wide;
  }
  *wide++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
  *wide++ = static_cast<char16_t>(0xDC00 | (character & 0x3FF));
  return wide;
}

class Utf8Decoder : public CharsetDecoder {
 public:
  char16_t* Decode(std::string_view bytes, char16_t* wide) override {
    wide = CompleteHeld(bytes, wide);
    const char* next = bytes.data();
    const char* const end = next + bytes.size();
    while (next != end) {
      CopyAsciiBlocks(next, end, wide);
      wide = DecodeSome(next, end, wide);
    }
    return wide;
  }

  char16_t* Finish(char16_t* wide) override {
    if (held_size_ > 0) wide = Put({Sequence::kInvalid, 0, kReplacement}, wide);
    held_size_ = 0;
    return wide;
  }

 private:
  char16_t* Put(Sequence sequence, char16_t* wide) {
    if (sequence.kind == Sequence::kInvalid) invalid_ = true;
    return PutCharacter(sequence.character, wide);
  }

  // Decodes a stretch that is not all ASCII; what is incomplete at the end is held back.
  char16_t* DecodeSome(const char*& next, const char* end, char16_t* wide) {
    const char* p = next;
    // Room to look at three bytes from wherever a character may begin.
    for (const char* stop = p + std::clamp<ptrdiff_t>(end - p - 2, 0, kAsciiBlock); p < stop;) {
      const uint8_t lead = Byte(p[0]);
      // The letters of most scripts, short of the corners of the range.
      const bool two = lead >= 0xC2 && IsContinuation(p[1]);
      if (lead < 0x80 || (two && lead < 0xE0)) {
        *wide++ = static_cast<char16_t>(two ? (lead & 0x1F) << 6 | (p[1] & 0x3F) : lead);
        p += two ? 2 : 1;
      } else if (two && lead > 0xE0 && lead < 0xED && IsContinuation(p[2])) {
        *wide++ = static_cast<char16_t>((lead & 0x0F) << 12 | (p[1] & 0x3F) << 6 | (p[2] & 0x3F));
        p += 3;
      } else {
        wide = DecodeOne(p, end, wide);
      }
    }
    if (end - p <= 2) {
      while (p != end) wide = DecodeOne(p, end, wide);
    }
    next = p;
    return wide;
  }

  char16_t* DecodeOne(const char*& p, const char* end, char16_t* wide) {
    const Sequence sequence = ReadSequence({p, static_cast<size_t>(end - p)});
    if (sequence.kind == Sequence::kIncomplete) {
      held_size_ = static_cast<size_t>(std::copy(p, end, held_.begin()) - held_.begin());
      p = end;
      return wide;
    }
    p += sequence.size;
    return Put(sequence, wide);
  }

  // Takes bytes until it is clear what those held back are the beginning of.
  char16_t* CompleteHeld(std::string_view& bytes, char16_t* wide) {
    while (held_size_ > 0 && !bytes.empty()) {
      held_[held_size_] = bytes[0];
      const Sequence sequence = ReadSequence({held_.data(), held_size_ + 1});
      const bool taken = sequence.kind == Sequence::kIncomplete || sequence.size > held_size_;
      if (taken) bytes.remove_prefix(1);
      held_size_ = sequence.kind == Sequence::kIncomplete ? sequence.size : 0;
      if (held_size_ == 0) wide = Put(sequence, wide);
    }
    return wide;
  }

  std::array<char, 4> held_;
  size_t held_size_ = 0;
};

// A character beyond ASCII.
char* PutUtf8(char32_t character, char* bytes) {
  const auto put = [&bytes](char32_t byte) { *bytes++ = static_cast<char>(byte); };
  const auto put_following = [&put](char32_t bits) { put(0x80 | (bits & 0x3F)); };
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put_following(character >> 12);
    }
    put_following(character >> 6);
  }
  put_following(character);
  return bytes;
}

class Utf8Encoder : public CharsetEncoder {
 public:
  char* Encode(std::u16string_view wide, char* bytes) override {
    const char16_t* next = wide.data();
    const char16_t* const end = next + wide.size();
    while (next != end) {
      if (high_ == 0) CopyAsciiBlocks(next, end, bytes);
      bytes = EncodeSome(next, end, bytes);
    }
    return bytes;
  }

  char* Finish(char* bytes) override {
    if (high_ != 0) bytes = PutReplacement(bytes);
    high_ = 0;
    return bytes;
  }

 private:
  // A stretch that is not all ASCII.
  char* EncodeSome(const char16_t*& next, const char16_t* end, char* bytes) {
    const char16_t* p = next;
    for (const char16_t* stop = p + std::min(end - p, kAsciiBlock); p < stop; ++p) {
      const char16_t unit = *p;
      if ((unit & 0xF800) == 0xD800 || high_ != 0) {
        bytes = EncodeSurrogate(unit, bytes);
      } else if (unit < 0x800) {
        // One byte or two is a matter of chance in the text of many languages: no branch.
        const uint32_t two = unit >= 0x80 ? 1 : 0;
        const uint32_t mask = 0 - two;
        bytes[0] = static_cast<char>((unit & ~mask) | ((0xC0u | unit >> 6) & mask));
        bytes[1] = static_cast<char>(0x80 | (unit & 0x3F));
        bytes += 1 + two;
      } else {
        bytes[0] = static_cast<char>(0xE0 | unit >> 12);
        bytes[1] = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
        bytes[2] = static_cast<char>(0x80 | (unit & 0x3F));
        bytes += 3;
      }
    }
    next = p;
    return bytes;
  }

  char* EncodeSurrogate(char16_t unit, char* bytes) {
    const char16_t high = high_;
    high_ = 0;
    if (high != 0 && IsLowSurrogate(unit)) {
      return PutUtf8(0x10000u + ((high & 0x3FFu) << 10) + (unit & 0x3FFu), bytes);
    }
    if (high != 0) bytes = PutReplacement(bytes);
    if (IsHighSurrogate(unit)) {
      high_ = unit;
      return bytes;
    }
    if (IsLowSurrogate(unit)) return PutReplacement(bytes);
    if (unit >= 0x80) return PutUtf8(unit, bytes);
    *bytes++ = static_cast<char>(unit);
    return bytes;
  }

  char* PutReplacement(char* bytes) {
    used_default_ = true;
    return PutUtf8(kReplacement, bytes);
  }

  char16_t high_ = 0;  // half a pair that is held back
};

// ---- UTF-16 -------------------------------------------------------------------------------------

constexpr char16_t Unit(char first, char second, ByteOrder order) {
  const bool big = order == ByteOrder::kBig;
  return static_cast<char16_t>(Byte(big ? first : second) << 8 | Byte(big ? second : first));
}

class Utf16Decoder : public CharsetDecoder {
 public:
  explicit Utf16Decoder(ByteOrder order) : named_order_(order), order_(order) {}

  char16_t* Decode(std::string_view bytes, char16_t* wide) override {
    if (bytes.empty()) return wide;
    if (half_) {
      wide = Put(Unit(first_, bytes[0], order_), wide);
      bytes.remove_prefix(1);
    }
    while (at_start_ && bytes.size() >= 2) {
      wide = Put(Unit(bytes[0], bytes[1], order_), wide);
      bytes.remove_prefix(2);
    }
    const size_t count = bytes.size() / 2;
    CopyUnits(bytes.data(), count, wide);
    half_ = bytes.size() % 2 != 0;
    if (half_) first_ = bytes.back();
    return wide + count;
  }

  char16_t* Finish(char16_t* wide) override {
    if (half_) {
      invalid_ = true;
      *wide++ = kReplacement;
    }
    half_ = false;
    at_start_ = true;
    order_ = named_order_;
    return wide;
  }

 private:
  // One loop for each order, so that the compiler makes vector instructions of it.
  void CopyUnits(const char* bytes, size_t count, char16_t* wide) const {
    if (order_ == ByteOrder::kBig) {
      for (size_t i = 0; i < count; ++i) {
        wide[i] = Unit(bytes[2 * i], bytes[2 * i + 1], ByteOrder::kBig);
      }
    } else {
      for (size_t i = 0; i < count; ++i) {
        wide[i] = Unit(bytes[2 * i], bytes[2 * i + 1], ByteOrder::kLittle);
      }
    }
  }

  char16_t* Put(char16_t unit, char16_t* wide) {
    constexpr char16_t kSwappedMark = 0xFFFE;
    const bool mark = at_start_ && (unit == kByteOrderMark || unit == kSwappedMark);
    if (mark && unit == kSwappedMark) {
      order_ = order_ == ByteOrder::kBig ? ByteOrder::kLittle : ByteOrder::kBig;
    }
    at_start_ = false;
    half_ = false;
    if (!mark) *wide++ = unit;
    return wide;
  }

  ByteOrder named_order_;
  ByteOrder order_;
  bool at_start_ = true;
  bool half_ = false;
  char first_ = 0;
};

class Utf16Encoder : public CharsetEncoder {
 public:
  explicit Utf16Encoder(ByteOrder order) : order_(order) {}

  char* Encode(std::u16string_view wide, char* bytes) override {
    if (at_start_ && !wide.empty()) {
      bytes = Put(kByteOrderMark, bytes);
      at_start_ = false;
    }
    for (const char16_t unit : wide) bytes = Put(unit, bytes);
    return bytes;
  }

  char* Finish(char* bytes) override {
    at_start_ = true;
    return bytes;
  }

 private:
  char* Put(char16_t unit, char* bytes) const {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    *bytes++ = order_ == ByteOrder::kBig ? high : low;
    *bytes++ = order_ == ByteOrder::kBig ? low : high;
    return bytes;
  }

  ByteOrder order_;
  bool at_start_ = true;
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeUtf8Decoder() { return std::make_unique<Utf8Decoder>(); }

std::unique_ptr<CharsetEncoder> MakeUtf8Encoder() { return std::make_unique<Utf8Encoder>(); }

std::unique_ptr<CharsetDecoder> MakeUtf16Decoder(ByteOrder order) {
  return std::make_unique<Utf16Decoder>(order);
}

std::unique_ptr<CharsetEncoder> MakeUtf16Encoder(ByteOrder order) {
  return std::make_unique<Utf16Encoder>(order);
}

}  // namespace mimora

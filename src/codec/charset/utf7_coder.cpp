// Copyright (c) 2026 the mimora developers.
#include "codec/charset/utf7_coder.h"

#include <array>

#include "codec/base64_alphabet.h"

namespace mimora {
namespace {

constexpr int kUnitBits = 16;
constexpr int kDigitBits = 6;

// A run is what stands between "+" and its end. The bytes that give no unit of their own are the
// "+" and up to two digits behind it or behind a unit; they are all that may still be delivered
// when the run ends, so a decoder never writes more than three units beyond its bytes.
class Utf7Decoder final : public CharsetDecoder {
 public:
  char16_t* Decode(std::string_view bytes, char16_t* wide) override {
    const char* p = bytes.data();
    const char* end = p + bytes.size();
    while (p < end) p = in_run_ ? DecodeRun(p, end, wide) : DecodeDirect(p, end, wide);
    return wide;
  }

  char16_t* Finish(char16_t* wide) override {
    if (in_run_) EndRun(wide);
    return wide;
  }

 private:
  // Reads characters other than those that the RFC encodes directly, too: mail is full of them.
  const char* DecodeDirect(const char* p, const char* end, char16_t*& wide) {
    for (; p < end && *p != '+'; ++p) {
      const auto byte = static_cast<uint8_t>(*p);
      *wide++ = byte < 0x80 ? byte : Substitute();
    }
    if (p == end) return p;
    in_run_ = true;
    return p + 1;
  }

  const char* DecodeRun(const char* p, const char* end, char16_t*& wide) {
    for (; p < end; ++p) {
      const uint8_t value = Base64Value(*p);
      if (value == kForeignToBase64) {
        const bool closed = *p == '-' && EndsAtHyphen();
        EndRun(wide);
        return closed ? p + 1 : p;
      }
      bits_ = bits_ << kDigitBits | value;
      bit_count_ += kDigitBits;
      if (bit_count_ >= kUnitBits) WriteUnit(wide);
    }
    return p;
  }

  void WriteUnit(char16_t*& wide) {
    bit_count_ -= kUnitBits;
    *wide++ = static_cast<char16_t>(bits_ >> bit_count_);
    bits_ &= (1U << bit_count_) - 1;
    has_unit_ = true;
  }

  // "+-" is a plus sign; behind digits that are no character the hyphen is text like them.
  bool EndsAtHyphen() const { return has_unit_ || bit_count_ == 0; }

  void EndRun(char16_t*& wide) {
    if (!has_unit_) {
      WriteAsText(wide);
    } else if (bits_ != 0) {
      *wide++ = Substitute();
    }
    in_run_ = has_unit_ = false;
    bits_ = 0;
    bit_count_ = 0;
  }

  // A plus sign that begins no character stands for itself, as in "1+1".
  void WriteAsText(char16_t*& wide) {
    *wide++ = u'+';
    while (bit_count_ > 0) {
      bit_count_ -= kDigitBits;
      *wide++ = static_cast<char16_t>(kBase64Alphabet[bits_ >> bit_count_ & 63]);
    }
  }

  char16_t Substitute() {
    invalid_ = true;
    return kReplacement;
  }

  bool in_run_ = false;
  bool has_unit_ = false;  // the run has given one
  uint32_t bits_ = 0;      // those of the next unit
  int bit_count_ = 0;
};

// Those that every gateway leaves alone, and white space. The characters that the RFC leaves to the
// encoder's choice are not among them.
consteval std::array<bool, 128> MakeDirect() {
  std::array<bool, 128> direct{};
  for (const char c : kBase64Alphabet) direct[static_cast<size_t>(c)] = c != '+';
  for (const char c : std::string_view("'(),-./:? \t\r\n")) direct[static_cast<size_t>(c)] = true;
  return direct;
}

constexpr std::array<bool, 128> kDirect = MakeDirect();

// A unit takes three bytes at most: three digits, "+" and two digits, or a digit and "-" that end a
// run and itself.
class Utf7Encoder final : public CharsetEncoder {
 public:
  char* Encode(std::u16string_view wide, char* bytes) override {
    for (const char16_t unit : wide) bytes = EncodeUnit(unit, bytes);
    return bytes;
  }

  char* Finish(char* bytes) override { return EndRun(bytes); }

 private:
  char* EncodeUnit(char16_t unit, char* bytes) {
    if (unit < kDirect.size() && kDirect[unit]) {
      bytes = EndRun(bytes);
      *bytes++ = static_cast<char>(unit);
      return bytes;
    }
    if (!in_run_) *bytes++ = '+';
    if (!in_run_ && unit == u'+') {
      *bytes++ = '-';
      return bytes;
    }
    in_run_ = true;
    bits_ = bits_ << kUnitBits | unit;
    bit_count_ += kUnitBits;
    for (; bit_count_ >= kDigitBits; bit_count_ -= kDigitBits) {
      *bytes++ = kBase64Alphabet[bits_ >> (bit_count_ - kDigitBits) & 63];
    }
    return bytes;
  }

  // Closed even where the next character would do: not every reader knows that rule.
  char* EndRun(char* bytes) {
    if (!in_run_) return bytes;
    if (bit_count_ > 0) *bytes++ = kBase64Alphabet[bits_ << (kDigitBits - bit_count_) & 63];
    *bytes++ = '-';
    in_run_ = false;
    bit_count_ = 0;
    return bytes;
  }

  bool in_run_ = false;
  uint32_t bits_ = 0;  // the lowest BIT_COUNT_ of them begin the next digit
  int bit_count_ = 0;
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeUtf7Decoder() { return std::make_unique<Utf7Decoder>(); }

std::unique_ptr<CharsetEncoder> MakeUtf7Encoder() { return std::make_unique<Utf7Encoder>(); }

}  // namespace mimora

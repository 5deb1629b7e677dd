// Copyright (c) 2026 the mimora developers.
#include "codec/charset/iscii_coder.h"

#include "codec/charset/code_page.h"

namespace mimora {
namespace {

constexpr uint8_t kFirstLetter = 0xA0;
constexpr uint8_t kVirama = 0xE8;
constexpr uint8_t kNukta = 0xE9;
constexpr uint8_t kSwitch = 0xEF;     // the letter of a script follows
constexpr uint8_t kExtension = 0xF0;  // a rare sign follows

// Behind a virama two bytes have another meaning.
constexpr uint8_t kNonJoinerByte = 0xE8;
constexpr uint8_t kJoinerByte = 0xE9;
constexpr char16_t kNonJoiner = 0x200C;
constexpr char16_t kJoiner = 0x200D;

// The letters of the scripts are those of their pages, in the same order.
constexpr uint32_t kPageOfLetterZero = 57000 - 0x40;
constexpr uint8_t kFirstScript = 0x42;
constexpr uint8_t kLastScript = 0x4B;

const CodePage* PageOf(uint8_t letter) { return FindCodePage(kPageOfLetterZero + letter); }

constexpr bool IsScript(uint8_t letter) { return letter >= kFirstScript && letter <= kLastScript; }

// What both directions have: a page of its own, and the script that is in force.
class Script {
 public:
  explicit Script(uint32_t code_page) : own_(static_cast<uint8_t>(code_page - kPageOfLetterZero)) {
    Reset();
  }

  uint8_t Own() const { return own_; }
  uint8_t Letter() const { return letter_; }
  const CodePage& Page() const { return *page_; }

  void Reset() { Select(own_); }

  void Select(uint8_t letter) {
    letter_ = letter;
    page_ = PageOf(letter);
  }

 private:
  const uint8_t own_;
  uint8_t letter_ = 0;
  const CodePage* page_ = nullptr;
};

// One byte at most is held back, and it gives one unit when it proves to stand alone.
class IsciiDecoder final : public CharsetDecoder {
 public:
  explicit IsciiDecoder(uint32_t code_page) : script_(code_page) {}

  char16_t* Decode(std::string_view bytes, char16_t* wide) override {
    for (const char c : bytes) {
      const auto byte = static_cast<uint8_t>(c);
      if (held_ == 0 || !TakeSecond(byte, wide)) TakeFirst(byte, wide);
    }
    return wide;
  }

  char16_t* Finish(char16_t* wide) override {
    if (held_ != 0) *wide++ = Single(held_);
    held_ = 0;
    after_virama_ = false;
    script_.Reset();
    return wide;
  }

 private:
  // Whether the byte belongs to the one that is held; if not, that one stands alone.
  bool TakeSecond(uint8_t byte, char16_t*& wide) {
    const uint8_t first = held_;
    held_ = 0;
    if (first == kSwitch && Switch(byte)) return true;
    const uint16_t pair =
        first == kSwitch ? CodePage::kNone : script_.Page().DecodePair(first, byte);
    *wide++ = pair != CodePage::kNone ? pair : Single(first);
    return pair != CodePage::kNone;
  }

  bool Switch(uint8_t letter) {
    if (IsScript(letter)) {
      script_.Select(letter);
      return true;
    }
    const bool back = letter == 0x40 || letter == 0x41;
    if (back) script_.Reset();
    return back;
  }

  void TakeFirst(uint8_t byte, char16_t*& wide) {
    const bool after_virama = after_virama_;
    after_virama_ = false;
    if (after_virama && byte == kNonJoinerByte) {
      *wide++ = kNonJoiner;
    } else if (after_virama && byte == kJoinerByte) {
      *wide++ = kJoiner;
    } else if (MayBeginPair(byte)) {
      held_ = byte;
    } else {
      *wide++ = Single(byte);
      after_virama_ = byte == kVirama;
    }
  }

  bool MayBeginPair(uint8_t byte) const {
    if (byte == kSwitch || byte == kExtension) return true;
    return byte > kFirstLetter && script_.Page().DecodePair(byte, kNukta) != CodePage::kNone;
  }

  char16_t Single(uint8_t byte) {
    const uint16_t unit = script_.Page().DecodeByte(byte);
    if (unit < CodePage::kLead) return unit;
    invalid_ = true;
    return script_.Page().undefined;
  }

  Script script_;
  uint8_t held_ = 0;
  bool after_virama_ = false;
};

// The script that has a block of 80 characters, from U+0900 on.
constexpr char16_t kFirstBlock = 0x0900;
constexpr char16_t kLastCharacter = 0x0D6F;
constexpr uint8_t kScriptOfBlock[] = {0x42, 0x43, 0x4B, 0x4A, 0x47, 0x44, 0x45, 0x48, 0x49};

// A unit takes four bytes at most, two for the script and two for the letter.
class IsciiEncoder final : public CharsetEncoder {
 public:
  explicit IsciiEncoder(uint32_t code_page) : script_(code_page) {}

  char* Encode(std::u16string_view wide, char* bytes) override {
    for (const char16_t unit : wide) bytes = PutUnit(unit, bytes);
    return bytes;
  }

  char* Finish(char* bytes) override {
    after_virama_ = false;
    return Switch(script_.Own(), bytes);
  }

 private:
  char* PutUnit(char16_t unit, char* bytes) {
    const bool after_virama = after_virama_;
    after_virama_ = false;
    if (unit > kFirstBlock && unit <= kLastCharacter) return PutLetter(unit, bytes);
    if (unit < kFirstLetter) return PutByte(static_cast<uint8_t>(unit), bytes);
    if (after_virama && unit == kNonJoiner) return PutByte(kNonJoinerByte, bytes);
    if (after_virama && unit == kJoiner) return PutByte(kJoinerByte, bytes);
    return PutDefault(bytes);
  }

  char* PutLetter(char16_t unit, char* bytes) {
    const uint8_t letter = kScriptOfBlock[(unit - kFirstBlock) / 0x80];
    const uint16_t code = PageOf(letter)->EncodeUnit(unit);
    if (code == CodePage::kNone) return PutDefault(bytes);
    bytes = Switch(letter, bytes);
    if (code > 0xFF) bytes = PutByte(static_cast<uint8_t>(code >> 8), bytes);
    after_virama_ = code == kVirama;
    return PutByte(static_cast<uint8_t>(code & 0xFF), bytes);
  }

  char* Switch(uint8_t letter, char* bytes) {
    if (letter == script_.Letter()) return bytes;
    script_.Select(letter);
    return PutByte(letter, PutByte(kSwitch, bytes));
  }

  char* PutDefault(char* bytes) {
    used_default_ = true;
    return PutByte(static_cast<uint8_t>(script_.Page().default_char), bytes);
  }

  static char* PutByte(uint8_t byte, char* bytes) {
    *bytes++ = static_cast<char>(byte);
    return bytes;
  }

  Script script_;
  bool after_virama_ = false;
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeIsciiDecoder(uint32_t code_page) {
  return std::make_unique<IsciiDecoder>(code_page);
}

std::unique_ptr<CharsetEncoder> MakeIsciiEncoder(uint32_t code_page) {
  return std::make_unique<IsciiEncoder>(code_page);
}

}  // namespace mimora

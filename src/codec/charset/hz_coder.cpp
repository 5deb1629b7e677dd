// Copyright (c) 2026 the mimora developers.
#include "codec/charset/hz_coder.h"

#include "codec/charset/shift_decoder.h"
#include "codec/charset/shift_encoder.h"

namespace mimora {
namespace {

constexpr uint32_t kTablePage = 936;

// The page has more pairs than this character set.
constexpr uint8_t kFirstByte = 0xA1;
constexpr uint8_t kLastLead = 0xF7;
constexpr uint8_t kLastTrail = 0xFE;

// Line ends do not end the pairs.
class HzDecoder final : public ShiftDecoder<HzDecoder> {
 public:
  HzDecoder() : ShiftDecoder(*FindCodePage(kTablePage)) {}

  // A tilde may be the second half of a pair, but not the first.
  bool IsLead(uint8_t byte) const { return byte > ' ' && byte != '~'; }
  bool IsTrail(uint8_t byte) const { return byte > ' '; }

  uint16_t Pair(uint8_t lead, uint8_t trail) const {
    lead |= 0x80;
    trail |= 0x80;
    const bool in_set =
        lead >= kFirstByte && lead <= kLastLead && trail >= kFirstByte && trail <= kLastTrail;
    return in_set ? page_.DecodePair(lead, trail) : CodePage::kNone;
  }

  uint16_t Single(uint8_t byte) const {
    if (byte == '~') return kShift;
    return byte < 0x80 ? byte : CodePage::kNone;
  }

  bool IsInShift() const { return after_tilde_; }

  void Shift(DecodeCursor& cursor) {
    const char byte = *cursor.p;
    if (!after_tilde_) {
      after_tilde_ = true;
    } else if (byte == '\n') {
      after_tilde_ = false;
    } else if (byte == '{' || byte == '}') {
      after_tilde_ = false;
      in_pairs_ = byte == '{';
    } else {
      const bool doubled = byte == '~' && !in_pairs_;
      cursor.wide = EndShift(cursor.wide);
      if (!doubled) return;
    }
    ++cursor.p;
  }

  char16_t* EndShift(char16_t* wide) {
    if (after_tilde_) *wide++ = u'~';
    after_tilde_ = false;
    return wide;
  }

 private:
  bool after_tilde_ = false;
};

struct EncodingRules {
  static constexpr std::string_view kHeader = "";
  static constexpr std::string_view kOpen = "~{";
  static constexpr std::string_view kClose = "~}";
  static constexpr char kDoubled = '~';

  static uint16_t Code(const CodePage& page, char16_t unit) {
    return SevenBitCode(page, unit, kLastLead);
  }
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeHzDecoder() { return std::make_unique<HzDecoder>(); }

std::unique_ptr<CharsetEncoder> MakeHzEncoder() {
  return std::make_unique<ShiftEncoder<EncodingRules>>(*FindCodePage(kTablePage));
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "codec/charset/ebcdic_coder.h"

#include "codec/charset/shift_decoder.h"
#include "codec/charset/shift_encoder.h"

namespace mimora {
namespace {

class EbcdicDecoder final : public ShiftDecoder<EbcdicDecoder> {
 public:
  explicit EbcdicDecoder(const CodePage& page) : ShiftDecoder(page) {}

  // No pair has a shift code in it: one behind a lead is obeyed, lest all that follows be garbled.
  bool IsLead(uint8_t byte) const { return byte != kShiftOut && byte != kShiftIn; }
  bool IsTrail(uint8_t byte) const { return IsLead(byte); }

  uint16_t Pair(uint8_t lead, uint8_t trail) const { return page_.DecodePair(lead, trail); }
  uint16_t Single(uint8_t byte) const { return IsLead(byte) ? page_.DecodeByte(byte) : kShift; }

  bool IsInShift() const { return false; }

  void Shift(DecodeCursor& cursor) {
    in_pairs_ = cursor.Byte() == kShiftOut;
    ++cursor.p;
  }

  char16_t* EndShift(char16_t* wide) { return wide; }
};

struct EncodingRules {
  static constexpr std::string_view kHeader = "";
  static constexpr std::string_view kOpen = "\x0E";
  static constexpr std::string_view kClose = "\x0F";
  static constexpr char kDoubled = 0;

  static uint16_t Code(const CodePage& page, char16_t unit) { return page.EncodeUnit(unit); }
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeEbcdicDecoder(const CodePage& page) {
  return std::make_unique<EbcdicDecoder>(page);
}

std::unique_ptr<CharsetEncoder> MakeEbcdicEncoder(const CodePage& page) {
  return std::make_unique<ShiftEncoder<EncodingRules>>(page);
}

}  // namespace mimora

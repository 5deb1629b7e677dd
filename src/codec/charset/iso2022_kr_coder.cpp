// Copyright (c) 2026 the mimora developers.
#include "codec/charset/iso2022_kr_coder.h"

#include "codec/charset/held_escape.h"
#include "codec/charset/shift_decoder.h"
#include "codec/charset/shift_encoder.h"

namespace mimora {
namespace {

constexpr uint32_t kTablePage = 949;
constexpr std::string_view kHeaders[] = {"\x1B$)C"};

class Iso2022KrDecoder final : public ShiftDecoder<Iso2022KrDecoder> {
 public:
  Iso2022KrDecoder() : ShiftDecoder(*FindCodePage(kTablePage)) {}

  // Line ends and blanks keep their meaning between pairs, whatever the writer did.
  bool IsLead(uint8_t byte) const { return byte >= kFirstGraphic; }
  bool IsTrail(uint8_t byte) const { return byte >= kFirstGraphic; }

  uint16_t Pair(uint8_t lead, uint8_t trail) const {
    return page_.DecodePair(lead | 0x80, trail | 0x80);
  }

  uint16_t Single(uint8_t byte) const {
    if (byte == kEscape || byte == kShiftOut || byte == kShiftIn) return kShift;
    return byte < 0x80 ? byte : CodePage::kNone;
  }

  bool IsInShift() const { return escape_.Any(); }

  // The header changes nothing: wherever it stands, and whether or not, there are only two sets.
  void Shift(DecodeCursor& cursor) {
    if (escape_.Any() || cursor.Byte() == kEscape) {
      escape_.Take(cursor, kHeaders);
      return;
    }
    in_pairs_ = cursor.Byte() == kShiftOut;
    ++cursor.p;
  }

  char16_t* EndShift(char16_t* wide) { return escape_.Release(wide); }

 private:
  HeldEscape escape_;
};

struct EncodingRules {
  static constexpr std::string_view kHeader = kHeaders[0];
  static constexpr std::string_view kOpen = "\x0E";
  static constexpr std::string_view kClose = "\x0F";
  static constexpr char kDoubled = 0;

  static uint16_t Code(const CodePage& page, char16_t unit) {
    return SevenBitCode(page, unit, 0xFE);
  }
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeIso2022KrDecoder() {
  return std::make_unique<Iso2022KrDecoder>();
}

std::unique_ptr<CharsetEncoder> MakeIso2022KrEncoder() {
  return std::make_unique<ShiftEncoder<EncodingRules>>(*FindCodePage(kTablePage));
}

}  // namespace mimora

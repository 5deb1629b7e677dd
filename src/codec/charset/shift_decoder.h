// Copyright (c) 2026 the mimora developers.
//
// Decoding of text in which shift codes switch between single bytes and pairs.
#ifndef MIMORA_CODEC_CHARSET_SHIFT_DECODER_H_
#define MIMORA_CODEC_CHARSET_SHIFT_DECODER_H_

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"

namespace mimora {

constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;

// Where a decoder reads, and where it writes.
struct DecodeCursor {
  const char* p;
  const char* end;
  char16_t* wide;

  bool AtEnd() const { return p == end; }
  uint8_t Byte() const { return static_cast<uint8_t>(*p); }
};

// What a single byte may be besides a character or CodePage::kNone: the beginning of a shift.
constexpr uint16_t kShift = CodePage::kLead;

// RULES, the class derived from this one, has
//   IsLead, IsTrail:  whether a byte is a half of a pair, be it of an undefined one,
//   Pair:             the character of a pair, or kNone,
//   Single:           that of another byte, kNone, or kShift,
//   IsInShift:        whether a shift has begun that takes more bytes,
//   Shift:            takes a byte of a shift, or finds that it was none,
//   EndShift:         writes what is held of a shift, and is as new.
// A byte gives one unit at most, and so does a lead behind which no trail comes: what is written
// beyond the bytes of a piece is one unit for each byte that the pieces before left held.
template <typename Rules>
class ShiftDecoder : public CharsetDecoder {
 public:
  char16_t* Decode(std::string_view bytes, char16_t* wide) override {
    DecodeCursor cursor{bytes.data(), bytes.data() + bytes.size(), wide};
    while (!cursor.AtEnd()) {
      if (GetRules().IsInShift()) {
        GetRules().Shift(cursor);
      } else if (in_pairs_) {
        DecodePairs(cursor);
      } else {
        DecodeSingles(cursor);
      }
    }
    return cursor.wide;
  }

  char16_t* Finish(char16_t* wide) override {
    if (holds_lead_) *wide++ = Known(CodePage::kNone);
    holds_lead_ = false;
    in_pairs_ = false;
    return GetRules().EndShift(wide);
  }

 protected:
  explicit ShiftDecoder(const CodePage& page) : page_(page) {}

  const CodePage& page_;
  bool in_pairs_ = false;

 private:
  Rules& GetRules() { return static_cast<Rules&>(*this); }

  char16_t Known(uint16_t unit) {
    if (unit != CodePage::kNone) return unit;
    invalid_ = true;
    return page_.undefined;
  }

  void DecodeSingles(DecodeCursor& cursor) {
    const char* p = cursor.p;
    char16_t* wide = cursor.wide;
    uint16_t unit = 0;
    for (; p < cursor.end; ++p) {
      unit = GetRules().Single(static_cast<uint8_t>(*p));
      if (unit >= kShift) break;
      *wide++ = unit;
    }
    cursor.p = p;
    cursor.wide = wide;
    if (!cursor.AtEnd()) DecodeSpecial(cursor, unit);
  }

  void DecodeSpecial(DecodeCursor& cursor, uint16_t unit) {
    if (unit == kShift) return GetRules().Shift(cursor);
    *cursor.wide++ = Known(unit);
    ++cursor.p;
  }

  void DecodePairs(DecodeCursor& cursor) {
    if (!holds_lead_) DecodeWholePairs(cursor);
    if (cursor.AtEnd()) return;
    const uint8_t byte = cursor.Byte();
    if (holds_lead_) {
      EndPair(cursor);
    } else if (GetRules().IsLead(byte)) {
      lead_ = byte;
      holds_lead_ = true;
      ++cursor.p;
    } else {
      DecodeSpecial(cursor, GetRules().Single(byte));
    }
  }

  void DecodeWholePairs(DecodeCursor& cursor) {
    const char* p = cursor.p;
    char16_t* wide = cursor.wide;
    for (; cursor.end - p >= 2; p += 2) {
      const auto lead = static_cast<uint8_t>(p[0]);
      const auto trail = static_cast<uint8_t>(p[1]);
      if (!GetRules().IsLead(lead) || !GetRules().IsTrail(trail)) break;
      *wide++ = Known(GetRules().Pair(lead, trail));
    }
    cursor.p = p;
    cursor.wide = wide;
  }

  // A control character, such as a line end, is not taken for half of a pair.
  void EndPair(DecodeCursor& cursor) {
    const uint8_t byte = cursor.Byte();
    const bool whole = GetRules().IsTrail(byte);
    *cursor.wide++ = Known(whole ? GetRules().Pair(lead_, byte) : CodePage::kNone);
    if (whole) ++cursor.p;
    holds_lead_ = false;
  }

  bool holds_lead_ = false;
  uint8_t lead_ = 0;
};

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_SHIFT_DECODER_H_

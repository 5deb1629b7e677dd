// Copyright (c) 2026 the mimora developers.
#include "codec/charset/iso2022_jp_coder.h"

#include <array>

#include "codec/charset/held_escape.h"
#include "codec/charset/shift_decoder.h"
#include "codec/charset/shift_encoder.h"

namespace mimora {
namespace {

constexpr uint32_t kTablePage = 932;

enum class Set : uint8_t { kAscii, kKana, kPairs };

// Half-width kana: 63 of them, which page 932 has as bytes, and this encoding without the high bit.
constexpr char16_t kFirstKana = 0xFF61;
constexpr uint8_t kFirstKanaByte = 0xA1;
constexpr uint8_t kLastKanaByte = 0xDF;
constexpr uint8_t kHighBit = 0x80;

constexpr bool IsKanaByte(int byte) { return byte >= kFirstKanaByte && byte <= kLastKanaByte; }

constexpr uint16_t DecodeKana(int byte) {
  if (!IsKanaByte(byte | kHighBit)) return CodePage::kNone;
  return static_cast<uint16_t>(kFirstKana + ((byte | kHighBit) - kFirstKanaByte));
}

constexpr bool IsGraphic(int byte) { return byte >= kFirstGraphic && byte <= kLastGraphic; }

// What the bytes mean that are not halves of pairs.
using SingleTable = std::array<uint16_t, 256>;

constexpr uint16_t DecodeSingle(int byte, Set set) {
  if (byte == kEscape || byte == kShiftOut || byte == kShiftIn) return kShift;
  if (set != Set::kPairs && IsKanaByte(byte)) return DecodeKana(byte);
  if (byte >= kHighBit) return CodePage::kNone;
  if (set == Set::kKana && IsGraphic(byte)) return DecodeKana(byte);
  return static_cast<uint16_t>(byte);
}

consteval SingleTable MakeSingles(Set set) {
  SingleTable singles;
  for (size_t byte = 0; byte < singles.size(); ++byte) {
    singles[byte] = DecodeSingle(static_cast<int>(byte), set);
  }
  return singles;
}

constexpr SingleTable kSingles[] = {MakeSingles(Set::kAscii), MakeSingles(Set::kKana),
                                    MakeSingles(Set::kPairs)};

constexpr std::string_view kSequences[] = {"\x1B(B", "\x1B$B", "\x1B(J",  "\x1B$@",
                                           "\x1B(I", "\x1B(H", "\x1B$(D", "\x1B&@"};
constexpr Set kSelected[] = {Set::kAscii, Set::kPairs, Set::kAscii, Set::kPairs,
                             Set::kKana,  Set::kAscii, Set::kPairs};

// Announces a revision of the set that the next sequence selects.
constexpr size_t kAnnouncement = std::size(kSelected);
static_assert(std::size(kSequences) == kAnnouncement + 1);

// Read as half-width kana, whose second bytes are those of the kana set.
constexpr uint8_t kKanaRow = 0x2A;

// Page 932 holds two rows of this encoding under each of its leads: by row the lead, and by the
// last bit of the row and the cell the trail.
struct Rows {
  std::array<uint8_t, 128> leads{};
  std::array<uint8_t, 128> trails[2];
};

consteval Rows MakeRows() {
  Rows rows{};
  for (int i = kFirstGraphic; i <= kLastGraphic; ++i) {
    const int pair_of_rows = (i - kFirstGraphic) / 2;
    const auto at = static_cast<size_t>(i);
    rows.leads[at] = static_cast<uint8_t>(pair_of_rows + (pair_of_rows < 0x1F ? 0x81 : 0xC1));
    rows.trails[0][at] = static_cast<uint8_t>(i + 0x7E);
    rows.trails[1][at] = static_cast<uint8_t>(i + (i < 0x60 ? 0x1F : 0x20));
  }
  return rows;
}

constexpr Rows kRows = MakeRows();

// A line end changes no set: relays break long lines wherever they are.
class Iso2022JpDecoder final : public ShiftDecoder<Iso2022JpDecoder> {
 public:
  Iso2022JpDecoder() : ShiftDecoder(*FindCodePage(kTablePage)) { Select(Set::kAscii); }

  bool IsLead(uint8_t byte) const { return IsGraphic(byte); }
  bool IsTrail(uint8_t byte) const { return IsGraphic(byte) || byte >= kHighBit; }

  uint16_t Pair(uint8_t row, uint8_t cell) const {
    if (!IsGraphic(cell)) return CodePage::kNone;
    if (row == kKanaRow) return DecodeKana(cell);
    return page_.DecodePair(kRows.leads[row], kRows.trails[row & 1][cell]);
  }

  uint16_t Single(uint8_t byte) const { return (*singles_)[byte]; }

  bool IsInShift() const { return escape_.Any(); }

  void Shift(DecodeCursor& cursor) {
    if (escape_.Any() || cursor.Byte() == kEscape) return TakeEscape(cursor);
    if (cursor.Byte() == kShiftOut) {
      outside_shift_ = set_;
      Use(Set::kKana);
    } else {
      Use(outside_shift_);
    }
    ++cursor.p;
  }

  char16_t* EndShift(char16_t* wide) {
    Select(Set::kAscii);
    return escape_.Release(wide);
  }

 private:
  void TakeEscape(DecodeCursor& cursor) {
    const size_t found = escape_.Take(cursor, kSequences);
    if (found < kAnnouncement) Select(kSelected[found]);
  }

  void Select(Set set) {
    outside_shift_ = set;
    Use(set);
  }

  void Use(Set set) {
    set_ = set;
    singles_ = &kSingles[static_cast<size_t>(set)];
    in_pairs_ = set == Set::kPairs;
  }

  HeldEscape escape_;
  Set set_ = Set::kAscii;
  Set outside_shift_ = Set::kAscii;  // the set that kShiftIn returns to
  const SingleTable* singles_ = nullptr;
};

constexpr std::u16string_view kFullWidthKana =
    u"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテト"
    u"ナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン゛゜";
static_assert(kFullWidthKana.size() == kLastKanaByte - kFirstKanaByte + 1);

// Pairs in the order of their codes, as numbers without gaps: a lead has 188 trails.
constexpr int kTrails = 188;

constexpr int IndexOf(int pair) {
  const int trail = pair & 0xFF;
  return (pair >> 8) * kTrails + trail - (trail > 0x7F ? 0x41 : 0x40);
}

// The characters behind the rows of this encoding, which page 932 has in a second place that is
// inside them.
struct Twins {
  int first;
  int last;
  int first_inside;
};

constexpr Twins kTwins[] = {{IndexOf(0xFA40), IndexOf(0xFA49), IndexOf(0xEEEF)},
                            {IndexOf(0xFA55), IndexOf(0xFA57), IndexOf(0xEEFA)},
                            {IndexOf(0xFA5C), IndexOf(0xFC4B), IndexOf(0xED40)}};

constexpr int kFirstUserLead = 0xF0;

// The index of a pair of page 932 inside the rows of this encoding, or -1.
int FindInside(int pair) {
  const int index = IndexOf(pair);
  if (pair >> 8 < kFirstUserLead) return index;
  for (const Twins& twins : kTwins) {
    if (index >= twins.first && index <= twins.last) {
      return twins.first_inside + index - twins.first;
    }
  }
  return -1;
}

// Row and cell of a code of page 932, or kNone.
uint16_t FindRow(uint16_t code) {
  const int index = code < 0x100 ? -1 : FindInside(code);
  if (index < 0) return CodePage::kNone;
  const int lead = index / kTrails, cells = index % kTrails;
  const int pair_of_rows = lead - (lead < 0xE0 ? 0x81 : 0xC1);
  const int row = kFirstGraphic + 2 * pair_of_rows + cells / (kTrails / 2);
  return static_cast<uint16_t>(row << 8 | (kFirstGraphic + cells % (kTrails / 2)));
}

// A unit takes six bytes at most: kShiftIn, a sequence and a pair.
class Iso2022JpEncoder final : public CharsetEncoder {
 public:
  explicit Iso2022JpEncoder(uint32_t code_page)
      : page_(*FindCodePage(kTablePage)), code_page_(code_page) {}

  char* Encode(std::u16string_view wide, char* bytes) override {
    for (const char16_t unit : wide) bytes = PutUnit(unit, bytes);
    return bytes;
  }

  char* Finish(char* bytes) override { return Select(Set::kAscii, bytes); }

 private:
  char* PutUnit(char16_t unit, char* bytes) {
    const uint16_t code = unit < 0x80 ? unit : page_.EncodeUnit(unit);
    if (code < 0x80) return PutAscii(code, bytes);
    if (IsKanaByte(code)) return PutKana(static_cast<uint8_t>(code), bytes);
    const uint16_t row = FindRow(code);
    if (row != CodePage::kNone) return PutPair(row, bytes);
    used_default_ = true;
    return PutAscii(page_.default_char, bytes);
  }

  char* PutAscii(uint16_t code, char* bytes) {
    bytes = Select(Set::kAscii, bytes);
    *bytes++ = static_cast<char>(code);
    return bytes;
  }

  char* PutPair(uint16_t row, char* bytes) {
    bytes = Select(Set::kPairs, bytes);
    *bytes++ = static_cast<char>(row >> 8);
    *bytes++ = static_cast<char>(row & 0xFF);
    return bytes;
  }

  char* PutKana(uint8_t byte, char* bytes) {
    if (code_page_ == 50220) {
      return PutPair(FindRow(page_.EncodeUnit(kFullWidthKana[byte - kFirstKanaByte])), bytes);
    }
    if (code_page_ == 50221) {
      bytes = Select(Set::kKana, bytes);
    } else if (!shifted_out_) {
      *bytes++ = kShiftOut;
      shifted_out_ = true;
    }
    *bytes++ = static_cast<char>(byte ^ kHighBit);
    return bytes;
  }

  char* Select(Set set, char* bytes) {
    if (shifted_out_) *bytes++ = kShiftIn;
    shifted_out_ = false;
    if (set == set_) return bytes;
    set_ = set;
    if (set == Set::kKana) return PutBytes("\x1B(I", bytes);
    return PutBytes(set == Set::kPairs ? "\x1B$B" : "\x1B(B", bytes);
  }

  const CodePage& page_;
  const uint32_t code_page_;
  Set set_ = Set::kAscii;
  bool shifted_out_ = false;  // into kana, over the set
};

}  // namespace

std::unique_ptr<CharsetDecoder> MakeIso2022JpDecoder() {
  return std::make_unique<Iso2022JpDecoder>();
}

std::unique_ptr<CharsetEncoder> MakeIso2022JpEncoder(uint32_t code_page) {
  return std::make_unique<Iso2022JpEncoder>(code_page);
}

}  // namespace mimora

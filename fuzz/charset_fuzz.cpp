// Copyright (c) 2026 the mimora developers.
//
// Any bytes in any code page: coders keep to their room, pieces do not show, and what has a place
// in a page comes back.
#include <vector>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"
#include "codec/charset/conversion.h"
#include "codec/charset_table.h"
#include "fuzz.h"

namespace mimora::fuzz {
namespace {

std::vector<uint32_t> AllPages() {
  std::vector<uint32_t> pages = {
      kUtf8Page, kUtf7Page, kUtf16Page, kUtf16BigEndianPage, 50220, 50221, 50222, 50225, 52936};
  for (size_t i = 0; i < kCodePageCount; ++i) pages.push_back(kCodePages[i].number);
  return pages;
}

struct Decoded {
  std::u16string wide;
  bool invalid;
};

struct Encoded {
  std::string bytes;
  bool used_default;
};

// Each piece gets just the room that it may need.
template <typename Unit, typename Step>
void Append(size_t room, std::basic_string<Unit>& text, Step step) {
  const std::unique_ptr<Unit[]> block(new Unit[room]);
  const Unit* const end = step(block.get());
  FUZZ_CHECK(end >= block.get() && end <= block.get() + room);
  text.append(block.get(), static_cast<size_t>(end - block.get()));
}

Decoded Decode(uint32_t page, std::string_view bytes, const Cuts& cuts) {
  const auto decoder = MakeDecoder(page);
  Decoded decoded;
  InPieces(bytes, cuts, [&](std::string_view piece) {
    Append(DecodedRoom(piece.size()), decoded.wide,
           [&](char16_t* room) { return decoder->Decode(piece, room); });
  });
  Append(DecodedRoom(0), decoded.wide, [&](char16_t* room) { return decoder->Finish(room); });
  decoded.invalid = decoder->FoundInvalid();
  return decoded;
}

Encoded Encode(uint32_t page, std::u16string_view wide, Cuts cuts) {
  const auto encoder = MakeEncoder(page, {.best_fit = false});
  Encoded encoded;
  while (!wide.empty()) {
    const std::u16string_view piece = wide.substr(0, cuts.Next(wide.size()));
    Append(EncodedRoom(piece.size()), encoded.bytes,
           [&](char* room) { return encoder->Encode(piece, room); });
    wide.remove_prefix(piece.size());
  }
  Append(EncodedRoom(0), encoded.bytes, [&](char* room) { return encoder->Finish(room); });
  encoded.used_default = encoder->UsedDefault();
  return encoded;
}

void CheckCoders(uint32_t page, std::string_view bytes, const Cuts& cuts) {
  const Cuts whole(1, bytes.size() + 1);
  const Decoded decoded = Decode(page, bytes, whole);
  const Decoded in_pieces = Decode(page, bytes, cuts);
  FUZZ_CHECK(in_pieces.wide == decoded.wide && in_pieces.invalid == decoded.invalid);
  const Encoded encoded = Encode(page, decoded.wide, Cuts(1, decoded.wide.size() + 1));
  const Encoded again = Encode(page, decoded.wide, cuts);
  FUZZ_CHECK(again.bytes == encoded.bytes && again.used_default == encoded.used_default);
  // This page writes narrow kana wide.
  if (page == 50220) return;
  // Controls that shift may stand in a text alone, and do shift when they are read again.
  const bool shifts = decoded.wide.find_first_of(u"\x0E\x0F\x1B") != std::u16string::npos;
  if (decoded.invalid || encoded.used_default || shifts) return;
  const Decoded back = Decode(page, encoded.bytes, cuts);
  FUZZ_CHECK(!back.invalid);
  // A letter and its nukta are one character in Unicode, or two, and written alike in these pages.
  const bool indian = page >= 57002 && page <= 57011;
  FUZZ_CHECK(indian ? Encode(page, back.wide, cuts).bytes == encoded.bytes
                    : back.wide == decoded.wide);
}

// Asks for the size, then converts into just so much room, and into less.
template <typename Unit, typename Convert>
std::basic_string<Unit> Converted(Convert convert) {
  const int32_t size = convert(nullptr, 0);
  FUZZ_CHECK(size >= 0);
  if (size == 0) return {};
  std::vector<Unit> room(static_cast<size_t>(size));
  FUZZ_CHECK(convert(room.data(), size) == size);
  std::basic_string<Unit> text(room.begin(), room.end());
  for (const int32_t less : {size - 1, size / 2}) {
    if (less == 0) continue;
    room = std::vector<Unit>(static_cast<size_t>(less));
    FUZZ_CHECK(convert(room.data(), less) == 0);
    FUZZ_CHECK(LastConversionError() == kBufferTooSmall);
  }
  return text;
}

void CheckConversion(uint32_t page, std::string_view bytes, uint32_t flags) {
  const auto length = static_cast<int32_t>(bytes.size());
  if (length == 0) return;
  const auto wide = Converted<char16_t>([&](char16_t* room, int32_t size) {
    return MultiByteToWide(page, flags & 0xF, bytes.data(), length, room, size);
  });
  if (wide.empty()) return;
  Converted<char>([&](char* room, int32_t size) {
    return WideToMultiByte(page, flags & 0x6F0, wide.data(), static_cast<int32_t>(wide.size()),
                           room, size, nullptr, nullptr);
  });
}

}  // namespace

void CheckInput(Input input) {
  static const std::vector<uint32_t> kPages = AllPages();
  const uint32_t page = input.Choose(kPages);
  const Cuts cuts(input.Byte(), input.Flag() ? 3 : 40);
  const uint32_t flags = input.Number();
  CheckCoders(page, input.Rest(), cuts);
  // Most sets of flags are refused.
  CheckConversion(page, input.Rest(), 0);
  CheckConversion(page, input.Rest(), flags);
}

}  // namespace mimora::fuzz

// Copyright (c) 2026 the mimora developers.
#include "codec/charset/conversion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "codec/charset/charset_coder.h"
#include "codec/charset/code_page.h"
#include "codec/charset/composition.h"
#include "codec/charset_table.h"

namespace mimora {
namespace {

using namespace std::string_view_literals;

constexpr uint32_t kTableDecodeFlags =
    kPrecomposed | kDecompose | kGlyphsForControls | kFailOnInvalid;
constexpr uint32_t kTableEncodeFlags =
    kDiscardMarks | kSeparateMarks | kDefaultForMarks | kCompose | kNoSimilar;

// A piece of the source, in units. With what becomes of it, it fits on any stack.
constexpr size_t kPiece = 512;

thread_local ConversionError last_error = kConverted;

int32_t Fail(ConversionError error) {
  last_error = error;
  return 0;
}

int32_t Succeed(int64_t count) {
  if (count > INT32_MAX) return Fail(kInvalidParameter);
  last_error = kConverted;
  return static_cast<int32_t>(count);
}

// The page if it is one of single bytes or pairs.
const CodePage* FindTablePage(uint32_t code_page) {
  const CodePage* page = FindCodePage(code_page);
  if (page == nullptr) return nullptr;
  const bool is_table = page->kind == CodePageKind::kSingle || page->kind == CodePageKind::kDouble;
  return is_table ? page : nullptr;
}

template <typename Unit>
std::optional<std::basic_string_view<Unit>> SourceOf(const Unit* units, int32_t length) {
  if (units == nullptr || length == 0) return std::nullopt;
  if (length > 0) return std::basic_string_view<Unit>(units, static_cast<size_t>(length));
  return std::basic_string_view<Unit>(units, std::char_traits<Unit>::length(units) + 1);
}

// The caller's memory, or a count of what it would have to hold.
template <typename Unit>
class Target {
 public:
  Target(Unit* units, int32_t room) : units_(units), room_(room) {}

  bool IsValidFor(const void* source) const {
    return room_ == 0 || (room_ > 0 && units_ != nullptr && units_ != source);
  }
  bool Counts() const { return room_ == 0; }
  int64_t Count() const { return count_; }
  size_t Left() const { return static_cast<size_t>(room_ - count_); }
  bool HasRoomFor(size_t count) const { return Counts() || count <= Left(); }

  void Write(std::basic_string_view<Unit> units) {
    if (!Counts()) units.copy(units_ + count_, units.size());
    count_ += static_cast<int64_t>(units.size());
  }

 private:
  Unit* const units_;
  const int32_t room_;
  int64_t count_ = 0;
};

template <typename Unit>
std::basic_string_view<Unit> TakePiece(std::basic_string_view<Unit>& source, size_t size) {
  const auto piece = source.substr(0, size);
  source.remove_prefix(piece.size());
  return piece;
}

// ---- Bytes to UTF-16 ----------------------------------------------------------------------------

// What the characters below the blank look like, and the pages of the screens where they do.
constexpr std::u16string_view kGlyphs = u"\0☺☻♥♦♣♠•◘○◙♂♀♪♫☼►◄↕‼¶§▬↨↑↓→←∟↔▲▼"sv;
constexpr char16_t kDelete = 0x7F;
constexpr char16_t kGlyphOfDelete = u'⌂';
constexpr uint32_t kPagesWithGlyphs[] = {437, 720, 737, 775, 850, 852,
                                         857, 861, 862, 866, 869, 874};

void UseGlyphs(char16_t* p, const char16_t* end) {
  for (; p < end; ++p) {
    if (*p < kGlyphs.size()) *p = kGlyphs[*p];
    if (*p == kDelete) *p = kGlyphOfDelete;
  }
}

class WideConversion {
 public:
  WideConversion(CharsetDecoder& decoder, uint32_t code_page, uint32_t flags,
                 Target<char16_t> target)
      : decoder_(decoder),
        shows_glyphs_((flags & kGlyphsForControls) != 0 &&
                      std::ranges::find(kPagesWithGlyphs, code_page) != std::end(kPagesWithGlyphs)),
        decomposes_((flags & kDecompose) != 0),
        target_(target) {}

  // False when the target is full.
  bool Convert(std::string_view source) {
    while (!source.empty()) {
      if (!Write(decoder_.Decode(TakePiece(source, kPiece), piece_.data()))) return false;
    }
    return Write(decoder_.Finish(piece_.data()));
  }

  int64_t Count() const { return target_.Count(); }

 private:
  bool Write(char16_t* end) {
    if (shows_glyphs_) UseGlyphs(piece_.data(), end);
    const std::u16string_view wide(piece_.data(), static_cast<size_t>(end - piece_.data()));
    return WriteWhatFits(decomposes_ ? TakeApart(wide) : wide);
  }

  std::u16string_view TakeApart(std::u16string_view wide) {
    char16_t* end = apart_.data();
    for (const char16_t unit : wide) end = Decompose(unit, end);
    return {apart_.data(), static_cast<size_t>(end - apart_.data())};
  }

  bool WriteWhatFits(std::u16string_view wide) {
    if (target_.HasRoomFor(wide.size())) {
      target_.Write(wide);
      return true;
    }
    size_t fits = target_.Left();
    const bool cuts_pair =
        (wide[fits] & 0xFC00) == 0xDC00 && fits > 0 && (wide[fits - 1] & 0xFC00) == 0xD800;
    target_.Write(wide.substr(0, cuts_pair ? fits - 1 : fits));
    return false;
  }

  CharsetDecoder& decoder_;
  const bool shows_glyphs_;
  const bool decomposes_;
  Target<char16_t> target_;
  std::array<char16_t, DecodedRoom(kPiece)> piece_;
  std::array<char16_t, kLongestDecomposition * DecodedRoom(kPiece)> apart_;
};

bool AllowsDecodeFlags(uint32_t code_page, uint32_t flags) {
  if (code_page == kUtf8Page) return (flags & ~kFailOnInvalid) == 0;
  if (FindTablePage(code_page) == nullptr) return flags == 0;
  constexpr uint32_t kBoth = kPrecomposed | kDecompose;
  return (flags & ~kTableDecodeFlags) == 0 && (flags & kBoth) != kBoth;
}

// ---- UTF-16 to bytes ----------------------------------------------------------------------------

// Hands out the source, letters and marks composed as the flags say.
class Composer {
 public:
  Composer(const CodePage* page, uint32_t flags, std::u16string_view source)
      : page_(page), flags_(flags), source_(source) {}

  bool AtEnd() const { return source_.empty(); }

  std::u16string_view Take(size_t size) {
    if ((flags_ & kCompose) == 0) return TakePiece(source_, size);
    size_t count = 0;
    while (count < size && !source_.empty()) composed_[count++] = TakeComposed();
    return {composed_.data(), count};
  }

 private:
  // No page has it.
  static constexpr char16_t kUnencodable = 0xD800;

  char16_t TakeComposed() {
    char16_t unit = TakePiece(source_, 1).front();
    while (!source_.empty() && IsMark(source_.front())) {
      const char16_t composed = Compose(unit, source_.front());
      if (composed != 0 && Has(composed)) {
        unit = composed;
      } else if ((flags_ & kDefaultForMarks) != 0) {
        unit = kUnencodable;
      } else if ((flags_ & kDiscardMarks) == 0) {
        break;
      }
      source_.remove_prefix(1);
    }
    return unit;
  }

  bool Has(char16_t unit) const {
    const uint16_t code = page_->EncodeUnit(unit);
    return code != CodePage::kNone &&
           ((flags_ & kNoSimilar) == 0 || page_->DecodeCode(code) == unit);
  }

  const CodePage* const page_;
  const uint32_t flags_;
  std::u16string_view source_;
  std::array<char16_t, kPiece> composed_;
};

// As many units as can be encoded without asking whether they fit, but one at least.
size_t SafePiece(const Target<char>& target) {
  if (target.Counts()) return kPiece;
  size_t safe = 1;
  while (safe < kPiece && EncodedRoom(2 * safe) <= target.Left()) safe *= 2;
  return safe;
}

// False when the target is full.
bool EncodeInto(Target<char>& target, CharsetEncoder& encoder, const CodePage* page, uint32_t flags,
                std::u16string_view wide) {
  Composer source(page, flags, wide);
  std::array<char, EncodedRoom(kPiece)> piece;
  bool at_end = false;
  while (!at_end) {
    at_end = source.AtEnd();
    char* const end = at_end ? encoder.Finish(piece.data())
                             : encoder.Encode(source.Take(SafePiece(target)), piece.data());
    const std::string_view bytes(piece.data(), static_cast<size_t>(end - piece.data()));
    if (!target.HasRoomFor(bytes.size())) return false;
    target.Write(bytes);
  }
  return true;
}

bool AllowsEncodeFlags(uint32_t code_page, uint32_t flags) {
  if (code_page == kUtf8Page) return (flags & ~kFailOnLoneSurrogate) == 0;
  return (flags & ~(FindTablePage(code_page) != nullptr ? kTableEncodeFlags : 0)) == 0;
}

// One byte, or two where the first leads a pair.
uint16_t ParseDefaultChar(const CodePage& page, const char* text) {
  const auto first = static_cast<uint8_t>(text[0]);
  if (page.DecodeByte(first) != CodePage::kLead || text[1] == '\0') return first;
  return static_cast<uint16_t>(first << 8 | static_cast<uint8_t>(text[1]));
}

EncodeOptions OptionsOf(const CodePage* page, uint32_t flags, const char* default_char) {
  EncodeOptions options;
  options.best_fit = (flags & kNoSimilar) == 0;
  if (page != nullptr && default_char != nullptr)
    options.default_char = ParseDefaultChar(*page, default_char);
  return options;
}

}  // namespace

int32_t MultiByteToWide(uint32_t code_page, uint32_t flags, const char* bytes, int32_t length,
                        char16_t* wide, int32_t room) {
  const auto source = SourceOf(bytes, length);
  const Target<char16_t> target(wide, room);
  if (!source || !target.IsValidFor(bytes) || IsUtf16Page(code_page))
    return Fail(kInvalidParameter);
  const auto decoder = MakeDecoder(code_page);
  if (decoder == nullptr) return Fail(kInvalidParameter);
  if (!AllowsDecodeFlags(code_page, flags)) return Fail(kInvalidFlags);
  if ((flags & kFailOnInvalid) != 0) {
    // Before a target that is too small is noticed.
    WideConversion(*decoder, code_page, 0, {nullptr, 0}).Convert(*source);
    if (decoder->FoundInvalid()) return Fail(kNoTranslation);
  }
  WideConversion conversion(*decoder, code_page, flags, target);
  if (!conversion.Convert(*source)) return Fail(kBufferTooSmall);
  return Succeed(conversion.Count());
}

int32_t WideToMultiByte(uint32_t code_page, uint32_t flags, const char16_t* wide, int32_t length,
                        char* bytes, int32_t room, const char* default_char,
                        int32_t* used_default) {
  const auto source = SourceOf(wide, length);
  Target<char> target(bytes, room);
  if (!source || !target.IsValidFor(wide) || IsUtf16Page(code_page)) return Fail(kInvalidParameter);
  const CodePage* page = FindTablePage(code_page);
  const auto encoder = MakeEncoder(code_page, OptionsOf(page, flags, default_char));
  if (encoder == nullptr) return Fail(kInvalidParameter);
  if (page == nullptr && (default_char != nullptr || used_default != nullptr))
    return Fail(kInvalidParameter);
  if (!AllowsEncodeFlags(code_page, flags)) return Fail(kInvalidFlags);
  if ((flags & kFailOnLoneSurrogate) != 0) {
    Target<char> nothing(nullptr, 0);
    EncodeInto(nothing, *encoder, page, flags, *source);
    if (encoder->UsedDefault()) return Fail(kNoTranslation);
  }
  const bool fits = EncodeInto(target, *encoder, page, flags, *source);
  if (used_default != nullptr) *used_default = encoder->UsedDefault() ? 1 : 0;
  return fits ? Succeed(target.Count()) : Fail(kBufferTooSmall);
}

ConversionError LastConversionError() { return last_error; }

}  // namespace mimora

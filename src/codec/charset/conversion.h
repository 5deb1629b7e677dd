// Copyright (c) 2026 the mimora developers.
//
// Whole texts between a code page and UTF-16, into the caller's memory.
#ifndef MIMORA_CODEC_CHARSET_CONVERSION_H_
#define MIMORA_CODEC_CHARSET_CONVERSION_H_

#include <cstdint>

namespace mimora {

// Flags of MultiByteToWide. Their numbers, like those of the errors, are the callers' as well.
constexpr uint32_t kPrecomposed = 0x1;        // leave letters with marks alone; the default
constexpr uint32_t kDecompose = 0x2;          // take them apart
constexpr uint32_t kGlyphsForControls = 0x4;  // what the screens of DOS show for controls
constexpr uint32_t kFailOnInvalid = 0x8;      // no substitutes, but kNoTranslation

// Flags of WideToMultiByte.
constexpr uint32_t kCompose = 0x200;             // make one character of a letter and its marks
constexpr uint32_t kNoSimilar = 0x400;           // rather the default character than a similar one
constexpr uint32_t kFailOnLoneSurrogate = 0x80;  // no substitutes, but kNoTranslation
// With kCompose, when the page lacks that one character:
constexpr uint32_t kDiscardMarks = 0x10;     // drop the mark
constexpr uint32_t kSeparateMarks = 0x20;    // write both; the default
constexpr uint32_t kDefaultForMarks = 0x40;  // write the default character; goes before the others

enum ConversionError : uint32_t {
  kConverted = 0,
  kInvalidParameter = 87,
  kBufferTooSmall = 122,
  kInvalidFlags = 1004,
  kNoTranslation = 1113,
};

// Both answer how much they wrote or, if ROOM is 0, would write, in units of the target; 0 after an
// error. When the room does not suffice, as many whole characters as fit are written. A negative
// LENGTH is up to and including the terminator. UTF-16 is no code page here.
//
// The pages that are tables take all flags but kFailOnLoneSurrogate. UTF-8 takes kFailOnInvalid and
// kFailOnLoneSurrogate; the pages with escapes, shift codes or letters of several bytes take none.
// Neither takes a default character nor tells of it.

int32_t MultiByteToWide(uint32_t code_page, uint32_t flags, const char* bytes, int32_t length,
                        char16_t* wide, int32_t room);

// DEFAULT_CHAR, a byte or a pair, stands for what the page lacks; null or empty: the page's own.
// *USED_DEFAULT, which may be null, is set to whether it was used.
int32_t WideToMultiByte(uint32_t code_page, uint32_t flags, const char16_t* wide, int32_t length,
                        char* bytes, int32_t room, const char* default_char, int32_t* used_default);

// Why the last conversion of this thread answered 0.
ConversionError LastConversionError();

}  // namespace mimora

#endif  // MIMORA_CODEC_CHARSET_CONVERSION_H_

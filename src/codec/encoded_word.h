// Copyright (c) 2026 the mimora developers.
//
// Header texts beyond ASCII: encoded words (RFC 2047), in both directions.
#ifndef MIMORA_CODEC_ENCODED_WORD_H_
#define MIMORA_CODEC_ENCODED_WORD_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mimora {

// The page of a charset that a header text may be in: not UTF-16, whose zeros would end the text. 0
// for others.
uint32_t PageOfHeaderCharset(std::string_view charset);

// Decodes the encoded words of a header value, wherever they stand, and removes its folding. White
// space between them goes; a character may be split between neighbours. What is not quite an
// encoded word, or of an unknown charset, stays as it is, and so does everything else. Line ends in
// words become blanks. Without a target charset, or with one that is not known, words become UTF-8.
std::string DecodeEncodedWords(std::string_view value, std::string_view target_charset);

// The room that most names of fields need, for a value whose name is not known.
constexpr size_t kUnknownColumn = 20;

// Encodes the words of a header value that need it, so that what is left is ASCII: one, or several
// words of at most 75 characters on lines of their own. COLUMN: how far the field's name and what
// stands behind it have filled the first line.
//
// CHARSET says what the value is in; empty: UTF-8 if it is that, else windows-1250. ENCODING is "B"
// or "Q"; empty: whichever is shorter. A charset that is not known is taken as not given.
std::string EncodeWords(std::string_view value, std::string_view charset, std::string_view encoding,
                        size_t column);

}  // namespace mimora

#endif  // MIMORA_CODEC_ENCODED_WORD_H_

// Copyright (c) 2026 the mimora developers.
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "codec/base64.h"
#include "codec/charset/charset_coder.h"
#include "codec/charset_table.h"
#include "codec/encoded_word.h"
#include "platform/ascii.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {
namespace {

enum class WordEncoding : char { kBase64 = 'B', kQuoted = 'Q' };

constexpr size_t kLongestWord = 75;
constexpr size_t kLongestLine = 76;
// A line with less room than this for the text of a word is not worth beginning one. One character
// always fits, with its escape sequences.
constexpr size_t kLeastText = 24;

// What stands in a word as it is, by its strictest place, a phrase.
constexpr bool IsPlainInWord(char c) {
  return IsDigit(c) || IsLetter(c) || c == '!' || c == '*' || c == '+' || c == '-' || c == '/';
}

size_t QuotedSize(std::string_view bytes) {
  const auto plain = static_cast<size_t>(std::count_if(
      bytes.begin(), bytes.end(), [](char c) { return IsPlainInWord(c) || c == ' '; }));
  return 3 * bytes.size() - 2 * plain;
}

constexpr size_t Base64Size(std::string_view bytes) { return (bytes.size() + 2) / 3 * 4; }

std::string EncodeQuoted(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == ' ') {
      text += '_';
    } else if (IsPlainInWord(c)) {
      text += c;
    } else {
      text.append({'=', kUpperHexDigits[byte >> 4], kUpperHexDigits[byte & 15]});
    }
  }
  return text;
}

std::string EncodeBase64Text(std::string_view bytes) {
  Minstream in(MemorySource{bytes.data(), std::ssize(bytes)});
  Moutstream out{MemorySink{}};
  EncodeBase64(in, out, 0);
  return std::string(out.GetWholeBuffer());
}

std::u16string DecodeAll(std::string_view text, CharsetDecoder& decoder) {
  std::u16string wide(DecodedRoom(text.size()) + DecodedRoom(0), u'\0');
  const char16_t* end = decoder.Finish(decoder.Decode(text, wide.data()));
  wide.resize(static_cast<size_t>(end - wide.data()));
  return wide;
}

std::string EncodeAll(std::u16string_view wide, CharsetEncoder& encoder) {
  std::string bytes(EncodedRoom(wide.size()) + EncodedRoom(0), '\0');
  const char* end = encoder.Finish(encoder.Encode(wide, bytes.data()));
  bytes.resize(static_cast<size_t>(end - bytes.data()));
  return bytes;
}

bool IsAscii(std::u16string_view wide) {
  return std::all_of(wide.begin(), wide.end(), [](char16_t unit) { return unit < 0x80; });
}

constexpr bool IsLineEndUnit(char16_t unit) { return unit == u'\r' || unit == u'\n'; }
constexpr bool IsWhiteUnit(char16_t unit) {
  return unit == u' ' || unit == u'\t' || IsLineEndUnit(unit);
}

// What looks like an encoded word would be decoded with the others.
bool NeedsEncoding(std::u16string_view word) {
  const auto is_plain = [](char16_t unit) { return unit >= u' ' && unit < 0x7F; };
  return !std::all_of(word.begin(), word.end(), is_plain) ||
         word.find(u"=?") != std::u16string_view::npos;
}

// White space and the word behind it.
struct Piece {
  std::u16string_view white;
  std::u16string_view word;
  bool needs_encoding;
};

// The place behind a quoted string; 0 when there is none in front.
size_t SkipQuoted(std::u16string_view text) {
  if (!text.starts_with(u'"')) return 0;
  for (size_t at = 1; at < text.size(); ++at) {
    if (text[at] == u'"') return at + 1;
    if (text[at] == u'\\') ++at;
  }
  return 0;
}

// A quoted string is one word, blanks and all. An address in angle brackets is never part of one.
size_t FindWordEnd(std::u16string_view text) {
  constexpr std::u16string_view kEnds = u" \t<";
  const size_t quoted = SkipQuoted(text);
  return std::min(text.find_first_of(kEnds, std::max<size_t>(quoted, 1)), text.size());
}

Piece TakePiece(std::u16string_view& text) {
  const auto word = std::find_if_not(text.begin(), text.end(), IsWhiteUnit);
  Piece piece{text.substr(0, static_cast<size_t>(word - text.begin())), {}, false};
  text.remove_prefix(piece.white.size());
  if (!text.empty()) piece.word = text.substr(0, FindWordEnd(text));
  piece.needs_encoding = NeedsEncoding(piece.word);
  text.remove_prefix(piece.word.size());
  return piece;
}

// Writes a value piece by piece and keeps its lines short.
class ValueWriter {
 public:
  ValueWriter(CharsetEncoder& encoder, std::string_view charset, WordEncoding encoding,
              size_t column)
      : encoder_(encoder), encoding_(encoding), column_(column) {
    prefix_.append("=?").append(charset).append({'?', static_cast<char>(encoding), '?'});
  }

  void Write(const Piece& piece) {
    if (piece.needs_encoding) return WriteEncoded(piece);
    // An encoded word stands alone, also in front of an address.
    const bool glued = piece.white.empty() && !piece.word.empty() && !value_.empty();
    WriteWhite(glued && after_encoded_ ? u" " : piece.white, piece.word.size());
    after_encoded_ = false;
    Put(Narrow(piece.word));
  }

  std::string Value() && { return std::move(value_); }

 private:
  static std::string Narrow(std::u16string_view wide) { return {wide.begin(), wide.end()}; }

  size_t Overhead() const { return prefix_.size() + 2; }

  void WriteEncoded(const Piece& piece) {
    WriteWhite(piece.white, Overhead() + kLeastText);
    for (std::u16string_view rest = piece.word; !rest.empty();) {
      const size_t used = std::min(column_, kLongestLine);
      const size_t room =
          std::max(std::min(kLongestWord, kLongestLine - used), Overhead() + kLeastText);
      const std::string bytes = TakeBytes(rest, room - Overhead());
      const bool quoted = encoding_ == WordEncoding::kQuoted;
      Put(prefix_ + (quoted ? EncodeQuoted(bytes) : EncodeBase64Text(bytes)) + "?=");
      if (!rest.empty()) Fold(" ");
    }
    after_encoded_ = true;
  }

  void Put(std::string_view text) {
    value_ += text;
    column_ += text.size();
  }

  void Fold(std::string_view white) {
    value_.append("\r\n").append(white);
    column_ = white.size();
  }

  // Begins a new line when the NEEDED characters behind would not fit.
  void WriteWhite(std::u16string_view white, size_t needed) {
    const std::string text = Narrow(white);
    const bool fits = needed == 0 || column_ + text.size() + needed <= kLongestLine;
    if (text.empty() || fits) {
      Put(text);
    } else {
      Fold(text);
    }
  }

  // As many characters as fit into ROOM when they are encoded; at least one.
  std::string TakeBytes(std::u16string_view& text, size_t room) {
    std::string bytes;
    size_t taken = 0;
    while (taken < text.size()) {
      const bool pair = (text[taken] & 0xFC00) == 0xD800 && taken + 1 < text.size();
      const size_t next = taken + (pair ? 2 : 1);
      std::string longer = EncodeAll(text.substr(0, next), encoder_);
      const size_t size =
          encoding_ == WordEncoding::kQuoted ? QuotedSize(longer) : Base64Size(longer);
      if (taken > 0 && size > room) break;
      bytes = std::move(longer);
      taken = next;
    }
    text.remove_prefix(taken);
    return bytes;
  }

  CharsetEncoder& encoder_;
  WordEncoding encoding_;
  std::string prefix_;
  size_t column_;
  bool after_encoded_ = false;
  std::string value_;
};

// Joins neighbours that need encoding, and one that does with all that stands directly in front of
// it, at the end of a list.
void JoinLast(std::vector<Piece>& pieces) {
  while (pieces.size() > 1 && pieces.back().needs_encoding) {
    const Piece last = pieces.back();
    Piece& before = pieces[pieces.size() - 2];
    if (!before.needs_encoding && !last.white.empty()) break;
    before.word = {before.word.data(), before.word.size() + last.white.size() + last.word.size()};
    before.needs_encoding = true;
    pieces.pop_back();
  }
}

std::vector<Piece> SplitValue(std::u16string_view text) {
  std::vector<Piece> pieces;
  while (!text.empty()) {
    pieces.push_back(TakePiece(text));
    JoinLast(pieces);
  }
  return pieces;
}

WordEncoding ShorterEncoding(const std::vector<Piece>& pieces, CharsetEncoder& encoder) {
  size_t quoted = 0;
  size_t base64 = 0;
  for (const Piece& piece : pieces) {
    if (!piece.needs_encoding) continue;
    const std::string bytes = EncodeAll(piece.word, encoder);
    quoted += QuotedSize(bytes);
    base64 += Base64Size(bytes);
  }
  return quoted <= base64 ? WordEncoding::kQuoted : WordEncoding::kBase64;
}

// What a value is in, and what it says.
struct HeaderText {
  std::string_view charset;
  uint32_t page;
  std::u16string wide;
  bool invalid;
};

// The charset is written by the name that the page has, never by the one given: that may come out
// of a message.
HeaderText ReadHeaderText(std::string_view value, std::string_view charset) {
  constexpr uint32_t kCentralEuropean = 1250;
  const auto read = [value](uint32_t page) {
    const auto decoder = MakeDecoder(page);
    return HeaderText{CharsetOfPage(page), page, DecodeAll(value, *decoder),
                      decoder->FoundInvalid()};
  };
  if (const uint32_t page = PageOfHeaderCharset(charset)) return read(page);
  HeaderText text = read(kUtf8Page);
  return text.invalid ? read(kCentralEuropean) : text;
}

// Folding is done anew. A line end that no blank follows stands for one.
std::u16string WithoutLineEnds(std::u16string_view text) {
  std::u16string line;
  for (size_t at = 0; at < text.size(); ++at) {
    if (!IsLineEndUnit(text[at])) {
      line += text[at];
    } else if (at + 1 == text.size() || !IsWhiteUnit(text[at + 1])) {
      line += u' ';
    }
  }
  return line;
}

}  // namespace

std::string EncodeWords(std::string_view value, std::string_view charset, std::string_view encoding,
                        size_t column) {
  const auto is_ascii = [](char c) { return static_cast<signed char>(c) >= 0; };
  const HeaderText text = ReadHeaderText(value, charset);
  const bool plain = std::all_of(value.begin(), value.end(), is_ascii) && IsAscii(text.wide) &&
                     text.wide.size() == value.size();
  if (plain) return std::string(value);
  const std::u16string line = WithoutLineEnds(text.wide);
  const std::vector<Piece> pieces = SplitValue(line);
  const auto encoder = MakeEncoder(text.page);
  WordEncoding chosen = ShorterEncoding(pieces, *encoder);
  if (EqualIgnoringCase(encoding, "B")) chosen = WordEncoding::kBase64;
  if (EqualIgnoringCase(encoding, "Q")) chosen = WordEncoding::kQuoted;
  ValueWriter writer(*encoder, text.charset, chosen, column);
  for (const Piece& piece : pieces) writer.Write(piece);
  return std::move(writer).Value();
}

}  // namespace mimora

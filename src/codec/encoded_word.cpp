// Copyright (c) 2026 the mimora developers.
#include "codec/encoded_word.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "codec/base64.h"
#include "codec/charset/charset_coder.h"
#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "platform/ascii.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {
namespace {

enum class WordEncoding : char { kBase64 = 'B', kQuoted = 'Q' };

// ---- Decoding -----------------------------------------------------------------------------------

// "=?charset?B?text?=", where a language may stand behind the charset ("us-ascii*en").
struct EncodedWord {
  std::string_view charset;
  WordEncoding encoding;
  std::string_view text;
  size_t end;
};

bool IsCharsetCharacter(char c) {
  constexpr std::string_view kOthers = "()<>@,;:\"/[]?.=";
  return !IsControl(c) && c != ' ' && (kOthers.find(c) == std::string_view::npos || c == ':');
}

// Where the text that begins at AT ends: in front of "?=", npos when another word begins before.
// Padding in front of that end looks like the beginning of a word.
size_t FindTextEnd(std::string_view value, size_t at) {
  for (size_t mark = value.find('?', at); mark != std::string_view::npos;
       mark = value.find('?', mark + 1)) {
    if (value.substr(mark + 1).starts_with('=')) return mark;
    if (mark > at && value[mark - 1] == '=') break;
  }
  return std::string_view::npos;
}

// The word that begins with the "=?" at AT, if it is one that can be decoded.
std::optional<EncodedWord> ParseWord(std::string_view value, size_t at) {
  const size_t charset = at + 2;
  size_t mark = charset;
  while (mark < value.size() && IsCharsetCharacter(value[mark])) ++mark;
  if (value.size() - mark < 3 || value[mark] != '?' || value[mark + 2] != '?') return std::nullopt;
  const char letter = ToUpper(value[mark + 1]);
  if (letter != 'B' && letter != 'Q') return std::nullopt;
  const size_t text = mark + 3;
  const size_t end = FindTextEnd(value, text);
  if (end == std::string_view::npos) return std::nullopt;
  std::string_view name = value.substr(charset, mark - charset);
  name = name.substr(0, name.find('*'));
  if (PageOfCharset(name) == 0) return std::nullopt;
  return EncodedWord{name, WordEncoding{letter}, value.substr(text, end - text), end + 2};
}

void DecodeQuoted(std::string_view text, std::string& bytes) {
  for (size_t at = 0; at < text.size(); ++at) {
    const int high = text[at] == '=' && at + 2 < text.size() ? HexValue(text[at + 1]) : -1;
    const int low = high >= 0 ? HexValue(text[at + 2]) : -1;
    if (low >= 0) {
      bytes += static_cast<char>(16 * high + low);
      at += 2;
    } else {
      bytes += text[at] == '_' ? ' ' : text[at];
    }
  }
}

// Neighbouring words of one charset and encoding: one text in pieces.
class WordRun {
 public:
  explicit WordRun(uint32_t target) : target_(target) {}

  bool Empty() const { return texts_.empty(); }

  bool Continues(const EncodedWord& word) const {
    return !Empty() && word.encoding == encoding_ && EqualIgnoringCase(word.charset, charset_);
  }

  void Add(const EncodedWord& word) {
    charset_ = word.charset;
    encoding_ = word.encoding;
    texts_.append(word.text).append("\n");
  }

  // Appends what the words say, and is empty.
  void Flush(std::string& value) {
    if (Empty()) return;
    value += TranslateText(Bytes(), PageOfCharset(charset_), target_);
    texts_.clear();
  }

 private:
  std::string Bytes() const {
    if (encoding_ == WordEncoding::kBase64) {
      // Words that were cut inside a group of four go on in the next one, as lines do.
      Moutstream out{MemorySink{}};
      Base64Decoder decoder(out);
      decoder.Feed(texts_);
      decoder.Finish();
      return std::string(out.GetBuffer());
    }
    std::string bytes;
    for (std::string_view rest = texts_; !rest.empty();) {
      const size_t end = rest.find('\n');
      DecodeQuoted(rest.substr(0, end), bytes);
      rest.remove_prefix(end + 1);
    }
    return bytes;
  }

  uint32_t target_;
  std::string_view charset_;
  WordEncoding encoding_ = WordEncoding::kQuoted;
  std::string texts_;  // each with a line feed behind it
};

std::string Unfold(std::string_view text) {
  std::string line(text);
  std::erase_if(line, IsLineEnd);
  return line;
}

bool IsWhite(std::string_view text) { return std::all_of(text.begin(), text.end(), IsBlank); }

// ---- Encoding -----------------------------------------------------------------------------------

constexpr size_t kLongestWord = 75;
constexpr size_t kLongestLine = 76;
// A line with less room than this for the text of a word is not worth beginning one.
constexpr size_t kLeastText = 16;

// What stands in a word as it is, by its strictest place, a phrase.
constexpr bool IsPlainInWord(char c) {
  return IsDigit(c) || (ToUpper(c) >= 'A' && ToUpper(c) <= 'Z') || c == '!' || c == '*' ||
         c == '+' || c == '-' || c == '/';
}

size_t QuotedSize(std::string_view bytes) {
  const auto plain = static_cast<size_t>(std::count_if(
      bytes.begin(), bytes.end(), [](char c) { return IsPlainInWord(c) || c == ' '; }));
  return 3 * bytes.size() - 2 * plain;
}

constexpr size_t Base64Size(std::string_view bytes) { return (bytes.size() + 2) / 3 * 4; }

std::string EncodeQuoted(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == ' ') {
      text += '_';
    } else if (IsPlainInWord(c)) {
      text += c;
    } else {
      text.append({'=', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return text;
}

std::string EncodeBase64Text(std::string_view bytes) {
  Minstream in(MemorySource{bytes.data(), std::ssize(bytes)});
  Moutstream out{MemorySink{}};
  EncodeBase64(in, out, 0);
  return std::string(out.GetBuffer());
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

bool IsWhiteUnit(char16_t unit) { return unit < 0x80 && IsSpace(static_cast<char>(unit)); }

// White space and the word behind it; a quoted string is one word, blanks and all.
struct Piece {
  std::u16string_view white;
  std::u16string_view word;
};

size_t FindWordEnd(std::u16string_view text) {
  if (text.starts_with(u'"')) {
    const size_t quote = text.find(u'"', 1);
    if (quote != std::u16string_view::npos)
      text = text.substr(0, text.find_first_of(u" \t\r\n", quote));
    if (quote != std::u16string_view::npos) return text.size();
  }
  return std::min(text.find_first_of(u" \t\r\n"), text.size());
}

Piece TakePiece(std::u16string_view& text) {
  const auto word = std::find_if_not(text.begin(), text.end(), IsWhiteUnit);
  Piece piece{text.substr(0, static_cast<size_t>(word - text.begin())), {}};
  text.remove_prefix(piece.white.size());
  piece.word = text.substr(0, FindWordEnd(text));
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

  void WriteAscii(const Piece& piece) {
    WriteWhite(piece.white, piece.word.size());
    Put(Narrow(piece.word));
  }

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
  }

  std::string Value() && { return std::move(value_); }

 private:
  static std::string Narrow(std::u16string_view wide) { return {wide.begin(), wide.end()}; }

  size_t Overhead() const { return prefix_.size() + 2; }

  void Put(std::string_view text) {
    value_ += text;
    column_ += text.size();
  }

  void Fold(std::string_view white) {
    value_.append("\r\n").append(white);
    column_ = white.size();
  }

  // Begins a new line when NEEDED characters more would not fit.
  void WriteWhite(std::u16string_view white, size_t needed) {
    const std::string text = Narrow(white);
    const size_t last_line = text.rfind('\n');
    if (last_line != std::string::npos) {
      value_ += text;
      column_ = text.size() - last_line - 1;
    } else if (!text.empty() && column_ + text.size() + needed > kLongestLine) {
      Fold(text);
    } else {
      Put(text);
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
  std::string value_;
};

// The pieces of a value, those that need encoding and are neighbours joined.
std::vector<Piece> SplitValue(std::u16string_view text) {
  std::vector<Piece> pieces;
  while (!text.empty()) {
    const Piece piece = TakePiece(text);
    if (!pieces.empty() && !IsAscii(piece.word) && !IsAscii(pieces.back().word)) {
      std::u16string_view& word = pieces.back().word;
      word = {word.data(), word.size() + piece.white.size() + piece.word.size()};
    } else {
      pieces.push_back(piece);
    }
  }
  return pieces;
}

WordEncoding ShorterEncoding(const std::vector<Piece>& pieces, CharsetEncoder& encoder) {
  size_t quoted = 0;
  size_t base64 = 0;
  for (const Piece& piece : pieces) {
    if (IsAscii(piece.word)) continue;
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
};

HeaderText ReadHeaderText(std::string_view value, std::string_view charset) {
  if (const uint32_t page = PageOfHeaderCharset(charset)) {
    return {charset, page, DecodeAll(value, *MakeDecoder(page))};
  }
  const auto utf8 = MakeDecoder(kUtf8Page);
  std::u16string wide = DecodeAll(value, *utf8);
  if (!utf8->FoundInvalid()) return {"utf-8", kUtf8Page, std::move(wide)};
  constexpr uint32_t kCentralEuropean = 1250;
  return {"windows-1250", kCentralEuropean, DecodeAll(value, *MakeDecoder(kCentralEuropean))};
}

}  // namespace

uint32_t PageOfHeaderCharset(std::string_view charset) {
  const uint32_t page = PageOfCharset(charset);
  return page == kUtf16Page || page == kUtf16BigEndianPage ? 0 : page;
}

std::string DecodeEncodedWords(std::string_view value, std::string_view target_charset) {
  const uint32_t target = PageOfHeaderCharset(target_charset);
  const std::string text = Unfold(value);
  const std::string_view line = text;
  std::string decoded;
  WordRun run(target != 0 ? target : kUtf8Page);
  size_t done = 0;
  for (size_t at = line.find("=?"); at != std::string_view::npos;) {
    const auto word = ParseWord(line, at);
    if (!word) {
      at = line.find("=?", at + 1);
      continue;
    }
    const std::string_view between = line.substr(done, at - done);
    if (!run.Continues(*word) || !IsWhite(between)) {
      const bool neighbours = !run.Empty() && IsWhite(between);
      run.Flush(decoded);
      if (!neighbours) decoded += between;
    }
    run.Add(*word);
    done = word->end;
    at = line.find("=?", done);
  }
  run.Flush(decoded);
  decoded += line.substr(done);
  // A zero would end the text for a caller in C.
  std::erase(decoded, '\0');
  return decoded;
}

std::string EncodeWords(std::string_view value, std::string_view charset, std::string_view encoding,
                        size_t column) {
  const HeaderText text = ReadHeaderText(value, charset);
  const bool plain = text.wide.size() == value.size() && IsAscii(text.wide);
  if (plain) return std::string(value);
  const std::vector<Piece> pieces = SplitValue(text.wide);
  const auto encoder = MakeEncoder(text.page);
  WordEncoding chosen = ShorterEncoding(pieces, *encoder);
  if (EqualIgnoringCase(encoding, "B")) chosen = WordEncoding::kBase64;
  if (EqualIgnoringCase(encoding, "Q")) chosen = WordEncoding::kQuoted;
  ValueWriter writer(*encoder, text.charset, chosen, column);
  for (const Piece& piece : pieces) {
    IsAscii(piece.word) ? writer.WriteAscii(piece) : writer.WriteEncoded(piece);
  }
  return std::move(writer).Value();
}

}  // namespace mimora

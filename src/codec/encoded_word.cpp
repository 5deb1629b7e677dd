// Copyright (c) 2026 the mimora developers.
#include "codec/encoded_word.h"

#include <algorithm>
#include <optional>

#include "codec/base64.h"
#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "platform/ascii.h"
#include "stream/moutstream.h"

namespace mimora {
namespace {

enum class WordEncoding : char { kBase64 = 'B', kQuoted = 'Q' };

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
    std::string text = TranslateText(Bytes(), PageOfCharset(charset_), target_);
    // A header value is one line, and for a caller in C a zero would end it.
    std::erase(text, '\0');
    std::replace_if(text.begin(), text.end(), IsLineEnd, ' ');
    value += text;
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
      return std::string(out.GetWholeBuffer());
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

}  // namespace

uint32_t PageOfHeaderCharset(std::string_view charset) {
  const uint32_t page = PageOfCharset(charset);
  return IsUtf16Page(page) ? 0 : page;
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
  return decoded;
}

}  // namespace mimora

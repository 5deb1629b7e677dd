// Copyright (c) 2026 the mimora developers.
#include "codec/quoted_printable.h"

#include <algorithm>
#include <array>

#include "codec/quoted_printable_blocks.h"
#include "codec/quoted_printable_digits.h"
#include "codec/run_coder.h"
#include "diag/limits.h"
#include "platform/ascii.h"
#include "stream/scan.h"

namespace mimora {
namespace {

// Bytes that an encoded line holds as they stand, wherever they are in it.
consteval std::array<bool, 256> MakePlain() {
  std::array<bool, 256> plain{};
  for (size_t c = 0x20; c <= 0x7F; ++c) plain[c] = c != '=' && c != '.';
  plain['\t'] = true;
  return plain;
}

constexpr std::array<bool, 256> kPlain = MakePlain();

class Encoder {
 public:
  explicit Encoder(Moutstream& out) : out_(out) {}

  void Feed(std::string_view bytes) {
    const char* p = bytes.data();
    const char* end = p + bytes.size();
    while (p < end) {
      if (text_.data() + text_.size() - at_.out < 2 * kMostAtOnce) WriteLines();
      if (after_cr_ && EndsCr(*p)) {
        ++p;
        continue;
      }
      p = AddPlain(AddBlocks(p, end), end);
      if (p < end && !kPlain[static_cast<uint8_t>(*p)]) Add(*p++);
    }
    WriteLines();
  }

  void Finish() {
    if (after_cr_) AddEscape('\r');
    out_.WriteBlock(text_.data(), at_.out - text_.data());
  }

 private:
  // The rest of a line, an escape that passes its end, and a soft break; so much is left behind
  // the blocks, which need no more than that, either.
  static constexpr int64_t kMostAtOnce = 128;

  int64_t Length() const { return at_.out - at_.line; }

  // Whether it is the LF of a CR LF; otherwise the CR was a byte like others.
  bool EndsCr(char c) {
    after_cr_ = false;
    if (c == '\n') {
      at_.EndLine();
      return true;
    }
    AddEscape('\r');
    return false;
  }

  const char* AddBlocks(const char* p, const char* end) {
    at_.in = p;
    at_ = EncodeQuotedPrintableBlocks(at_, end, text_.data() + text_.size() - kMostAtOnce);
    return at_.in;
  }

  // Takes plain bytes as far as they go, up to the place where the line is broken.
  const char* AddPlain(const char* p, const char* end) {
    const char* stop =
        p + std::min(end - p, QuotedPrintableLines::kLongestPlainLine + 1 - Length());
    char* out = at_.out;  // what a character is written to might be a member
    while (p < stop && kPlain[static_cast<uint8_t>(*p)]) *out++ = *p++;
    at_.out = out;
    at_.BreakLongLine();
    return p;
  }

  void Add(char c) {
    if (c == '\r') {
      after_cr_ = true;
    } else if (c == '\n') {
      at_.EndLine();
    } else if (c == '.' && Length() > 0) {
      *at_.out++ = c;
      at_.BreakLongLine();
    } else {
      // A dot at the start of a line could end the mail on its way through SMTP.
      AddEscape(c);
    }
  }

  void AddEscape(char c) {
    at_.AddEscape(c);
    at_.BreakLongLine();
  }

  // Writes the lines that have ended, and moves the last one to the front.
  void WriteLines() {
    const int64_t length = Length();
    out_.WriteBlock(text_.data(), at_.line - text_.data());
    std::copy(at_.line, at_.out, text_.data());
    at_.line = text_.data();
    at_.out = at_.line + length;
  }

  Moutstream& out_;
  std::array<char, 4096> text_;
  QuotedPrintableLines at_ = {nullptr, text_.data(), text_.data()};
  bool after_cr_ = false;
};

const char* TrimBlanks(const char* begin, const char* end) {
  while (end > begin && IsBlank(end[-1])) --end;
  return end;
}

}  // namespace

int32_t EncodeQuotedPrintable(Minstream& in, Moutstream& out) {
  Encoder encoder(out);
  return RunCoder(in, out, encoder);
}

int32_t DecodeQuotedPrintable(Minstream& in, Moutstream& out) {
  QuotedPrintableDecoder decoder(out);
  return RunCoder(in, out, decoder);
}

void QuotedPrintableDecoder::Feed(std::string_view text) {
  const char* p = text.data();
  const char* end = p + text.size();
  while (p < end) {
    const bool rest_of_line_end = after_cr_ && *p == '\n';
    after_cr_ = false;
    if (rest_of_line_end) {
      ++p;
    } else if (IsLineEnd(*p)) {
      after_cr_ = *p++ == '\r';
      EndLine("\r\n");
    } else if (escape_ != Escape::kNone) {
      p = FeedEscape(p, end);
    } else if (const char* plain_end = FeedPlain(p, end); plain_end > p) {
      p = plain_end;
    } else {
      p = FeedText(p, end);
    }
  }
}

// Takes what goes in blocks, behind which nothing is pending.
const char* QuotedPrintableDecoder::FeedPlain(const char* p, const char* end) {
  if (!held_.empty()) return p;
  if (out_.Counts()) {
    const auto count = CountQuotedPrintableBlocks(p, end);
    out_.Count(count.bytes);
    return count.in;
  }
  std::array<char, 4096> bytes;
  const auto at = DecodeQuotedPrintableBlocks({p, bytes.data()}, end, bytes.data() + bytes.size());
  out_.WriteBlock(bytes.data(), at.out - bytes.data());
  return at.in;
}

// Takes text up to the next escape or line end, the "=" of the escape included.
const char* QuotedPrintableDecoder::FeedText(const char* p, const char* end) {
  const char* stop = FindAnyOf<'\r', '\n', '='>(p, end);
  const bool escape = stop < end && *stop == '=';
  const char* kept = escape ? stop : TrimBlanks(p, stop);
  if (kept > p || escape) Release();
  out_.WriteBlock(p, kept - p);
  Hold(kept, stop);
  if (escape) escape_ = Escape::kBegun;
  return escape ? stop + 1 : stop;
}

const char* QuotedPrintableDecoder::FeedEscape(const char* p, const char* end) {
  if (IsBlank(*p)) {
    const char* stop = p;
    while (stop < end && IsBlank(*stop)) ++stop;
    Hold(p, stop);
    return stop;
  }
  if (!held_.empty() || !IsLetterOrDigit(*p)) {
    const bool ended_by_equals = held_.empty() && *p == '=';
    GiveUpEscape();
    Release();
    if (!ended_by_equals) return p;
    out_.WriteChar('=');
  } else if (escape_ == Escape::kBegun) {
    digit_ = *p;
    escape_ = Escape::kDigit;
  } else {
    out_.WriteChar(static_cast<char>(QuotedPrintableValue(digit_, *p)));
    escape_ = Escape::kNone;
  }
  return p + 1;
}

void QuotedPrintableDecoder::EndLine(std::string_view line_end) {
  held_.clear();
  const bool soft_break = escape_ == Escape::kBegun;
  if (escape_ == Escape::kDigit) GiveUpEscape();
  escape_ = Escape::kNone;
  if (!soft_break) out_.WriteText(line_end);
}

void QuotedPrintableDecoder::Hold(const char* p, const char* end) {
  while (end - p + std::ssize(held_) >= static_cast<std::ptrdiff_t>(kLongestHeldBlanks)) {
    const auto taken = static_cast<std::ptrdiff_t>(kLongestHeldBlanks - held_.size());
    held_.append(p, p + taken);
    p += taken;
    GiveUpEscape();
    Release();
  }
  held_.append(p, end);
}

void QuotedPrintableDecoder::Release() {
  if (held_.empty()) return;
  out_.WriteText(held_);
  held_.clear();
}

// Writes what stands of an escape as the text that it is.
void QuotedPrintableDecoder::GiveUpEscape() {
  if (escape_ == Escape::kNone) return;
  out_.WriteChar('=');
  if (escape_ == Escape::kDigit) out_.WriteChar(digit_);
  escape_ = Escape::kNone;
}

}  // namespace mimora

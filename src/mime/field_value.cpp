// Copyright (c) 2026 the mimora developers.
#include "mime/field_value.h"

#include <algorithm>
#include <vector>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora {
namespace {

std::string_view Trim(std::string_view text) { return TrimRight(TrimLeft(text, IsSpace), IsSpace); }

std::string Unfold(std::string_view text) {
  std::string line(text);
  std::erase_if(line, IsLineEnd);
  return line;
}

// Inside quotes a backslash guards these two; before anything else it is a character of its own, as
// in the paths that some mailers send.
bool IsGuarded(std::string_view text, size_t at) {
  return text[at] == '\\' && at + 1 < text.size() && (text[at + 1] == '"' || text[at + 1] == '\\');
}

// The place behind the quoted string that begins at AT; the end of the text when it is not closed.
size_t SkipQuoted(std::string_view text, size_t at) {
  for (++at; at < text.size(); ++at) {
    if (IsGuarded(text, at)) {
      ++at;
    } else if (text[at] == '"') {
      return at + 1;
    }
  }
  return at;
}

// The place behind the comment that begins at AT, comments inside it included; npos when it is not
// closed.
size_t SkipComment(std::string_view text, size_t at) {
  int depth = 0;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\\') {
      ++at;
    } else if (c == '(') {
      ++depth;
    } else if (c == ')' && --depth == 0) {
      return at + 1;
    }
  }
  return std::string_view::npos;
}

// Cuts a value at its semicolons, those in comments and quoted strings left alone.
class Splitter {
 public:
  explicit Splitter(std::string_view text) : text_(text) {}

  bool Next(std::string_view& piece) {
    if (done_) return false;
    const size_t begin = at_;
    for (; at_ < text_.size() && text_[at_] != ';';) {
      if (text_[at_] == '"') {
        at_ = SkipQuoted(text_, at_);
      } else if (text_[at_] == '(' && comments_) {
        const size_t behind = SkipComment(text_, at_);
        // An opening parenthesis that is never closed is a character like any other, and all that
        // come after it are too.
        comments_ = behind != std::string_view::npos;
        at_ = comments_ ? behind : at_ + 1;
      } else {
        ++at_;
      }
    }
    piece = text_.substr(begin, at_ - begin);
    done_ = at_ == text_.size();
    ++at_;
    return true;
  }

  // Whether parentheses in the pieces so far stand for comments.
  bool Comments() const { return comments_; }

 private:
  std::string_view text_;
  size_t at_ = 0;
  bool comments_ = true;
  bool done_ = false;
};

// Removes comments from a text without quoted strings. A parenthesis in the middle of a word, as in
// "photo(1).jpg", is part of it.
std::string WithoutComments(std::string_view text) {
  std::string kept;
  for (size_t at = 0; at < text.size();) {
    if (text[at] != '(') {
      kept += text[at++];
      continue;
    }
    const size_t behind = std::min(SkipComment(text, at), text.size());
    const bool begins_word = at == 0 || IsSpace(text[at - 1]);
    const bool ends_word = behind == text.size() || IsSpace(text[behind]);
    if (!begins_word && !ends_word) kept.append(text.substr(at, behind - at));
    at = behind;
  }
  return kept;
}

// Passes over white space and comments.
std::string_view TrimComments(std::string_view text) {
  text = Trim(text);
  while (text.starts_with('('))
    text = Trim(text.substr(std::min(SkipComment(text, 0), text.size())));
  return text;
}

std::string Unquote(std::string_view text) {
  std::string plain;
  for (size_t at = 1; at < text.size() && text[at] != '"'; ++at) {
    if (IsGuarded(text, at)) ++at;
    if (!IsLineEnd(text[at])) plain += text[at];
  }
  return plain;
}

std::string PlainText(std::string_view raw, bool comments) {
  const std::string_view text = comments ? TrimComments(raw) : Trim(raw);
  if (text.starts_with('"')) return Unquote(text);
  if (comments && text.find('(') != std::string_view::npos) {
    const std::string kept = WithoutComments(text);
    return Unfold(Trim(kept));
  }
  return Unfold(text);
}

int HexValue(char c) {
  if (IsDigit(c)) return c - '0';
  const char upper = ToUpper(c);
  return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

// A percent sign that no two digits follow stands for itself.
std::string UndoPercent(std::string_view text) {
  std::string bytes;
  for (size_t at = 0; at < text.size(); ++at) {
    const int high = text[at] == '%' && at + 2 < text.size() ? HexValue(text[at + 1]) : -1;
    const int low = high >= 0 ? HexValue(text[at + 2]) : -1;
    if (low >= 0) at += 2;
    bytes += low >= 0 ? static_cast<char>(16 * high + low) : text[at];
  }
  return bytes;
}

// One piece of a parameter in its extended form.
struct Section {
  int number;
  bool encoded;
  std::string_view value;
  bool comments;
};

// Understands the marks behind a parameter's name: "*" (encoded, whole), "*0" and "*0*" (a piece).
bool ParseMarks(std::string_view marks, Section& section) {
  constexpr size_t kMostDigits = 6;
  if (!marks.starts_with('*')) return false;
  marks.remove_prefix(1);
  section.encoded = marks.empty() || marks.back() == '*';
  if (!marks.empty() && section.encoded) marks.remove_suffix(1);
  if (marks.size() > kMostDigits || !std::all_of(marks.begin(), marks.end(), IsDigit)) return false;
  section.number = 0;
  for (const char digit : marks) section.number = 10 * section.number + (digit - '0');
  return true;
}

// Joins the pieces in the order of their numbers, of those alike the first, and re-codes the text
// from the charset that the first one declares.
std::string JoinSections(std::vector<Section>& sections) {
  std::stable_sort(sections.begin(), sections.end(),
                   [](const Section& a, const Section& b) { return a.number < b.number; });
  std::string text;
  std::string charset;
  int last = -1;
  for (const Section& section : sections) {
    if (section.number == last) continue;
    std::string piece = PlainText(section.value, section.comments);
    if (last == -1 && section.encoded) {
      const size_t language = piece.find('\'');
      const size_t behind =
          language == std::string::npos ? language : piece.find('\'', language + 1);
      if (behind != std::string::npos) {
        charset = piece.substr(0, language);
        piece.erase(0, behind + 1);
      }
    }
    text += section.encoded ? UndoPercent(piece) : piece;
    last = section.number;
  }
  std::string utf8;
  return !charset.empty() && platform::RecodeToUtf8(charset, text, utf8) ? utf8 : text;
}

}  // namespace

std::string FieldValue::Main() const {
  Splitter pieces(text_);
  std::string_view main;
  pieces.Next(main);
  return PlainText(main, pieces.Comments());
}

std::optional<std::string> FieldValue::Parameter(std::string_view name) const {
  std::optional<std::string> plain;
  std::vector<Section> sections;
  Splitter pieces(text_);
  std::string_view piece;
  for (pieces.Next(piece); pieces.Next(piece);) {
    const std::string_view text = pieces.Comments() ? TrimComments(piece) : Trim(piece);
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals < name.size()) continue;
    if (!EqualIgnoringCase(text.substr(0, name.size()), name)) continue;
    const std::string_view marks = Trim(text.substr(name.size(), equals - name.size()));
    const std::string_view value = text.substr(equals + 1);
    if (marks.empty()) {
      if (!plain) plain = PlainText(value, pieces.Comments());
    } else if (Section section{}; ParseMarks(marks, section)) {
      section.value = value;
      section.comments = pieces.Comments();
      sections.push_back(section);
    }
  }
  return sections.empty() ? plain : JoinSections(sections);
}

std::optional<ContentType> ParseContentType(const FieldValue& value) {
  const std::string text = value.Main();
  const std::string_view main = text;
  const size_t slash = main.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view major = Trim(main.substr(0, slash));
  std::string_view sub = Trim(main.substr(slash + 1));
  // Behind a blank a parameter may stand whose semicolon was forgotten.
  sub = sub.substr(0, std::min(sub.find_first_of(" \t,"), sub.size()));
  if (major.empty() || sub.empty()) return std::nullopt;
  return ContentType{UpperCase(major), UpperCase(sub)};
}

}  // namespace mimora

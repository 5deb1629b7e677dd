// Copyright (c) 2026 the mimora developers.
#include "mime/field_value.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "diag/limits.h"
#include "stream/scan.h"

namespace mimora {
namespace {

std::string_view Trim(std::string_view text) { return TrimRight(TrimLeft(text, IsSpace), IsSpace); }

// What is returned here and below is a view of the text where that stands as wanted, and of SCRATCH
// otherwise.
std::string_view Unfold(std::string_view text, std::string& scratch) {
  if (FindLineEnd(text.begin(), text.end()) == text.end()) return text;
  scratch = text;
  std::erase_if(scratch, IsLineEnd);
  return scratch;
}

// Inside quotes a backslash guards these two; before anything else it is a character of its own, as
// in the paths that some mailers send.
bool IsGuarded(std::string_view text, size_t at) {
  return text[at] == '\\' && at + 1 < text.size() && (text[at + 1] == '"' || text[at + 1] == '\\');
}

// The place behind the quoted string that begins at AT; npos when it is not closed.
size_t SkipQuoted(std::string_view text, size_t at) {
  for (++at; at < text.size(); ++at) {
    at = static_cast<size_t>(FindAnyOf<'"', '\\'>(text.data() + at, text.end()) - text.data());
    if (at == text.size()) break;
    if (text[at] == '"') return at + 1;
    if (IsGuarded(text, at)) ++at;
  }
  return std::string_view::npos;
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

// What stands between two semicolons.
struct Piece {
  std::string_view text;
  size_t equals = 0;  // no "=" stands in front of this place
};

// Cuts a value at its semicolons, those in comments and quoted strings left alone.
class Splitter {
 public:
  explicit Splitter(std::string_view text) : text_(text) {}

  bool Next(Piece& piece) {
    if (done_) return false;
    const size_t begin = at_;
    piece.equals = FindMark() && text_[at_] == '=' ? at_ - begin : 0;
    // Only here a quotation mark begins a quoted string: elsewhere it may be the sign for inches.
    size_t value = begin;
    bool named = false;
    for (; at_ < text_.size() && text_[at_] != ';'; FindMark()) {
      // Once something stands there it is not looked at again: there may be many marks behind it.
      if (value <= at_ && !IsSpaceFrom(value)) value = std::string_view::npos;
      const bool value_begins = value <= at_;
      switch (text_[at_]) {
        case '=':
          ++at_;
          if (!named) value = at_;
          named = true;
          break;
        case '"':
          at_ = value_begins ? PassOver(quotes_, SkipQuoted) : at_ + 1;
          value = std::string_view::npos;
          break;
        default:
          at_ = PassOver(comments_, SkipComment);
          if (value_begins) value = at_;
          break;
      }
    }
    piece.text = text_.substr(begin, at_ - begin);
    done_ = at_ == text_.size();
    ++at_;
    return true;
  }

  // Whether parentheses in the pieces so far stand for comments.
  bool HasComments() const { return comments_; }

 private:
  // What is opened here but never closed is a character like any other, and all that come after it
  // are too.
  size_t PassOver(bool& may_open, size_t (*skip)(std::string_view, size_t)) {
    const size_t behind = may_open ? skip(text_, at_) : std::string_view::npos;
    may_open = behind != std::string_view::npos;
    return may_open ? behind : at_ + 1;
  }

  bool FindMark() {
    const char* const mark = FindAnyOf<';', '=', '"', '('>(text_.data() + at_, text_.end());
    at_ = static_cast<size_t>(mark - text_.data());
    return at_ < text_.size();
  }

  // Up to here.
  bool IsSpaceFrom(size_t begin) const {
    return std::all_of(text_.begin() + begin, text_.begin() + at_, IsSpace);
  }

  std::string_view text_;
  size_t at_ = 0;
  bool comments_ = true;
  bool quotes_ = true;
  bool done_ = false;
};

// Where comments are looked for.
enum class Comments {
  kNowhere,
  kAroundWords,  // "photo(1).jpg" is one word
  kAnywhere,
};

// Removes comments from a text without quoted strings.
std::string WithoutComments(std::string_view text, Comments comments) {
  std::string kept;
  for (size_t at = 0; at < text.size();) {
    if (text[at] != '(') {
      kept += text[at++];
      continue;
    }
    const size_t behind = SkipComment(text, at);
    if (behind == std::string_view::npos) return kept.append(text.substr(at));
    const bool begins_word = at == 0 || IsSpace(text[at - 1]);
    const bool ends_word = behind == text.size() || IsSpace(text[behind]);
    const bool inside_word = comments == Comments::kAroundWords && !begins_word && !ends_word;
    if (inside_word) kept.append(text.substr(at, behind - at));
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

std::string_view Unquote(std::string_view text, std::string& scratch) {
  text.remove_prefix(1);
  const char* p = text.begin();
  const char* stop = nullptr;
  const auto ends = [&] { return stop == text.end() || *stop == '"'; };
  const auto find_stop = [&] { stop = FindAnyOf<'"', '\\', '\r', '\n'>(p, text.end()); };
  find_stop();
  if (ends()) return {p, stop};
  scratch.clear();
  for (; find_stop(), !ends(); p = stop + 1) {
    scratch.append(p, stop);
    if (IsGuarded(text, static_cast<size_t>(stop - text.begin()))) ++stop;
    if (!IsLineEnd(*stop)) scratch += *stop;
  }
  return scratch.append(p, stop);
}

std::string_view PlainText(std::string_view raw, Comments comments, std::string& scratch) {
  const bool none = comments == Comments::kNowhere;
  const std::string_view text = none ? Trim(raw) : TrimComments(raw);
  if (text.starts_with('"')) return Unquote(text, scratch);
  if (none || text.find('(') == std::string_view::npos) return Unfold(text, scratch);
  scratch = WithoutComments(text, comments);
  std::erase_if(scratch, IsLineEnd);
  return Trim(scratch);
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

// One parameter of a field.
struct RawParameter {
  std::string_view name;   // with the "*" marks of an extended one
  std::string_view value;  // as it stands
  Comments comments;       // where in the value
};

// SCRATCH holds a name that had comments in it.
std::optional<RawParameter> ParseParameter(const Piece& piece, Comments comments,
                                           std::string& scratch) {
  const bool some = comments != Comments::kNowhere;
  const std::string_view text = piece.text;
  bool commented = false;
  size_t equals = piece.equals;
  for (;;) {
    const char* const mark = FindAnyOf<'=', '('>(text.data() + equals, text.end());
    if (mark == text.end()) return std::nullopt;
    equals = static_cast<size_t>(mark - text.data());
    if (*mark == '=') break;
    commented |= some;
    equals = some ? std::min(SkipComment(text, equals), text.size()) : equals + 1;
  }
  std::string_view name = text.substr(0, equals);
  if (commented) name = scratch = WithoutComments(name, Comments::kAnywhere);
  return RawParameter{Trim(name), text.substr(equals + 1), comments};
}

// What words of a plain field consist of.
constexpr CharacterSet kEndsWord([](char c) {
  return !IsLetter(c) && !IsDigit(c) && c != '-' && c != '_' && c != '.' && c != '+';
});
constexpr CharacterSet kNoSpace([](char c) { return !IsSpace(c); });

// Looks for a parameter of a field as most are written: no comments, no marks behind the names, no
// guarded characters. FOUND is its first value. False when the field is not like that: then FOUND
// means nothing.
bool FindInPlainField(std::string_view text, std::string_view name,
                      std::optional<ParameterText>& found) {
  const char* const end = text.end();
  const char* p = FindAnyOf<';', '"', '('>(text.begin(), end);
  while (p < end) {
    if (*p != ';') return false;
    p = kNoSpace.Find(p + 1, end);
    if (p == end) break;
    const char* const equals = kEndsWord.Find(p, end);
    if (equals == end || *equals != '=') return false;
    const std::string_view this_name(p, equals);
    const char* const begin = equals + 1;
    std::string_view value;
    if (begin < end && *begin == '"') {
      const char* const quote = FindAnyOf<'"', '\\', '\r', '\n'>(begin + 1, end);
      if (quote == end || *quote != '"') return false;
      value = {begin + 1, quote};
      p = kNoSpace.Find(quote + 1, end);
    } else {
      p = FindAnyOf<';', '"', '(', '\r', '\n'>(begin, end);
      value = Trim({begin, p});
    }
    if (!found && EqualIgnoringCase(this_name, name)) found = {value};
  }
  return true;
}

// A parameter in its extended form, or a piece of one.
struct Section {
  int number;  // kWhole for one that is not in pieces
  bool encoded;
  std::string_view value;
  Comments comments;
};

constexpr int kWhole = -2;  // neither a number nor next to one

// Understands the marks behind a parameter's name: "*" (encoded, whole), "*0" and "*0*" (a piece).
bool ParseMarks(std::string_view marks, Section& section) {
  constexpr size_t kMostDigits = 6;
  if (!marks.starts_with('*')) return false;
  marks.remove_prefix(1);
  section.encoded = marks.empty() || marks.back() == '*';
  section.number = marks.empty() ? kWhole : 0;
  if (!marks.empty() && section.encoded) marks.remove_suffix(1);
  if (marks.size() > kMostDigits || !std::all_of(marks.begin(), marks.end(), IsDigit)) return false;
  for (const char digit : marks) section.number = 10 * section.number + (digit - '0');
  return true;
}

// Puts the pieces in the order of their numbers. Of those alike the first counts; beyond the limit
// the last ones go, so that a flood of them hides none that is joined.
void SortSections(std::vector<Section>& sections) {
  std::stable_sort(sections.begin(), sections.end(),
                   [](const Section& a, const Section& b) { return a.number < b.number; });
  const auto end =
      std::unique(sections.begin(), sections.end(),
                  [](const Section& a, const Section& b) { return a.number == b.number; });
  const auto most = static_cast<std::ptrdiff_t>(kMostParameterPieces);
  sections.erase(sections.begin() + std::min(end - sections.begin(), most), sections.end());
}

// Joins the pieces, which are sorted, up to the first gap. The first one declares the charset.
ParameterText JoinSections(const std::vector<Section>& sections, std::string& joined) {
  std::string text;
  std::string charset;
  std::string scratch;
  const Section* last = nullptr;
  for (const Section& section : sections) {
    if (last != nullptr && section.number != last->number + 1) break;
    std::string_view piece = PlainText(section.value, section.comments, scratch);
    if (last == nullptr && section.encoded) {
      const size_t language = piece.find('\'');
      const size_t behind =
          language == std::string::npos ? language : piece.find('\'', language + 1);
      if (behind != std::string::npos) {
        charset = piece.substr(0, language);
        piece.remove_prefix(behind + 1);
      }
    }
    text += section.encoded ? UndoPercent(piece) : piece;
    last = &section;
  }
  const uint32_t page = PageOfCharset(charset);
  joined = page == 0 ? std::move(text) : TranslateText(text, page, kUtf8Page);
  return {joined, page != 0};
}

}  // namespace

std::string_view FieldValue::Main(std::string& scratch) const {
  const char* const stop = FindAnyOf<';', '"', '(', '\r', '\n'>(text_.begin(), text_.end());
  if (stop == text_.end() || *stop == ';') return Trim({text_.begin(), stop});
  Splitter pieces(text_);
  Piece main;
  pieces.Next(main);
  const Comments comments = pieces.HasComments() ? Comments::kAnywhere : Comments::kNowhere;
  return PlainText(main.text, comments, scratch);
}

std::optional<ParameterText> FieldValue::FindInAnyField(std::string_view name,
                                                        std::string& scratch) const {
  std::optional<ParameterText> plain;
  std::vector<Section> sections;
  Splitter pieces(text_);
  Piece piece;
  std::string name_scratch;
  for (pieces.Next(piece); pieces.Next(piece);) {
    const Comments comments = pieces.HasComments() ? Comments::kAroundWords : Comments::kNowhere;
    const auto parameter = ParseParameter(piece, comments, name_scratch);
    if (!parameter || parameter->name.size() < name.size()) continue;
    const std::string_view full = parameter->name;
    if (!EqualIgnoringCase(full.substr(0, name.size()), name)) continue;
    Section section{0, false, parameter->value, comments};
    if (full.size() == name.size()) {
      if (!plain) plain = {PlainText(parameter->value, comments, scratch)};
    } else if (ParseMarks(full.substr(name.size()), section)) {
      if (sections.size() == 2 * kMostParameterPieces) SortSections(sections);
      sections.push_back(section);
    }
  }
  if (!sections.empty()) {
    SortSections(sections);
    // Some count from 1. Where the beginning is missing, a plain one is better.
    if (sections.front().number <= 0 || !plain) plain = JoinSections(sections, scratch);
  }
  return plain;
}

std::optional<ParameterText> FieldValue::FindParameter(std::string_view name,
                                                       std::string& scratch) const {
  std::optional<ParameterText> found;
  if (!FindInPlainField(text_, name, found)) found = FindInAnyField(name, scratch);
  // A zero would end the text for a caller in C.
  if (found && found->text.find('\0') != std::string_view::npos) {
    std::string whole(found->text);
    std::erase(whole, '\0');
    scratch = std::move(whole);
    found->text = scratch;
  }
  return found;
}

std::optional<std::string> FieldValue::Parameter(std::string_view name) const {
  std::string scratch;
  const auto parameter = FindParameter(name, scratch);
  if (!parameter) return std::nullopt;
  return std::string(parameter->text);
}

std::string ContentType::Full() const { return UpperCase(major) + "/" + UpperCase(sub); }

// A type as most are written: two words, and a slash between them.
std::optional<ContentType> FieldValue::PlainType() const {
  const char* const end = text_.end();
  const char* const slash = kEndsWord.Find(text_.begin(), end);
  if (slash == text_.begin() || slash == end || *slash != '/') return std::nullopt;
  const char* const stop = kEndsWord.Find(slash + 1, end);
  if (stop == slash + 1 || (stop < end && *stop != ';')) return std::nullopt;
  return ContentType{{text_.begin(), slash}, {slash + 1, stop}};
}

std::optional<ContentType> FieldValue::Type(std::string& scratch) const {
  if (const auto type = PlainType()) return type;
  const std::string_view main = Main(scratch);
  const size_t slash = main.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view major = Trim(main.substr(0, slash));
  std::string_view sub = Trim(main.substr(slash + 1));
  // Behind a blank a parameter may stand whose semicolon was forgotten.
  static constexpr CharacterSet kEndsSub([](char c) { return IsBlank(c) || c == ','; });
  sub = {sub.begin(), kEndsSub.Find(sub.begin(), sub.end())};
  if (major.empty() || sub.empty()) return std::nullopt;
  return ContentType{major, sub};
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
#include "html/text_sink.h"

namespace mimora {
namespace {

constexpr bool IsFolded(char16_t c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

// Words with single blanks between them are text as it is. This is where most of a document goes
// through.
const char16_t* FindEndOfWords(const char16_t* p, const char16_t* end) {
  for (; p < end; ++p) {
    if (*p > ' ') continue;
    const bool single = *p == ' ' && end - p > 1 && p[1] > ' ';
    if (!single && (IsFolded(*p) || *p == '\0')) break;
  }
  return p;
}

const char16_t* FindLineEnd(const char16_t* p, const char16_t* end) {
  while (p < end && *p != '\n' && *p != '\r' && *p != '\0') ++p;
  return p;
}

std::u16string_view Between(const char16_t* p, const char16_t* end) {
  return {p, static_cast<size_t>(end - p)};
}

}  // namespace

void TextSink::Text(std::u16string_view run, const TextStyle& style) {
  if (style.white_space == WhiteSpace::kCollapsed) return Collapsed(run, style);
  const char16_t* p = run.data();
  const char16_t* const end = p + run.size();
  while (p < end) {
    const char16_t* const stop = FindLineEnd(p, end);
    if (style.white_space == WhiteSpace::kLines) {
      Collapsed(Between(p, stop), style);
    } else if (stop > p) {
      Words(Between(p, stop), style);
    }
    p = stop;
    if (p == end) break;
    if (*p != '\0') LineEnd(style.visible);
    p += *p == '\r' && end - p > 1 && p[1] == '\n' ? 2 : 1;
  }
}

void TextSink::Object() {
  if (space_ == Space::kVisible) Append(u" ");
  space_ = Space::kNone;
  at_line_start_ = false;
}

void TextSink::Collapsed(std::u16string_view run, const TextStyle& style) {
  const char16_t* p = run.data();
  const char16_t* const end = p + run.size();
  while (p < end) {
    if (IsFolded(*p)) {
      while (p < end && IsFolded(*p)) ++p;
      if (!at_line_start_ && space_ == Space::kNone)
        space_ = style.visible ? Space::kVisible : Space::kHidden;
    } else if (*p == '\0') {
      ++p;
    } else {
      const char16_t* const stop = FindEndOfWords(p, end);
      Words(Between(p, stop), style);
      p = stop;
    }
  }
}

void TextSink::LineEnd(bool visible) {
  if (visible) return Put(u'\n');
  BeginLine();
}

void TextSink::Words(std::u16string_view words, const TextStyle& style) {
  Object();
  if (!style.visible) return;
  if (style.letter_case == LetterCase::kAsIs) return Append(words);
  WriteLineEnds();
  AppendInCase(words, style.letter_case, text_);
}

void TextSink::Append(std::u16string_view text) {
  WriteLineEnds();
  text_.append(text);
}

void TextSink::WriteLineEnds() {
  if (text_.empty()) {
    leading_line_ends_ = line_ends_;
  } else {
    text_.append(line_ends_, u'\n');
  }
  line_ends_ = 0;
}

void TextSink::Add(TextSink&& other) {
  constexpr size_t kCopied = 1024;
  line_ends_ = std::max(line_ends_, other.leading_line_ends_);
  if (other.chunks_.empty() && other.text_.size() <= kCopied) {
    if (!other.text_.empty()) Append(other.text_);
  } else {
    WriteLineEnds();
    if (!text_.empty()) chunks_.push_back(std::move(text_));
    chunks_.splice(chunks_.end(), other.chunks_);
    text_ = std::move(other.text_);
  }
  Break(other.line_ends_);
}

std::u16string TextSink::Take() {
  if (chunks_.empty()) return std::move(text_);
  size_t size = text_.size();
  for (const std::u16string& chunk : chunks_) size += chunk.size();
  std::u16string whole;
  whole.reserve(size);
  for (; !chunks_.empty(); chunks_.pop_front()) whole += chunks_.front();
  return whole += text_;
}

}  // namespace mimora

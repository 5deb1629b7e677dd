// Copyright (c) 2026 the mimora developers.
#include "html/doctype.h"

#include <algorithm>

#include "html/units.h"

namespace mimora {
namespace {

// How the public identifiers of old documents begin.
constexpr std::string_view kOld[] = {
    "-//ietf//dtd html",
    "-//netscape comm. corp.//dtd",
    "-//softquad",
    "-//w3c//dtd html 3",
    "-//w3c//dtd html 4.0 frameset//",
    "-//w3c//dtd html 4.0 transitional//",
    "-//w3c//dtd html experimental",
    "-//w3c//dtd w3 html",
    "-//w3o//dtd w3 html",
};

// These are old when they stand alone.
constexpr std::string_view kOldWithoutAddress[] = {
    "-//w3c//dtd html 4.01 frameset//",
    "-//w3c//dtd html 4.01 transitional//",
};

bool BeginsLike(std::u16string_view text, std::string_view name) {
  return EqualsName(text.substr(0, name.size()), name);
}

std::u16string_view TakeWord(std::u16string_view& text) {
  size_t size = 0;
  while (size < text.size() && !IsHtmlSpace(text[size])) ++size;
  const std::u16string_view word = text.substr(0, size);
  text = TrimSpace(text.substr(size));
  return word;
}

bool TakeQuoted(std::u16string_view& text, std::u16string_view& quoted) {
  if (!text.starts_with(u'"') && !text.starts_with(u'\'')) return false;
  const size_t end = std::min(text.find(text[0], 1), text.size());
  quoted = text.substr(1, end - 1);
  text = TrimSpace(text.substr(std::min(end + 1, text.size())));
  return true;
}

}  // namespace

bool IsQuirksDoctype(std::u16string_view text) {
  text = TrimSpace(text);
  if (!EqualsName(TakeWord(text), "html")) return true;
  if (!BeginsLike(text, "public")) return false;
  text = TrimSpace(text.substr(6));
  std::u16string_view type;
  std::u16string_view address;
  if (!TakeQuoted(text, type)) return true;
  const auto is_like = [type](std::string_view name) { return BeginsLike(type, name); };
  if (std::ranges::any_of(kOld, is_like)) return true;
  return std::ranges::any_of(kOldWithoutAddress, is_like) && !TakeQuoted(text, address);
}

}  // namespace mimora

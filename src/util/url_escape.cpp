// Copyright (c) 2026 the mimora developers.
#include "util/url_escape.h"

#include <algorithm>

#include "platform/ascii.h"

namespace mimora {
namespace {

constexpr std::string_view kEscaped = ":% ?+&=";

char DigitValue(std::string_view text, size_t at) {
  return static_cast<char>(at < text.size() ? std::max(HexValue(text[at]), 0) : 0);
}

}  // namespace

std::string EscapeUrl(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    if (kEscaped.find(c) == std::string_view::npos) {
      escaped += c;
    } else {
      escaped += {'%', kHexDigits[c >> 4], kHexDigits[c & 0xF]};
    }
  }
  return escaped;
}

std::string UnEscapeUrl(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 1 < text.size()) {
      plain += static_cast<char>(16 * DigitValue(text, i + 1) + DigitValue(text, i + 2));
      i += 2;
    } else {
      plain += text[i] == '+' ? ' ' : text[i];
    }
  }
  return plain;
}

}  // namespace mimora

// Copyright (c) 2026 the mimora developers.
//
// Any bytes as an HTML document: its text stays in proportion and is proper UTF-16 if the document
// is, and the export says so.
#include <vector>

#include "codec/charset/charset_coder.h"
#include "codec/charset_table.h"
#include "fuzz.h"
#include "html/html_charset.h"
#include "html/html_to_text.h"
#include "mimora/mimora.h"

namespace mimora::fuzz {
namespace {

// One unit may become three: capitals of ligatures.
constexpr size_t kMostGrowth = 3;

std::u16string WideOf(std::string_view bytes, uint32_t page) {
  const auto decoder = MakeDecoder(page);
  std::u16string wide(DecodedRoom(bytes.size()) + DecodedRoom(0), u'\0');
  const char16_t* const end = decoder->Finish(decoder->Decode(bytes, wide.data()));
  wide.resize(static_cast<size_t>(end - wide.data()));
  return wide;
}

bool HasLoneSurrogate(std::u16string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const int half = text[i] & 0xFC00;
    if (half == 0xDC00) return true;
    if (half != 0xD800) continue;
    if (++i == text.size() || (text[i] & 0xFC00) != 0xDC00) return true;
  }
  return false;
}

void CheckText(std::u16string html) {
  const std::u16string text = HtmlToText(html);
  FUZZ_CHECK(text.size() <= kMostGrowth * html.size());
  FUZZ_CHECK(text.find(u'\r') == std::u16string::npos || html.find(u'&') != std::u16string::npos);
  FUZZ_CHECK(HasLoneSurrogate(html) || !HasLoneSurrogate(text));
  if (html.find(u'\0') != std::u16string::npos) return;
  uint32_t size = 0;
  FUZZ_CHECK(M_HTMLToText(html.c_str(), nullptr, &size) == 0 && size == text.size() + 1);
  std::vector<char16_t> room(size);
  FUZZ_CHECK(M_HTMLToText(html.c_str(), room.data(), &size) == 1 && size == text.size() + 1);
  FUZZ_CHECK(std::equal(room.begin(), room.end() - 1, text.begin()) && room.back() == 0);
}

void CheckCharset(std::string_view html) {
  const uint32_t page = HtmlCodePage(html);
  FUZZ_CHECK(page == 0 || MakeDecoder(page) != nullptr);
  const ExactCopy copy(html);
  FUZZ_CHECK(HtmlCodePage(copy.Text()) == page);
}

}  // namespace

void CheckInput(Input input) {
  const uint32_t page = input.Byte() == 0xFF ? kUtf16Page : kUtf8Page;
  CheckCharset(input.Rest());
  CheckText(WideOf(input.Rest(), page));
}

}  // namespace mimora::fuzz

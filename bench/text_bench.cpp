// Copyright (c) 2026 the mimora developers.
#include "benchmarks.h"
#include "codec/encoded_word.h"
#include "corpus.h"
#include "html/html_to_text.h"
#include "stream/minstream.h"

namespace mimora::bench {
namespace {

constexpr size_t kSize = 4 << 20;

// What many letters have in their headers, one behind the other.
constexpr std::string_view kSubject =
    "Re: =?UTF-8?Q?Gr=C3=BC=C3=9Fe_aus_K=C3=B6ln?=\r\n =?UTF-8?B?0L/RgNC40LLQtdGC?= "
    "=?iso-8859-1?Q?caf=E9?= and more";

constexpr std::u16string_view kPage =
    u"<table width=\"600\"><tr><td align=\"left\">Dear customer,</td><td>1&nbsp;&euro;</td></tr>"
    u"</table><p style=\"margin:0\">Your order <b>12345</b> &amp; more has been sent; see "
    u"<a href=\"https://example.com/?a=1&amp;b=2\">the list</a>.</p><ul><li>one<li>two</ul>\r\n";

template <typename Text>
Text Repeat(Text text, size_t size) {
  Text all;
  while (all.size() < size) all += text;
  return all;
}

void RegisterLines(const std::string& input, const std::string& boundary) {
  Register("lines/" + (boundary.empty() ? "read" : "read-within-" + boundary), input.size(),
           [input, boundary] {
             Minstream in(MemorySource{input.data(), static_cast<int64_t>(input.size())});
             in.SetBoundary(boundary);
             size_t lines = 0;
             for (std::string_view line; in.ReadLine(line);) ++lines;
             return lines;
           });
}

void RegisterSkipping(const std::string& input) {
  Register("lines/skip-to-boundary", input.size(), [input] {
    Minstream in(MemorySource{input.data(), static_cast<int64_t>(input.size())});
    in.SetBoundary("--boundary");
    in.Skip();
    return in.Position();
  });
}

}  // namespace

void RegisterTexts(const std::string& corpus) {
  const std::string text = ReadFile(corpus + "/text.txt").substr(0, kSize);
  RegisterLines(text, "");
  RegisterLines(text, "--boundary");
  RegisterSkipping(text);

  Register("encoded-words/decode", kSubject.size(),
           [] { return DecodeEncodedWords(kSubject, "utf-8").size(); });
  const std::string subject = DecodeEncodedWords(kSubject, "utf-8");
  Register("encoded-words/encode", subject.size(),
           [subject] { return EncodeWords(subject, "utf-8", "", 9).size(); });

  const std::u16string html = Repeat(std::u16string(kPage), 1 << 20);
  Register("html-to-text", html.size() * sizeof(char16_t),
           [html] { return HtmlToText(html).size(); });
}

}  // namespace mimora::bench

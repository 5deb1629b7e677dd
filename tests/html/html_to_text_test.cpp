// Copyright (c) 2026 the mimora developers.
#include "html/html_to_text.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <vector>

#include "diag/limits.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

struct TextCase {
  const char* name;
  std::u16string_view html;
  std::u16string_view text;
};

template <size_t kCount>
void ExpectTexts(const TextCase (&cases)[kCount]) {
  for (const TextCase& c : cases) EXPECT_EQ(HtmlToText(c.html), c.text) << c.name;
}

std::u16string Repeat(std::u16string_view text, size_t times) {
  std::u16string all;
  for (; times > 0; --times) all += text;
  return all;
}

TEST(HtmlToText, FoldsWhiteSpace) {
  ExpectTexts({
      {"runs", u" a \t\r\n b  c ", u"a b c"},
      {"across elements", u"<b>a </b> <i> b</i>", u"a b"},
      {"at line ends", u"a <br> b", u"a\nb"},
      {"at blocks", u" <div> a </div> <div> b </div> ", u"a\nb"},
      {"not around what is no text", u"a <img> b <input> ", u"a  b "},
      {"a hidden input is nothing", u"a <input type=hidden> b", u"a b"},
      {"no-break spaces and other controls stay", u"a \xA0 \f\x200B b", u"a \xA0 \f\x200B b"},
      {"zeros go", u"a\0b\0 \0c"sv, u"ab c"},
      {"halves of surrogates stay", u"\xD800 <b>\xDC00</b>", u"\xD800 \xDC00"},
      {"a mark in front goes", u"\xFEFF<p>a", u"a"},
  });
}

TEST(HtmlToText, KeepsWhiteSpaceThatIsPreformatted) {
  ExpectTexts({
      {"pre", u"<pre> a \n\tb </pre>c  d", u" a \n\tb \nc d"},
      {"all kinds of line ends", u"<pre>a\r\nb\rc\nd", u"a\nb\nc\nd"},
      {"not the first line end", u"<pre>\r\n\r\na", u"\na"},
      {"a style", u"<p style='white-space: pre-wrap'>a  b", u"a  b"},
      {"only line ends", u"<p style=white-space:pre-line>a  b \n c", u"a b\nc"},
      {"a style ends it", u"<pre>a  b<b style=white-space:normal>  c  d", u"a  b c d"},
      {"the last blank before a line end", u"a <span style=white-space:pre>\n b", u"a\n b"},
      {"of the body", u"<body style=white-space:pre>a  b", u"a  b"},
      {"zeros go", u"<pre>a\0 \0b"sv, u"a b"},
      {"not in what has no line ends", u"<pre> <nobr>a  b</nobr>", u" a b"},
      {"nor in old tables", u"<pre> <table><td>a  b</table>", u" \na b"},
      {"but in those of today", u"<!doctype html><pre> <table><td>a  b</table>", u" \na  b"},
  });
}

TEST(HtmlToText, EndsLinesAtBlocks) {
  ExpectTexts({
      {"blocks", u"a<div>b</div>c<h1>d</h1><ul><li>e<li>f</ul><hr>g", u"a\nb\nc\nd\ne\nf\ng"},
      {"blocks in blocks", u"<div><div>a</div></div><div></div><section>b", u"a\nb"},
      {"paragraphs", u"<p>a<p>b</p><p></p><div>c</div>d", u"a\n\nb\n\nc\nd"},
      {"line ends count one by one", u"a<br><br>b<div><br></div>c<br>", u"a\n\nb\n\n\nc\n"},
      {"displays", u"a<b style=display:block>b</b>c<div style=display:inline>d</div>", u"a\nb\ncd"},
      {"in a line", u"a<b style=display:inline-block> b </b> c<button> d </button>", u"ab cd"},
      {"floats", u"a<b style=float:left>b</b>c<b style=position:fixed>d", u"a\nb\nc\nd"},
      {"children of a flexible box", u"<p style='display:flex'><b>a</b><i>b</i>", u"a\nb"},
  });
}

TEST(HtmlToText, PartsRowsAndCells) {
  ExpectTexts({
      {"a table", u"x<table> <tr> <td>a</td> <td>b <tr><th>c<td>d</table>y", u"x\na\tb\nc\td\ny"},
      {"empty cells and rows", u"<table><td>a<td><td><tr><tr><td>b", u"a\t\t\n\nb"},
      {"groups and captions",
       u"<table><caption>a</caption><col><thead><tr><td>b</thead><tbody><tr><td>c</table>",
       u"a\nb\nc"},
      {"blocks in cells", u"<table><td><p>a</p><td>b<tr><td>c", u"a\n\n\tb\nc"},
      {"tables in tables", u"<table><td>a<table><td>b<td>c</table>d<td>e", u"a\nb\tc\nd\te"},
      {"hidden cells", u"<table><td>a<td style=display:none>b<td>c<tr hidden><td>d", u"a\tc"},
      {"what is not in cells is in front", u"a<table>b<tr><td>c</td>d<p>e</p><tr>f<td>g</table>h",
       u"abd\n\ne\n\nf\nc\ng\nh"},
      {"in front of the inner table", u"<table><td>a<table><td>b<tr>c &amp; d</table>",
       u"ac & d\nb\n"},
      {"text of columns", u"<table><colgroup>a<col><td>b", u"a\nb"},
      {"a table between rows", u"<table><td>a<tr><table><td>b", u"a\n\nb"},
      {"rows by style",
       u"<p style=display:table-row><b style=display:table-cell>a</b> "
       u"<b style=display:table-cell>b</b></p>",
       u"a\tb"},
      {"no table", u"<tr><td>a</td></tr><td>b", u"ab"},
  });
  const std::u16string long_text(2000, u'x');
  const std::u16string html = u"a<table><td><p>" + long_text + u"<td><table><td>" + long_text;
  EXPECT_TRUE(HtmlToText(html) == u"a\n\n" + long_text + u"\n\n\t\n" + long_text);
}

TEST(HtmlToText, LeavesOutWhatIsHidden) {
  ExpectTexts({
      {"head", u"<html><head><title>a</title><style>b</style></head><body>c", u"c"},
      {"raw text",
       u"a<script>b</script><style>c<b></style><textarea>d</textarea><iframe>e</iframe>f", u"af"},
      {"an attribute", u"a<p hidden>b</p>c<b hidden>d</b>e", u"ace"},
      {"a style", u"a<div style='color:red;DISPLAY : none ! IMPORTANT; display:block'>b</div>c",
       u"ac"},
      {"a style against the attribute", u"<p hidden style=display:block>a", u"a"},
      {"a style with references", u"<p style='font-family:&quot;x;y&quot;;display:none'>a</p>b",
       u"b"},
      {"semicolons that end nothing", u"<p style='a:\"b;\"url(;)/*;*/;display:none'>a</p>b", u"b"},
      {"a style that makes no sense", u"<p style='display:none;display:nought;;:x;float'>a</p>b",
       u"b"},
      {"not visible, but in its place",
       u"<p style=visibility:hidden>a<b style=visibility:visible>b</b></p>c <b "
       u"style='visibility:collapse'>d</b> e",
       u"bc  e"},
      {"content that something else stands for", u"a<video>b</video><object>c</object>d", u"ad"},
      {"content that is shown", u"<noscript>a</noscript><canvas>b</canvas><noembed>c</noembed>",
       u"ab"},
      {"details", u"<details>a<summary>b</summary>c<summary>d</summary></details>e", u"b\ne"},
      {"open details", u"<details open><summary>a</summary>b", u"a\nb"},
      {"hidden in hidden details", u"<details><details open><summary>a</details></details>b", u"b"},
      {"templates", u"<template style=display:block>a<p>b</template>c", u"c"},
      {"dialogs", u"<dialog>a</dialog><dialog open>b</dialog>", u"b"},
      {"ruby", u"<ruby>a<rp>(<rt>b<rp>)</ruby>c", u"abc"},
      {"the body is never", u"<body style=display:none>a", u"a"},
  });
}

TEST(HtmlToText, ReadsMarkupAsBrowsersDo) {
  ExpectTexts({
      {"comments", u"a<!-- > -- -->b<!-->c<!--->d<!-- --!>e<!----!>f", u"abcdef"},
      {"other declarations", u"a<!doctype x>b<!x>c<?x?>d</>e</ x>f<![CDATA[x]]>g", u"abcdefg"},
      {"no tags", u"a < b <3 </", u"a < b <3 </"},
      {"attributes", u"<a b='>' c=\">\"d = e/f / hidden=x =>g</a hidden>h", u"h"},
      {"the first attribute counts", u"<p style=display:block style=display:none>a", u"a"},
      {"cut off", u"a<b c='", u"a"},
      {"a script in a comment of a script", u"<script><!--<script></script>--></script>a", u"a"},
      {"the end of a comment of a script", u"<script><!--><script></script>a", u"a"},
      {"end tags that are longer", u"<style>a</stylee></STYLE/>b<xmp><b>&lt;</xmp>c",
       u"b\n<b>&lt;\nc"},
      {"plain text", u"a<plaintext><b>&lt;</plaintext>", u"a\n<b>&lt;</plaintext>"},
      {"all of a letter behind its end", u"<body>a</body></html>b", u"ab"},
  });
}

TEST(HtmlToText, RepairsWhatIsWronglyNested) {
  ExpectTexts({
      {"blocks end paragraphs", u"<p>a<div>b</p>c", u"a\n\nb\n\nc"},
      {"not across cells", u"<p>a<button>b</p>c", u"ab\n\nc"},
      {"items end items", u"<li>a<p>b<li>c<dl><dt>d<dd>e<li>f", u"a\n\nb\n\nc\nd\ne\nf"},
      {"not those of outer lists", u"<ul><li>a<ul><li>b</ul>c</li></ul>d", u"a\nb\nc\nd"},
      {"headings", u"<h1>a<h2>b</h3>c", u"a\nb\nc"},
      {"tables and paragraphs of old", u"<p>a<table><td>b", u"a\nb"},
      {"and of today", u"<!doctype html><p>a<table><td>b", u"a\n\nb"},
      {"an old type",
       u"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\"><p>a<table><td>b",
       u"a\nb"},
      {"a newer one",
       u"<!DOCTYPE HTML PUBLIC '-//W3C//DTD HTML 4.01 Transitional//EN' 'x'><p>a<table>"
       u"<td>b",
       u"a\n\nb"},
      {"formatting around blocks", u"<b hidden>a<p>b</b>c", u"c"},
      {"formatting across formatting", u"<i hidden>a<b>b</i>c</b>", u"c"},
      {"end tags of other elements", u"<b hidden>a</i>b</b>c<div hidden>d</p>e</div>f", u"cf"},
      {"one of a name ends", u"<x hidden>a<y>b</y><x>c</x>d</x>e", u"e"},
      {"anchors in anchors", u"<a hidden>a<a>b", u"b"},
      {"forms", u"<form>a<form>b</form><div><form>c<p>d</form>e", u"ab\nc\n\nd\n\ne"},
      {"selects", u"a<select><option>b<option>c<optgroup>d<p>e<select><select>f",
       u"a\nb\nc\nd\n\nef"},
      {"end tags that begin", u"a</p>b</br>c", u"a\n\nb\nc"},
      {"end tags of nothing", u"</div></table></td></select></form></h1></li></svg>a", u"a"},
  });
}

TEST(HtmlToText, ShowsTheTextInPicturesAndFormulas) {
  ExpectTexts({
      {"pictures", u"a<svg>b<g>c<text>d<tspan>e</g><desc>f</desc></svg>g", u"a\nde\ng"},
      {"documents in pictures", u"<svg><foreignObject><p>a</p></foreignObject>b</svg>c", u"a\n\nc"},
      {"formulas", u"<math>a<mi>b</mi><mo>+</mo><annotation>c</math>d", u"b+d"},
      {"raw text is markup there", u"<svg><style><text>a</text><p>b", u"b"},
      {"and quotations are text", u"<svg><text><![CDATA[<b>]]></svg>c", u"<b>\nc"},
      {"empty", u"<svg/>a<svg><text/>b</svg>c", u"ac"},
      {"what is not closed ends at a block", u"<svg><g>a<p>b", u"b"},
      {"names that mean nothing outside", u"<desc>a<p>b</p></desc><text>c", u"a\n\nb\n\nc"},
      {"a picture as a block", u"a<svg style=display:block></svg>b", u"a\nb"},
      {"hidden pictures", u"<div hidden><svg><text>a</svg></div>b", u"b"},
  });
}

TEST(HtmlToText, ChangesTheCaseOfLettersThatAStyleChanges) {
  ExpectTexts({
      {"capitals",
       u"<b style=text-transform:uppercase>Stra\xDF"
       u"e \xE1 \x448 \x1A1\x100</b>a",
       u"STRASSE \xC1 \x428 \x1A0\x100"
       u"a"},
      {"small letters", u"<b style=text-transform:lowercase>ABC \xD7 \x178 \x3A3",
       u"abc \xD7 \xFF \x3C3"},
      {"initials", u"<b style=text-transform:capitalize>ab <i>c</i>d it's \x10D-\x17E",
       u"Ab Cd It's "
       u"\x10C-\x17D"},
      {"inherited", u"<p style=text-transform:uppercase>a<b style=text-transform:none>b", u"Ab"},
  });
}

// ---- What a sender may choose -------------------------------------------------------------------

TEST(HtmlToText, CountsElementsBeyondTheLimit) {
  const std::u16string inside =
      u"a<table><tr><td>b<td>c</table><div hidden><i>d</i></div><p>e</p><ul><li>f<li>g</ul>h";
  // The root, the table and the elements that it needs room for count, too.
  for (const size_t depth :
       {size_t{1}, kDeepestElement - 6, kDeepestElement - 5, kDeepestElement - 4,
        kDeepestElement - 1, kDeepestElement, kDeepestElement + 1, 100 * kDeepestElement}) {
    const std::u16string html = Repeat(u"<div>", depth) + inside + Repeat(u"</div>", depth);
    const std::u16string columns = depth + 5 <= kDeepestElement ? u"b\tc" : u"b\nc";
    EXPECT_EQ(HtmlToText(html + u"<table><td>i<td hidden>j<td>k"),
              u"a\n" + columns + u"\n\ne\n\nf\ng\nh\ni\tk")
        << depth;
  }
}

void* MakeTextsOfHostileMarkup(void* lengths) {
  constexpr size_t kTimes = 100'000;
  for (const std::u16string_view markup : {u"<div>"sv,
                                           u"<b style=float:left>"sv,
                                           u"<table><tr>a<td>"sv,
                                           u"<font hidden><p>"sv,
                                           u"<ul><li>"sv,
                                           u"<"sv,
                                           u"&"sv,
                                           u"&#"sv,
                                           u"<!--"sv,
                                           u"<a "sv,
                                           u"<a b='"sv,
                                           u"<svg><g>"sv,
                                           u"<svg><![CDATA["sv,
                                           u"<script><!--<script>"sv,
                                           u"<select><option>"sv,
                                           u"<details>"sv,
                                           u"<template><tr>"sv,
                                           u"<form><div></form>"sv,
                                           u"<p><button></p>"sv,
                                           u"<x style='a:/*;*/("sv,
                                           u"\xD800"sv,
                                           u"<math><mi>"sv,
                                           u"<object><p></object>"sv,
                                           u"<li><ul></li>"sv}) {
    static_cast<std::vector<size_t>*>(lengths)->push_back(
        HtmlToText(Repeat(markup, kTimes)).size());
  }
  return nullptr;
}

// The time-out of the tests ends what is not linear.
TEST(HtmlToText, TakesHostileMarkupOnASmallStack) {
  constexpr size_t kSmallStack = 256 * 1024;
  std::vector<size_t> lengths;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, MakeTextsOfHostileMarkup, &lengths), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(lengths.size(), 24u);
  EXPECT_EQ(std::vector(lengths.begin() + 5, lengths.begin() + 8),
            (std::vector<size_t>{100'000, 100'000, 200'000}));
}

// Every piece of a document is one, and nothing behind it is read.
TEST(HtmlToText, TakesADocumentCutAnywhere) {
  constexpr std::u16string_view kHtml =
      u"<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" 'x'><p style=\"a:'b;';display:none "
      u"!important\""
      u" hidden/>&eacute;&notit;&#x80;&#12<!-- - "
      u"--!><![CDATA[x]]><svg><![CDATA[]]></svg><script><!--<scrip"
      u"t></script></script><xmp></xmp ></table x=y><pre>\r\n\r\na  b";
  for (size_t size = 0; size <= kHtml.size(); ++size) {
    const std::vector<char16_t> piece(kHtml.begin(), kHtml.begin() + static_cast<ptrdiff_t>(size));
    const std::u16string text = HtmlToText({piece.data(), piece.size()});
    EXPECT_LE(text.size(), size);
  }
}

}  // namespace
}  // namespace mimora::testing

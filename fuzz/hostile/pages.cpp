// Copyright (c) 2026 the mimora developers.
//
// HTML letters.
#include "hostile.h"

namespace mimora::hostile {
namespace {

using std::size_t;
using std::string;

string Page(const string& page) { return Body("text/html; charset=utf-8", "8bit", page); }

// The largest page, in elements or pieces.
constexpr size_t kMany = 400'000;

#define PIECES(name, piece)                                                                \
  {                                                                                        \
    "html-" name, Unit::kPageBytes, kMany, [](size_t n) { return Page(Repeat(piece, n)); } \
  }
#define PAGE(name, page)                                                       \
  {                                                                            \
    "html-" name, Unit::kPageBytes, kMany, [](size_t n) { return Page(page); } \
  }

constexpr MessageClass kClasses[] = {
    PIECES("divs", "<div>"),
    PIECES("divs-of-text", "<div>a"),
    PIECES("tables", "<table><tr><td>a"),
    PIECES("lists", "<ul><li>a"),
    PIECES("quotes", "<blockquote>a"),
    PIECES("crossed", "<b><p>a</b><i></p>"),
    PIECES("anchors", "<a href=x><table><a href=y>"),
    PIECES("fonts", "<font><div>"),
    PIECES("ends", "</p></div></table>"),
    PIECES("less-than-signs", "<"),
    PIECES("empty-comments", "<!---->"),
    PIECES("comments-unterminated", "<!-- a -"),
    PIECES("declarations", "<!DOCTYPE a><![CDATA[<?x"),
    PIECES("references", "&notit;&#x110000;&am"),
    PIECES("ampersands", "&"),
    PIECES("scripts", "<script></scrip>"),
    PIECES("titles", "<title><textarea></titl>"),
    PIECES("templates", "<template><td><select><option>"),
    PIECES("foreign", "<svg><p><math><annotation-xml>"),
    PIECES("tags-unterminated", "<a b='"),
    PIECES("breaks", "<br>"),
    PIECES("blanks", " \t\n"),
    PAGE("zeros", string(16 * n, '\0')),
    PAGE("attributes", "<a " + Series(n, [](size_t i) { return "a" + Number(i) + "=b "; }) + ">x"),
    PAGE("attribute", "<a title=\"" + string(16 * n, 'a') + "\">x"),
    PAGE("tag-name", "<" + string(16 * n, 'a') + ">x"),
    PAGE("word", string(16 * n, 'a')),
    PAGE("preformatted", "<pre>" + Repeat("a \n\t", n)),
    PAGE("columns", "<table><tr>" + Repeat("<td>a", n)),
    PAGE("rows", "<table>" + Repeat("<tr><td>a<td>b", n)),
    PAGE("spans", "<table>" + Repeat("<tr><td colspan=1000 rowspan=65534>a", n)),
    PAGE("deep-columns", Repeat("<table><tr><td>a<td>b", 600) + Repeat("<td>c", n)),
    PAGE("deep-text", Repeat("<div>", 600) + Repeat("<p>c", n)),
    PAGE("closed", Repeat("<div>", n) + Repeat("</div>", n)),
    PAGE("misclosed", Repeat("<div>", 500) + Repeat("<b></i>", n)),
    PAGE("crossed-deep", Repeat("<b>", 400) + Repeat("<p>a</p>", n)),
    PAGE("reference", "&" + string(16 * n, 'a') + ";"),
    PAGE("number", "&#" + string(16 * n, '9') + ";"),
    PAGE("metas", Repeat("<meta charset=x>", n)),
    PAGE("styles", Repeat("<p style='display:none;white-space:pre;'>a", n)),
    PAGE("style", "<p style='" + Repeat("a:b;", 4 * n) + "'>a"),
};

#undef PIECES
#undef PAGE

}  // namespace

std::span<const MessageClass> PageClasses() { return kClasses; }

}  // namespace mimora::hostile

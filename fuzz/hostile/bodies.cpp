// Copyright (c) 2026 the mimora developers.
//
// Bodies: encodings, uuencoded files, character sets, and bytes that are no text.
#include "hostile.h"

namespace mimora::hostile {
namespace {

using std::size_t;
using std::string;

string Plain(const string& body) { return Body("text/plain", "8bit", body); }
string Base64(const string& body) { return Body("application/pdf; name=a.pdf", "base64", body); }
string Quoted(const string& body) { return Body("text/plain", "quoted-printable", body); }
string InCharset(const string& charset, const string& body) {
  return Body("text/plain; charset=" + charset, "8bit", body);
}

// A byte sequence without a pattern, the same on every machine.
string Noise(size_t n) {
  string bytes(n, '\0');
  unsigned state = 1;
  for (char& c : bytes) {
    state = state * 1'664'525 + 1'013'904'223;
    c = static_cast<char>(state >> 24);
  }
  return bytes;
}

constexpr size_t kMany = 1'000'000;
constexpr size_t kLong = 16'000'000;

constexpr MessageClass kClasses[] = {
    {"base64-line", Unit::kNothing, kLong, [](size_t n) { return Base64(string(n, 'A')); }},
    {"base64-lines-of-one", Unit::kNothing, kLong / 2,
     [](size_t n) { return Base64(Repeat("A\n", n)); }},
    {"base64-padding", Unit::kNothing, kLong, [](size_t n) { return Base64(string(n, '=')); }},
    {"base64-pieces", Unit::kNothing, kLong / 4,
     [](size_t n) { return Base64(Repeat("QQ==", n)); }},
    {"base64-noise", Unit::kNothing, kLong, [](size_t n) { return Base64(Noise(n)); }},
    {"base64-text-line", Unit::kNothing, kLong,
     [](size_t n) { return Body("text/plain; charset=utf-7", "base64", string(n, 'K')); }},
    {"quoted-line", Unit::kNothing, kLong, [](size_t n) { return Quoted(string(n, 'a')); }},
    {"quoted-escapes", Unit::kNothing, kLong / 3,
     [](size_t n) { return Quoted(Repeat("=C3", n)); }},
    {"quoted-signs", Unit::kNothing, kLong, [](size_t n) { return Quoted(string(n, '=')); }},
    {"quoted-blanks", Unit::kNothing, kLong,
     [](size_t n) { return Quoted(string(n / 2, ' ') + "\n" + Repeat(" \t", n / 4)); }},
    {"quoted-soft-breaks", Unit::kNothing, kLong / 2,
     [](size_t n) { return Quoted(Repeat("=\n", n)); }},
    {"quoted-soft-blanks", Unit::kNothing, kLong / 8,
     [](size_t n) { return Quoted(Repeat("=   x= \n", n)); }},

    {"uu-begins", Unit::kNothing, kMany,
     [](size_t n) { return Plain(Repeat("begin 644 a\n", n)); }},
    {"uu-begins-with-lines", Unit::kNothing, kMany,
     [](size_t n) { return Plain(Repeat("begin 644 a\n#86)C\n", n)); }},
    {"uu-blocks", Unit::kFile, 400'000,
     [](size_t n) { return Plain(Repeat("begin 644 a\n#86)C\n`\nend\n", n)); }},
    {"uu-block-without-end", Unit::kNothing, kMany,
     [](size_t n) { return Plain("begin 644 a\n" + Repeat("#86)C\n", n)); }},
    {"uu-line", Unit::kNothing, kLong,
     [](size_t n) { return Plain("begin 644 " + string(n, 'M')); }},
    {"uu-names", Unit::kFile, 100'000,
     [](size_t n) {
       return Plain(Repeat("begin 644 " + string(900, 'a') + "\n#86)C\n`\nend\n", n / 10));
     }},
    {"uu-encoded", Unit::kNothing, kMany,
     [](size_t n) { return Body("text/plain", "x-uuencode", Repeat("begin 644 a\n#86)C\n", n)); }},
    {"uu-ends", Unit::kNothing, kMany,
     [](size_t n) { return Plain("begin 644 a\n" + Repeat("`\nbegin 6 a\nend\n", n / 4)); }},

    {"zeros-everywhere", Unit::kHeaderBytes, kLong, [](size_t n) { return string(n, '\0'); }},
    {"zeros-in-a-text", Unit::kNothing, kLong, [](size_t n) { return Plain(string(n, '\0')); }},
    {"noise", Unit::kNothing, kLong, [](size_t n) { return Plain(Noise(n)); }},
    {"line-ends", Unit::kNothing, kLong / 4, [](size_t n) { return Plain(Repeat("\r\n\n\r", n)); }},
    {"returns", Unit::kNothing, kLong, [](size_t n) { return Plain(string(n, '\r')); }},
    {"text-line", Unit::kNothing, kLong, [](size_t n) { return Plain(string(n, 'a')); }},

    {"charset-unknown", Unit::kNothing, kLong,
     [](size_t n) { return InCharset("x-unknown", string(n, '\xE9')); }},
    {"charset-cut", Unit::kNothing, kLong,
     [](size_t n) { return InCharset("utf-8", string(n, '\xF0')); }},
    {"charset-escapes", Unit::kNothing, kLong / 3,
     [](size_t n) { return InCharset("iso-2022-jp", Repeat("\x1B$B", n)); }},
    {"charset-escapes-cut", Unit::kNothing, kLong / 2,
     [](size_t n) { return InCharset("iso-2022-kr", Repeat("\x1B\x0E", n)); }},
    {"charset-shifts", Unit::kNothing, kLong / 2,
     [](size_t n) { return InCharset("utf-7", Repeat("+A", n)); }},
    {"charset-base64", Unit::kNothing, kLong,
     [](size_t n) { return InCharset("utf-7", "+" + string(n, 'A')); }},
    {"charset-tildes", Unit::kNothing, kLong / 2,
     [](size_t n) { return InCharset("hz-gb-2312", Repeat("~{", n)); }},
    {"charset-pairs", Unit::kNothing, kLong / 2,
     [](size_t n) { return InCharset("gb18030", Repeat("\x81\x30", n)); }},
    {"charset-compositions", Unit::kNothing, kLong / 4,
     [](size_t n) { return InCharset("windows-1258", Repeat("a\xCC\xEC\xDE", n)); }},
    {"charset-of-words", Unit::kNothing, kLong / 2,
     [](size_t n) { return InCharset("utf-16", Repeat("\xD8", n)); }},
};

}  // namespace

std::span<const MessageClass> BodyClasses() { return kClasses; }

}  // namespace mimora::hostile

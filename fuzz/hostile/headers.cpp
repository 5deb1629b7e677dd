// Copyright (c) 2026 the mimora developers.
//
// Header fields: how many, how long, and what stands in them.
#include "hostile.h"

namespace mimora::hostile {
namespace {

using std::size_t;
using std::string;

string Field(string value) { return "Subject: " + value + "\n\nx\n"; }

string ContentType(const string& parameters) {
  return "Content-Type: text/plain; " + parameters + "\n\nx\n";
}

string Attachment(const string& parameters) {
  return "Content-Disposition: attachment; " + parameters + "\n\nx\n";
}

constexpr size_t kMany = 1'000'000;
constexpr size_t kLong = 16'000'000;

// The names and texts of the letter are asked for again and again: From, Subject, the file's name.
constexpr MessageClass kClasses[] = {
    {"fields", Unit::kField, kMany,
     [](size_t n) {
       return Series(n, [](size_t i) { return "X-" + Number(i) + ": a\n"; }) + "\n";
     }},
    {"fields-of-one-name", Unit::kField, kMany,
     [](size_t n) { return Repeat("Received: a\n", n) + "\nx"; }},
    {"fields-of-a-colon", Unit::kField, 4 * kMany, [](size_t n) { return Repeat(":\n", n); }},
    {"header-without-end", Unit::kField, kMany, [](size_t n) { return Repeat("A: b\r\n", n); }},
    {"lines-that-are-no-fields", Unit::kNothing, kMany,
     [](size_t n) { return Repeat("no field\n", n) + "A: b\n\nx"; }},
    {"types", Unit::kField, kMany,
     [](size_t n) { return Repeat("Content-Type: text/html; charset=x\n", n) + "\nx"; }},
    {"headers-with-fields", Unit::kField, 400'000,
     [](size_t n) {
       return "Content-Type: multipart/mixed; boundary=b\n\n" +
              Repeat("--b\n" + Repeat("A: b\n", 100) + "\nx\n", n / 100);
     }},
    {"line", Unit::kHeaderBytes, kLong, [](size_t n) { return Field(string(n, 'a')); }},
    {"line-without-colon", Unit::kHeaderBytes, kLong,
     [](size_t n) { return string(n, 'a') + "\n\nx"; }},
    {"name", Unit::kHeaderBytes, kLong, [](size_t n) { return string(n, 'a') + ": b\n\nx"; }},
    {"line-without-end", Unit::kHeaderBytes, kLong,
     [](size_t n) { return "A: " + string(n, 'a'); }},
    {"blanks", Unit::kHeaderBytes, kLong, [](size_t n) { return Field(string(n, ' ') + "x"); }},
    {"folded-lines", Unit::kHeaderBytes, kMany,
     [](size_t n) { return Field("a" + Repeat("\n a", n)); }},
    {"folded-blanks", Unit::kHeaderBytes, kMany,
     [](size_t n) { return Field("a" + Repeat("\r\n\t \t", n)); }},
    {"folded-types", Unit::kHeaderBytes, kMany,
     [](size_t n) { return "Content-Type: text/plain" + Repeat(";\n a=b", n) + "\n\nx"; }},
    {"zeros", Unit::kHeaderBytes, kLong, [](size_t n) { return Field(string(n, '\0')); }},
    {"fields-of-zeros", Unit::kField, kMany,
     [](size_t n) { return Repeat(string("\0:\0\n", 4), n) + "\nx"; }},
    {"line-ends-mixed", Unit::kField, kMany,
     [](size_t n) { return Repeat("A: b\rB: c\nC: d\r\nD:\r e\n", n / 4) + "\n\r\rx"; }},

    {"parameters", Unit::kHeaderBytes, 400'000,
     [](size_t n) {
       return ContentType(Series(n, [](size_t i) { return "p" + Number(i) + "=v; "; }));
     }},
    {"parameters-of-one-name", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return ContentType(Repeat("name=\"v\"; charset=c; ", n)); }},
    {"parameters-of-nothing", Unit::kHeaderBytes, kMany,
     [](size_t n) { return ContentType(Repeat(";=;a;\"", n)); }},
    {"sections", Unit::kHeaderBytes, 400'000,
     [](size_t n) {
       return Attachment(Series(n, [](size_t i) { return "filename*" + Number(i) + "=v; "; }));
     }},
    {"sections-backwards", Unit::kHeaderBytes, 400'000,
     [](size_t n) {
       return Attachment(Series(
           n, [n](size_t i) { return "filename*" + Number(n - 1 - i) + "*=utf-8''%C3%A9; "; }));
     }},
    {"sections-again", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return Attachment(Repeat("filename*0=a; filename*1*=%41; ", n)); }},
    {"section-numbers", Unit::kHeaderBytes, 100'000,
     [](size_t n) {
       return Attachment(
           Series(n, [](size_t i) { return "filename*" + Number(i * 40'000'000'007) + "=v; "; }));
     }},
    {"sections-of-a-charset", Unit::kHeaderBytes, kMany,
     [](size_t n) { return Attachment("filename*=iso-2022-jp''" + Repeat("%1B$B%24", n)); }},
    {"comments", Unit::kHeaderBytes, kMany, [](size_t n) { return ContentType(Repeat("(a)", n)); }},
    {"comments-nested", Unit::kHeaderBytes, kLong,
     [](size_t n) { return ContentType(string(n, '(') + "a=b"); }},
    {"comments-in-turn", Unit::kHeaderBytes, kLong / 2,
     [](size_t n) { return ContentType(string(n, '(') + string(n, ')') + "name=b"); }},
    {"comments-unterminated", Unit::kHeaderBytes, kMany,
     [](size_t n) { return ContentType(Repeat("a=b;(\"\\)", n)); }},
    {"quoted-strings", Unit::kHeaderBytes, kMany,
     [](size_t n) { return ContentType("name=" + Repeat("\"a\" ", n)); }},
    {"quoted-unterminated", Unit::kHeaderBytes, kMany,
     [](size_t n) { return ContentType(Repeat("a=\"b;\\", n)); }},
    {"backslashes", Unit::kHeaderBytes, kLong,
     [](size_t n) { return ContentType("name=\"" + string(n, '\\')); }},

    {"encoded-words", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return Field(Repeat("=?utf-8?Q?=C3?= ", n)); }},
    {"encoded-words-of-charsets", Unit::kHeaderBytes, 400'000,
     [](size_t n) {
       return Field(Repeat("=?iso-2022-jp?B?GyRC?= =?x?Q?=41?= =?utf-7?Q?+?= ", n / 3));
     }},
    {"encoded-words-folded", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return Field(Repeat("=?utf-8?B?w6k=?=\r\n ", n)); }},
    {"encoded-words-unterminated", Unit::kHeaderBytes, kMany,
     [](size_t n) { return Field(Repeat("=?utf-8?Q?", n)); }},
    {"encoded-words-begun", Unit::kHeaderBytes, 4 * kMany,
     [](size_t n) { return Field(Repeat("=?", n)); }},
    {"encoded-word", Unit::kHeaderBytes, kLong,
     [](size_t n) { return Field("=?utf-8?B?" + string(n, 'A') + "?="); }},
    {"encoded-words-in-a-name", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return Attachment("filename=\"" + Repeat("=?utf-8?Q?a?= ", n) + "\""); }},
    {"name-of-megabytes", Unit::kHeaderBytes, kLong,
     [](size_t n) { return Attachment("filename=\"" + string(n, '/') + "\""); }},

    {"addresses", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return "From: " + Repeat("\"a\" <a@b> (c),\r\n ", n) + "\n\nx"; }},
    {"address-groups", Unit::kHeaderBytes, 400'000,
     [](size_t n) { return "From: " + Repeat("g: a@b, <@c,@d:e@f>;", n) + "\n\nx"; }},
    {"address-brackets", Unit::kHeaderBytes, kLong,
     [](size_t n) { return "From: " + string(n, '<') + "\nTo: " + string(n, '[') + "\n\nx"; }},
    {"type-of-megabytes", Unit::kHeaderBytes, kLong,
     [](size_t n) { return "Content-Type: " + string(n, 'a') + "/" + string(n, 'b') + "\n\nx"; }},
    {"encoding-of-megabytes", Unit::kHeaderBytes, kLong,
     [](size_t n) { return "Content-Transfer-Encoding: " + string(n, '(') + "\n\nx"; }},
    {"charset-of-megabytes", Unit::kHeaderBytes, kLong,
     [](size_t n) { return ContentType("charset=" + string(n, 'u')); }},
};

}  // namespace

std::span<const MessageClass> HeaderClasses() { return kClasses; }

}  // namespace mimora::hostile

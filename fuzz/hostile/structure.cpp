// Copyright (c) 2026 the mimora developers.
//
// Parts in parts, delimiters, and what looks like them.
#include "hostile.h"

namespace mimora::hostile {
namespace {

using std::size_t;
using std::string;

string Multipart(const string& boundary) {
  return "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\n\n";
}

string Level(const string& boundary) { return Multipart(boundary) + "--" + boundary + "\n"; }

// Boundaries b, bb, bbb and so on: each begins with all that enclose it.
string PrefixBoundaries(size_t n) {
  constexpr size_t kLevels = 90;
  return Series(kLevels, [](size_t i) { return Level(string(i + 1, 'b')); }) + "\n" +
         Series(n, [](size_t i) { return "--" + string(i * 37 % 120 + 1, 'b') + "-x\n"; });
}

string ManyBoundariesAtOnce(size_t n) {
  constexpr size_t kLevels = 95;
  return Series(kLevels, [](size_t i) { return Level("level" + Number(i)); }) + "\n" +
         Series(n, [](size_t i) { return "--level" + Number(i % 90) + "x\n"; });
}

// No line is a delimiter before its very last character.
string AlmostTheLongBoundary(size_t n) {
  const string boundary(900, 'x');
  return Level(boundary) + "\n" + Repeat("--" + boundary.substr(1) + "\n", n);
}

string Siblings(size_t n) {
  return Level("out") + Series(n, [](size_t i) {
           const string boundary = "in" + Number(i);
           return Level(boundary) + "\nx\n--" + boundary + "--\n--out\n";
         });
}

constexpr MessageClass kClasses[] = {
    {"nested-multiparts", Unit::kPart, 100'000,
     [](size_t n) { return Series(n, [](size_t i) { return Level("b" + Number(i)); }); }},
    {"nested-multiparts-closed", Unit::kPart, 100'000,
     [](size_t n) {
       return Series(n, [](size_t i) { return Level("b" + Number(i)); }) +
              Series(n, [n](size_t i) { return "\n--b" + Number(n - 1 - i) + "--\n"; });
     }},
    {"nested-messages", Unit::kPart, 100'000,
     [](size_t n) { return Repeat("Content-Type: message/rfc822\n\n", n); }},
    {"nested-in-turn", Unit::kPart, 100'000,
     [](size_t n) {
       return Series(n / 2, [](size_t i) {
         return Level("b" + Number(i)) + "Content-Type: message/rfc822\n\n";
       });
     }},
    {"one-boundary-on-all-levels", Unit::kPart, 100'000,
     [](size_t n) { return Repeat(Level("b"), n) + Repeat("\n--b--\n", n); }},
    {"prefix-boundaries", Unit::kNothing, 400'000, PrefixBoundaries},
    {"many-boundaries-at-once", Unit::kNothing, 400'000, ManyBoundariesAtOnce},
    {"almost-the-long-boundary", Unit::kNothing, 20'000, AlmostTheLongBoundary},
    {"many-parts", Unit::kPart, 400'000,
     [](size_t n) { return Multipart("b") + Repeat("--b\nA: b\n\nx\n", n) + "--b--\n"; }},
    {"parts-of-nothing", Unit::kPart, 400'000,
     [](size_t n) { return Multipart("b") + Repeat("--b\n\n", n); }},
    {"delimiter-lines", Unit::kPart, 1'000'000,
     [](size_t n) { return Multipart("b") + Repeat("--b\n", n); }},
    {"closing-delimiter-lines", Unit::kNothing, 1'000'000,
     [](size_t n) { return Level("b") + "\n" + Repeat("--b--\n", n); }},
    {"delimiters-with-padding", Unit::kPart, 20'000,
     [](size_t n) { return Multipart("b") + Repeat("--b--" + string(990, ' ') + "x\n", n); }},
    {"delimiter-of-blanks", Unit::kNothing, 16'000'000,
     [](size_t n) { return Level("b") + "\n\n--b--" + string(n, ' ') + "x\n\n--b--\n"; }},
    {"dash-lines", Unit::kNothing, 1'000'000,
     [](size_t n) { return Level("b") + "\n" + Repeat("--\n-\n--c\n", n); }},
    {"siblings", Unit::kPart, 100'000, Siblings},
    {"digest", Unit::kPart, 100'000,
     [](size_t n) {
       return "Content-Type: multipart/digest; boundary=b\n\n" + Repeat("--b\n\nA: b\n\nx\n", n);
     }},
    {"messages-side-by-side", Unit::kPart, 100'000,
     [](size_t n) {
       return Multipart("b") + Repeat("--b\nContent-Type: message/rfc822\n\nA: b\n\nx\n", n);
     }},
    {"preamble-of-dashes", Unit::kNothing, 16'000'000,
     [](size_t n) { return Multipart("b") + string(n, '-') + "\n--b\n\nx\n"; }},
    {"boundary-of-megabytes", Unit::kHeaderBytes, 1'000'000,
     [](size_t n) {
       const string boundary(n, 'b');
       return Level(boundary) + "\n" + Repeat("--bbbb\n", n / 8) + "--" + boundary + "--\n";
     }},
};

}  // namespace

std::span<const MessageClass> StructureClasses() { return kClasses; }

}  // namespace mimora::hostile

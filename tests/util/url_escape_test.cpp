// Copyright (c) 2026 the mimora developers.
#include "util/url_escape.h"

#include <gtest/gtest.h>

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

struct UrlCase {
  std::string_view text;
  std::string_view want;
};

TEST(EscapeUrl, ReplacesSevenCharacters) {
  constexpr UrlCase kCases[] = {
      {"", ""},
      {"a b?c=d&e", "a%20b%3fc%3dd%26e"},
      {":% ?+&=", "%3a%25%20%3f%2b%26%3d"},
      {"/.;@#<>\"\x01\x7F\x80\xFF%", "/.;@#<>\"\x01\x7F\x80\xFF%25"},
  };
  for (const UrlCase& c : kCases) {
    EXPECT_EQ(EscapeUrl(c.text), c.want);
    EXPECT_EQ(UnEscapeUrl(c.want), c.text);
  }
}

TEST(UnEscapeUrl, TakesAnything) {
  constexpr UrlCase kCases[] = {
      {"a+b%2Fc", "a b/c"},
      {"%zz", "\0"sv},
      {"%4x%x4", "@\4"},
      {"%fF%+1", "\xFF\1"},
      {"%%41",
       "\4"
       "1"},
      {"%41%4", "A@"},
      {"%41%", "A%"},
      {"%", "%"},
  };
  for (const UrlCase& c : kCases) EXPECT_EQ(UnEscapeUrl(c.text), c.want) << c.text;
}

}  // namespace
}  // namespace mimora::testing

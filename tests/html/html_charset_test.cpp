// Copyright (c) 2026 the mimora developers.
#include "html/html_charset.h"

#include <gtest/gtest.h>

#include <string>

namespace mimora::testing {
namespace {

TEST(HtmlCodePage, FindsWhatIsDeclared) {
  const std::string hostile(100'000, '<');
  const struct {
    const char* name;
    std::string html;
    uint32_t page;
  } cases[] = {
      {"nothing", "<p>charset=utf-8", 0},
      {"a mark", "\xEF\xBB\xBF<meta charset=koi8-r>", 65001},
      {"a mark of UTF-16", "\xFF\xFE<", 1200},
      {"meta", "<html><head><META CharSet=windows-1250>", 1250},
      {"quoted", "<meta charset = ' koi8-r '>", 20866},
      {"content type", "<meta http-equiv=Content-Type content='text/html; charset=shift_jis'>",
       932},
      {"in the other order", "<meta content=\"text/html;charset='big5'\" http-equiv=content-type>",
       950},
      {"another content", "<meta name=x content='charset=big5'><meta charset=koi8-r>", 20866},
      {"an XML declaration", "<?xml version='1.0' encoding=\"iso-8859-2\"?><html>", 28592},
      {"only in front", " <?xml encoding='iso-8859-2'?>", 0},
      {"in a comment", "<!-- <meta charset=koi8-r> --><meta charset=utf-8>", 65001},
      {"behind an empty comment", "<!--><meta charset=utf-8>", 65001},
      {"in an attribute", "<a title='<meta charset=koi8-r>'><meta charset=utf-8>", 65001},
      {"the first that is known", "<meta charset=x-none><meta charset=utf-8>", 65001},
      {"what cannot be", "<meta charset=utf-16>", 65001},
      {"another element", "<metal charset=utf-8>", 0},
      {"no end", "<meta charset=utf-8", 65001},
      {"no end of a value", "<meta charset='utf-8", 65001},
      {"nothing at all", "", 0},
      {"a lone sign", "<", 0},
      {"many signs", hostile, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(HtmlCodePage(c.html), c.page) << c.name;
}

}  // namespace
}  // namespace mimora::testing

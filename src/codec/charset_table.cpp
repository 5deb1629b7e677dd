// Copyright (c) 2026 the mimora developers.
#include "codec/charset_table.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

#include "platform/ascii.h"

namespace mimora {
namespace {

// Mail that calls itself plain ASCII is read as Central European: where it has other bytes after
// all, they are mostly that.
constexpr uint32_t kPageOfAscii = 1250;

struct Row {
  std::string_view charset;
  uint32_t code_page;
};

// Where a name stands twice, the first row counts; the other one only tells that there is such a
// page.
constexpr Row kRows[] = {
    {"ASMO-708", 708},
    {"DOS-720", 720},
    {"iso-8859-6", 28596},
    {"x-mac-arabic", 10004},
    {"windows-1256", 1256},
    {"ibm775", 775},
    {"iso-8859-4", 28594},
    {"windows-1257", 1257},
    {"ibm852", 852},
    {"iso-8859-2", 28592},
    {"x-mac-ce", 10029},
    {"windows-1250", 1250},
    {"EUC-CN", 51936},
    {"gb2312", 936},
    {"hz-gb-2312", 52936},
    {"x-mac-chinesesimp", 10008},
    {"big5", 950},
    {"x-Chinese-CNS", 20000},
    {"x-Chinese-Eten", 20002},
    {"x-mac-chinesetrad", 10002},
    {"cp866", 866},
    {"iso-8859-5", 28595},
    {"koi8-r", 20866},
    {"koi8-u", 21866},
    {"x-mac-cyrillic", 10007},
    {"windows-1251", 1251},
    {"x-Europa", 29001},
    {"x-IA5-German", 20106},
    {"ibm737", 737},
    {"iso-8859-7", 28597},
    {"x-mac-greek", 10006},
    {"windows-1253", 1253},
    {"ibm869", 869},
    {"DOS-862", 862},
    {"iso-8859-8-i", 38598},
    {"iso-8859-8", 28598},
    {"x-mac-hebrew", 10005},
    {"windows-1255", 1255},
    {"x-EBCDIC-Arabic", 20420},
    {"x-EBCDIC-CyrillicRussian", 20880},
    {"x-EBCDIC-CyrillicSerbianBulgarian", 21025},
    {"x-EBCDIC-DenmarkNorway", 20277},
    {"x-ebcdic-denmarknorway-euro", 1142},
    {"x-EBCDIC-FinlandSweden", 20278},
    {"x-ebcdic-finlandsweden-euro", 1143},
    {"x-ebcdic-finlandsweden-euro", 1143},
    {"x-ebcdic-france-euro", 1147},
    {"x-EBCDIC-Germany", 20273},
    {"x-ebcdic-germany-euro", 1141},
    {"x-EBCDIC-GreekModern", 875},
    {"x-EBCDIC-Greek", 20423},
    {"x-EBCDIC-Hebrew", 20424},
    {"x-EBCDIC-Icelandic", 20871},
    {"x-ebcdic-icelandic-euro", 1149},
    {"x-ebcdic-international-euro", 1148},
    {"x-EBCDIC-Italy", 20280},
    {"x-ebcdic-italy-euro", 1144},
    {"x-EBCDIC-JapaneseAndKana", 50930},
    {"x-EBCDIC-JapaneseAndJapaneseLatin", 50939},
    {"x-EBCDIC-JapaneseAndUSCanada", 50931},
    {"x-EBCDIC-JapaneseKatakana", 20290},
    {"x-EBCDIC-KoreanAndKoreanExtended", 50933},
    {"x-EBCDIC-KoreanExtended", 20833},
    {"CP870", 870},
    {"x-EBCDIC-SimplifiedChinese", 50935},
    {"X-EBCDIC-Spain", 20284},
    {"x-ebcdic-spain-euro", 1145},
    {"x-EBCDIC-Thai", 20838},
    {"x-EBCDIC-TraditionalChinese", 50937},
    {"CP1026", 1026},
    {"x-EBCDIC-Turkish", 20905},
    {"x-EBCDIC-UK", 20285},
    {"x-ebcdic-uk-euro", 1146},
    {"ebcdic-cp-us", 37},
    {"x-ebcdic-cp-us-euro", 1140},
    {"ibm861", 861},
    {"x-mac-icelandic", 10079},
    {"x-iscii-as", 57006},
    {"x-iscii-be", 57003},
    {"x-iscii-de", 57002},
    {"x-iscii-gu", 57010},
    {"x-iscii-ka", 57008},
    {"x-iscii-ma", 57009},
    {"x-iscii-or", 57007},
    {"x-iscii-pa", 57011},
    {"x-iscii-ta", 57004},
    {"x-iscii-te", 57005},
    {"euc-jp", 51932},
    {"iso-2022-jp", 50220},
    {"iso-2022-jp", 50222},
    {"csISO2022JP", 50221},
    {"x-mac-japanese", 10001},
    {"shift_jis", 932},
    {"ks_c_5601-1987", 949},
    {"euc-kr", 51949},
    {"iso-2022-kr", 50225},
    {"Johab", 1361},
    {"x-mac-korean", 10003},
    {"iso-8859-3", 28593},
    {"iso-8859-15", 28605},
    {"x-IA5-Norwegian", 20108},
    {"IBM437", 437},
    {"x-IA5-Swedish", 20107},
    {"windows-874", 874},
    {"ibm857", 857},
    {"iso-8859-9", 28599},
    {"x-mac-turkish", 10081},
    {"windows-1254", 1254},
    {"unicode", 1200},
    {"utf-16", 1200},
    {"unicodeFFFE", 1201},
    {"utf-7", 65000},
    {"utf-8", 65001},
    {"us-ascii", 20127},
    {"windows-1258", 1258},
    {"ibm850", 850},
    {"x-IA5", 20105},
    {"iso-8859-1", 28591},
    {"macintosh", 10000},
    {"Windows-1252", 1252},
};

// Further names from real mail. GB 18030 text is GBK text, but for the rarest characters.
constexpr Row kAliases[] = {
    {"utf8", 65001},
    {"unicode-1-1-utf-8", 65001},
    {"unicode-1-1-utf-7", 65000},
    {"utf7", 65000},
    {"utf-16le", 1200},
    {"utf-16be", 1201},
    {"ascii", kPageOfAscii},
    {"us", kPageOfAscii},
    {"ansi-x3.4-1968", kPageOfAscii},
    {"iso646-us", kPageOfAscii},
    {"iso-646", kPageOfAscii},
    {"latin1", 28591},
    {"latin-1", 28591},
    {"l1", 28591},
    {"latin2", 28592},
    {"latin-2", 28592},
    {"l2", 28592},
    {"latin5", 28599},
    {"latin9", 28605},
    {"latin-9", 28605},
    {"arabic", 28596},
    {"cyrillic", 28595},
    {"greek", 28597},
    {"hebrew", 28598},
    {"logical", 28598},
    {"visual", 28598},
    {"iso-8859-8-e", 28598},
    {"iso-8859-11", 874},
    {"tis-620", 874},
    {"koi8", 20866},
    {"cskoi8r", 20866},
    {"koi8-ru", 21866},
    {"gbk", 936},
    {"x-gbk", 936},
    {"ms936", 936},
    {"gb18030", 936},
    {"gb-2312-80", 936},
    {"gb2312-80", 936},
    {"csgb2312", 936},
    {"chinese", 936},
    {"hz", 52936},
    {"big5-hkscs", 950},
    {"big-5", 950},
    {"x-big5", 950},
    {"x-x-big5", 950},
    {"cn-big5", 950},
    {"csbig5", 950},
    {"sjis", 932},
    {"x-sjis", 932},
    {"shift-jis", 932},
    {"csshiftjis", 932},
    {"ms-kanji", 932},
    {"windows-31j", 932},
    {"x-euc-jp", 51932},
    {"eucjp", 51932},
    {"cseucpkdfmtjapanese", 51932},
    {"iso-2022-jp-1", 50220},
    {"iso-2022-jp-ms", 50221},
    {"ks-c-5601", 949},
    {"ksc-5601", 949},
    {"ksc5601", 949},
    {"ks-c-5601-1989", 949},
    {"korean", 949},
    {"uhc", 949},
    {"euckr", 51949},
    {"cseuckr", 51949},
    {"csiso2022kr", 50225},
    {"mac", 10000},
    {"x-mac-roman", 10000},
};

template <size_t kCount>
constexpr uint32_t FindRow(const Row (&rows)[kCount], std::string_view charset) {
  const Row* row = std::find_if(std::begin(rows), std::end(rows), [charset](const Row& candidate) {
    return EqualIgnoringCase(candidate.charset, charset);
  });
  return row != std::end(rows) ? row->code_page : 0;
}

bool IsPageOfTable(uint32_t page) { return !CharsetOfPage(page).empty(); }

// The number that a name consists of behind the prefix; nothing when it is something else.
std::optional<uint32_t> NumberBehind(std::string_view name, std::string_view prefix) {
  constexpr size_t kMostDigits = 5;
  if (!EqualIgnoringCase(name.substr(0, prefix.size()), prefix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  if (name.empty() || name.size() > kMostDigits) return std::nullopt;
  if (!std::all_of(name.begin(), name.end(), IsDigit)) return std::nullopt;
  uint32_t number = 0;
  for (const char digit : name) number = 10 * number + static_cast<uint32_t>(digit - '0');
  return number;
}

// "cp1250", "ibm-852": the page in plain words. "iso8859-2": the standard's name as it is often
// misspelt.
uint32_t FindNumberedPage(std::string_view name) {
  constexpr std::string_view kPagePrefixes[] = {"windows-", "windows", "win-",   "x-win",
                                                "cp",       "cp-",     "x-cp",   "x-cp-",
                                                "ibm",      "ibm-",    "x-ibm-", "ms"};
  for (const std::string_view prefix : kPagePrefixes) {
    const auto number = NumberBehind(name, prefix);
    if (number && IsPageOfTable(*number)) return *number;
  }
  const auto latin = NumberBehind(name, "iso8859-");
  return latin ? LookupCodePage("iso-8859-" + std::to_string(*latin)) : 0;
}

}  // namespace

uint32_t LookupCodePage(std::string_view charset) {
  return EqualIgnoringCase(charset, "us-ascii") ? kPageOfAscii : FindRow(kRows, charset);
}

uint32_t PageOfCharset(std::string_view charset) {
  if (const uint32_t page = LookupCodePage(charset)) return page;
  // "koi8_r", "ISO_8859-1:1987"
  std::string name(charset.substr(0, charset.find(':')));
  std::replace(name.begin(), name.end(), '_', '-');
  if (const uint32_t page = LookupCodePage(name)) return page;
  if (const uint32_t page = FindRow(kAliases, name)) return page;
  return FindNumberedPage(name);
}

std::string_view CharsetOfPage(uint32_t page) {
  const Row* row = std::find_if(std::begin(kRows), std::end(kRows),
                                [page](const Row& any) { return any.code_page == page; });
  return row != std::end(kRows) ? row->charset : std::string_view();
}

bool IsUnicodeCharset(std::string_view charset) { return LookupCodePage(charset) == kUtf16Page; }

bool SameCodePage(std::string_view a, std::string_view b) {
  const uint32_t page = PageOfCharset(a);
  return page != 0 && page == PageOfCharset(b);
}

}  // namespace mimora

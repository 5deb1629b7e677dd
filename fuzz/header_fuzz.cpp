// Copyright (c) 2026 the mimora developers.
//
// Header values: parameters, and encoded words in both directions.
#include "api/frame.h"
#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "codec/encoded_word.h"
#include "fuzz.h"
#include "mime/field_value.h"
#include "mimora/mimora.h"
#include "platform/ascii.h"

namespace mimora::fuzz {
namespace {

constexpr std::string_view kParameters[] = {"name", "filename", "charset", "boundary"};
constexpr std::string_view kCharsets[] = {"utf-8",        "iso-8859-2", "windows-1250",
                                          "iso-2022-jp",  "shift_jis",  "gb2312",
                                          "windows-1252", "utf-7",      ""};
constexpr std::string_view kEncodings[] = {"B", "Q", ""};

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// Whether the text comes back as it is: some pages have several ways to write a character.
bool Holds(std::string_view text, uint32_t page) { return TranslateText(text, page, page) == text; }

// A byte-order mark is one only in front.
bool IsUtf8(std::string_view text) { return Holds("x" + std::string(text), kUtf8Page); }

void CheckParameters(const std::string& value) {
  const ExactCopy copy_of_value(value);
  const FieldValue field(copy_of_value.Text());
  std::string scratch;
  FUZZ_CHECK(field.Main() == field.Main(scratch));
  field.Type(scratch);
  Bodypart part;
  part.Header.Append("Content-Type", value);
  for (const std::string_view name : kParameters) {
    const auto found = field.FindParameter(name, scratch);
    FUZZ_CHECK(found.has_value() == field.Parameter(name).has_value());
    if (!found) continue;
    FUZZ_CHECK(!found->is_utf8 || IsUtf8(found->text));
    FUZZ_CHECK(found->text.size() <= 3 * value.size());
    const std::string parameter(name);
    const auto copy = [&](char* buffer, uint32_t* size) {
      return M_MimeParameter(ToHandle(&part), "content-type", parameter.c_str(), buffer, size);
    };
    FUZZ_CHECK(Copied(copy, 1, 0) == found->text);
  }
}

void CheckDecoded(const std::string& value, std::string_view charset) {
  const std::string decoded = DecodeEncodedWords(value, charset);
  FUZZ_CHECK(decoded.find_first_of("\r\n") == std::string::npos);
  if (charset == "utf-8" && IsAscii(value)) FUZZ_CHECK(IsUtf8(decoded));
  const std::string target(charset);
  const auto copy = [&](char* buffer, uint32_t* size) {
    return M_DecodeHeaderFieldValue(value.c_str(), target.c_str(), buffer, size);
  };
  FUZZ_CHECK(Copied(copy, 0, 1) == decoded);
}

// They are short and stand alone.
void CheckWords(std::string_view value) {
  for (size_t at = 0; (at = value.find("=?", at)) != std::string_view::npos;) {
    FUZZ_CHECK(at == 0 || IsBlank(value[at - 1]));
    const size_t end = std::min(value.find_first_of(" \t\r", at), value.size());
    FUZZ_CHECK(end - at <= 75 && value.substr(at, end - at).ends_with("?="));
    at = end;
  }
}

// An encoded word in front of an address gets a blank behind it.
bool HasGluedAddress(std::string_view value) {
  for (size_t at = 0; (at = value.find('<', at + 1)) != std::string_view::npos;)
    if (!IsBlank(value[at - 1])) return true;
  return false;
}

// Outside encoded words a plus sign stands for itself.
bool HasUtf7Plus(std::string_view value, std::string_view charset) {
  return charset == "utf-7" && value.find("+-") != std::string_view::npos;
}

void CheckEncoded(std::string_view value, std::string_view charset, std::string_view encoding) {
  const std::string encoded = EncodeWords(value, charset, encoding, kUnknownColumn);
  const bool has_controls = std::any_of(value.begin(), value.end(), IsControl);
  // With controls, and in UTF-7, ASCII may stand for other characters.
  FUZZ_CHECK(encoded == value || !IsAscii(value) || has_controls || charset == "utf-7");
  FUZZ_CHECK(IsAscii(encoded));
  if (encoded == value) return;
  CheckWords(encoded);
  const uint32_t page = PageOfHeaderCharset(charset);
  if (page == 0 || has_controls || !Holds(value, page)) return;
  if (HasGluedAddress(value) || HasUtf7Plus(value, charset)) return;
  FUZZ_CHECK(DecodeEncodedWords(encoded, charset) == value);
}

}  // namespace

void CheckInput(Input input) {
  const std::string_view charset = input.Choose(kCharsets);
  const std::string_view encoding = input.Choose(kEncodings);
  std::string value(input.Rest());
  std::erase(value, '\0');
  CheckParameters(value);
  CheckDecoded(value, charset);
  CheckEncoded(value, charset, encoding);
}

}  // namespace mimora::fuzz

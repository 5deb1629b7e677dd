// Copyright (c) 2026 the mimora developers.
#include <iconv.h>

#include <array>
#include <cerrno>
#include <string>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora::platform {
namespace {

// The charsets of real mail. A name out of a message is never handed to iconv itself: it would
// load any module of the system that goes by that name.
constexpr std::array<std::string_view, 36> kCharsets = {
    "US-ASCII",     "UTF-8",        "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",
    "ISO-8859-5",   "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-10",
    "ISO-8859-13",  "ISO-8859-14",  "ISO-8859-15",  "ISO-8859-16",  "WINDOWS-1250", "WINDOWS-1251",
    "WINDOWS-1252", "WINDOWS-1253", "WINDOWS-1254", "WINDOWS-1255", "WINDOWS-1256", "WINDOWS-1257",
    "WINDOWS-1258", "KOI8-R",       "KOI8-U",       "IBM852",       "SHIFT_JIS",    "EUC-JP",
    "ISO-2022-JP",  "GB2312",       "GBK",          "GB18030",      "BIG5",         "EUC-KR"};

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

const char* FindCharset(std::string_view name) {
  for (std::string_view known : kCharsets) {
    if (EqualIgnoringCase(known, name)) return known.data();
  }
  return nullptr;
}

class Converter {
 public:
  explicit Converter(const char* charset) : handle_(iconv_open("UTF-8", charset)) {}
  ~Converter() {
    if (Open()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  bool Open() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  std::string Convert(std::string text) {
    std::string utf8;
    char* next = text.data();
    size_t left = text.size();
    while (left > 0) {
      const int error = Step(&next, &left, utf8);
      if (error == 0 || error == E2BIG) continue;
      utf8 += kReplacement;
      ++next;
      --left;
    }
    // A charset that composes letters may still hold one back.
    Step(nullptr, nullptr, utf8);
    return utf8;
  }

 private:
  int Step(char** next, size_t* left, std::string& utf8) {
    std::array<char, 1024> piece;
    char* out = piece.data();
    size_t room = piece.size();
    const size_t result = iconv(handle_, next, left, &out, &room);
    const int error = result == static_cast<size_t>(-1) ? errno : 0;
    utf8.append(piece.data(), piece.size() - room);
    return error;
  }

  iconv_t handle_;
};

}  // namespace

bool RecodeToUtf8(std::string_view charset, std::string_view text, std::string& utf8) {
  const char* known = FindCharset(charset);
  if (known == nullptr) return false;
  Converter converter(known);
  if (!converter.Open()) return false;
  utf8 = converter.Convert(std::string(text));
  return true;
}

}  // namespace mimora::platform

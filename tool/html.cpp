// Copyright (c) 2026 the mimora developers.
#include "tool/html.h"

#include <algorithm>
#include <limits>

#include "tool/body_stream.h"
#include "tool/locale_charset.h"
#include "tool/message.h"
#include "tool/texts.h"

namespace mimora::tool {
namespace {

constexpr const char* kUtf16 = "utf-16";
constexpr const char* kWesternEuropean = "windows-1252";

// The library translates the bodies of texts: the bytes are made one. Nothing when it does not know
// the set.
std::optional<std::string> Translate(std::string_view bytes, const std::string& from,
                                     const char* to) {
  // What is no name would spoil the header.
  const auto is_part_of_name = [](char c) { return c > ' ' && c < 0x7F && c != '"' && c != '\\'; };
  if (from.empty() || !std::ranges::all_of(from, is_part_of_name)) return std::nullopt;
  const std::string text =
      "Content-Type: text/html; charset=\"" + from + "\"\r\n\r\n" + std::string(bytes);
  if (text.size() > std::numeric_limits<int32_t>::max()) throw MessageError("the text is too long");
  const MessageHandle part(M_CreateMessage());
  if (part == nullptr) throw std::bad_alloc();
  CheckResult(M_LoadBodypartFromBuffer(part.get(), text.data(), static_cast<int32_t>(text.size())));
  std::string translated;
  const int32_t result = StreamBody(
      [&](S_OutStream* stream) {
        return M_SaveBodypartBody(part.get(), nullptr, to, nullptr, stream);
      },
      [&translated](std::string_view piece) { translated += piece; });
  if (result == MIMORA_E_CHARSET) return std::nullopt;
  CheckResult(result);
  return translated;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = FirstUtf8(text).length;
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

// What a document without a label is in.
std::string DeclaredCharset(std::string_view html) {
  const uint32_t page = P_GetHTMLCodePage(std::string(html).c_str());
  if (page != 0) return "cp" + std::to_string(page);
  return IsUtf8(html) ? kUtf8 : kWesternEuropean;
}

std::u16string Wide(std::string_view html, const std::string& from) {
  std::optional<std::string> bytes = Translate(html, from, kUtf16);
  if (!bytes) bytes = Translate(html, DeclaredCharset(html), kUtf16);
  if (!bytes) bytes = Translate(html, kWesternEuropean, kUtf16);
  std::u16string wide(bytes->size() / 2, u'\0');
  for (std::size_t i = 0; i < wide.size(); ++i) {
    const auto low = static_cast<unsigned char>((*bytes)[2 * i]);
    const auto high = static_cast<unsigned char>((*bytes)[2 * i + 1]);
    wide[i] = static_cast<char16_t>(high << 8 | low);
  }
  if (wide.starts_with(u'\uFEFF')) wide.erase(0, 1);
  // A zero would end the document for the library.
  std::erase(wide, u'\0');
  return wide;
}

std::u16string VisibleText(const std::u16string& html) {
  // Text is hardly ever longer than its markup.
  std::u16string text(html.size() + 1, u'\0');
  auto room = static_cast<uint32_t>(text.size());
  bool copied = M_HTMLToText(html.c_str(), text.data(), &room) == 1;
  if (!copied) {
    text.resize(room);
    copied = M_HTMLToText(html.c_str(), text.data(), &room) == 1;
  }
  text.resize(copied ? room - 1 : 0);
  return text;
}

}  // namespace

std::string RenderHtml(std::string_view html, const std::string& from, const char* to) {
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : VisibleText(Wide(html, from))) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return Translate(bytes, kUtf16, to).value_or("");
}

M_Bodypart* FindHtmlLetter(M_Bodypart* part) {
  const int32_t count = M_GetChildBodypartsCount(part);
  for (int32_t i = 0; i < count; ++i) {
    if (M_Bodypart* found = FindHtmlLetter(M_GetNthChildBodypart(part, i))) return found;
  }
  const auto disposition = CopiedText(
      [part](char* buffer, uint32_t* size) { return M_GetContentDisposition(part, buffer, size); });
  const bool attached = disposition && LowerCase(*disposition) == "attachment";
  return count == 0 && !attached && AttachmentType(part, 0) == "text/html" ? part : nullptr;
}

}  // namespace mimora::tool

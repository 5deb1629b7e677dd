// Copyright (c) 2026 the mimora developers.
#include "tool/html.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

#include "tool/body_stream.h"
#include "tool/locale_charset.h"
#include "tool/message.h"
#include "tool/texts.h"

namespace mimora::tool {
namespace {

constexpr const char* kUtf16 = "utf-16";
constexpr const char* kWesternEuropean = "windows-1252";

// The library translates the bodies of texts: the bytes are made one. False, and nothing is taken,
// when it does not know the set.
bool Translate(std::string_view bytes, const std::string& from, const char* to,
               const TakeBytes& take) {
  // What is no name would spoil the header.
  const auto is_part_of_name = [](char c) { return c > ' ' && c < 0x7F && c != '"' && c != '\\'; };
  if (from.empty() || !std::ranges::all_of(from, is_part_of_name)) return false;
  std::string text = "Content-Type: text/html; charset=\"" + from + "\"\r\n\r\n";
  text.reserve(text.size() + bytes.size());
  text += bytes;
  if (text.size() > std::numeric_limits<int32_t>::max()) throw MessageError("the text is too long");
  const MessageHandle part(M_CreateMessage());
  if (part == nullptr) throw std::bad_alloc();
  CheckResult(M_LoadBodypartFromBuffer(part.get(), text.data(), static_cast<int32_t>(text.size())));
  const int32_t result = StreamBody(
      [&](S_OutStream* stream) {
        return M_SaveBodypartBody(part.get(), nullptr, to, nullptr, stream);
      },
      take);
  if (result == MIMORA_E_CHARSET) return false;
  CheckResult(result);
  return true;
}

// Puts UTF-16 together from pieces that may end inside a unit.
class UnitReader {
 public:
  explicit UnitReader(std::u16string& text) : text_(text) {}

  void Take(std::string_view piece) {
    if (low_ && !piece.empty()) {
      Append(std::string{*low_, piece[0]});
      piece.remove_prefix(1);
      low_.reset();
    }
    Append(piece);
    if (piece.size() % 2 != 0) low_ = piece.back();
  }

 private:
  // Zeros are left out: one would end the document for the library.
  void Append(std::string_view piece) {
    const std::size_t begin = text_.size();
    text_.resize(begin + piece.size() / 2);
    char16_t* const units = text_.data() + begin;
    bool has_zeros = false;
    for (std::size_t i = 0; i < piece.size() / 2; ++i) {
      const auto low = static_cast<unsigned char>(piece[2 * i]);
      const auto high = static_cast<unsigned char>(piece[2 * i + 1]);
      units[i] = static_cast<char16_t>(high << 8 | low);
      has_zeros |= units[i] == 0;
    }
    if (has_zeros)
      text_.erase(
          std::remove(text_.begin() + static_cast<std::ptrdiff_t>(begin), text_.end(), u'\0'),
          text_.end());
  }

  std::u16string& text_;
  std::optional<char> low_;  // of a unit that the next piece goes on with
};

// Most documents are in UTF-8, and the way through a body is long. False when this one is not.
bool WidenUtf8(std::string_view text, std::u16string& wide) {
  while (!text.empty()) {
    const auto needs_more = [](char c) { return static_cast<signed char>(c) <= 0; };
    const auto* const stop = std::ranges::find_if(text, needs_more);
    wide.append(text.begin(), stop);
    text.remove_prefix(static_cast<std::size_t>(stop - text.begin()));
    if (text.empty()) break;
    const auto [code, length] = FirstUtf8(text);
    if (length == 0) return wide.clear(), false;
    if (code > 0xFFFF) wide += static_cast<char16_t>(0xD7C0 + (code >> 10));
    if (code != 0) wide += static_cast<char16_t>(code > 0xFFFF ? 0xDC00 + (code & 0x3FF) : code);
    text.remove_prefix(length);
  }
  return true;
}

// What a document says that it is in; empty when it does not.
std::string DeclaredCharset(std::string_view html) {
  const uint32_t page = P_GetHTMLCodePage(std::string(html).c_str());
  return page != 0 ? "cp" + std::to_string(page) : "";
}

bool IsUtf8Name(const std::string& charset) {
  return charset == "cp65001" || LowerCase(charset) == kUtf8;
}

std::u16string Wide(std::string_view html, const std::string& from) {
  std::u16string wide;
  wide.reserve(html.size());
  UnitReader reader(wide);
  const auto translate = [&](const std::string& charset) {
    return Translate(html, charset, kUtf16, [&](std::string_view piece) { reader.Take(piece); });
  };
  const auto read = [&](const std::string& charset) {
    return (IsUtf8Name(charset) && WidenUtf8(html, wide)) || translate(charset);
  };
  if (!read(from)) {
    const std::string declared = DeclaredCharset(html);
    const bool done = declared.empty() ? WidenUtf8(html, wide) : read(declared);
    if (!done) translate(kWesternEuropean);
  }
  if (wide.starts_with(u'\uFEFF')) wide.erase(0, 1);
  return wide;
}

std::u16string VisibleText(const std::u16string& html) {
  // Text is hardly ever longer than its markup and mostly much shorter: the memory is not touched.
  auto room = static_cast<uint32_t>(html.size() + 1);
  auto text = std::make_unique_for_overwrite<char16_t[]>(room);
  if (M_HTMLToText(html.c_str(), text.get(), &room) == 0) {
    text = std::make_unique_for_overwrite<char16_t[]>(room);
    if (M_HTMLToText(html.c_str(), text.get(), &room) == 0) return {};
  }
  return {text.get(), room - 1};
}

}  // namespace

std::string RenderHtml(std::string_view html, const std::string& from, const char* to) {
  const std::u16string visible = VisibleText(Wide(html, from));
  std::string bytes(2 * visible.size(), '\0');
  for (std::size_t i = 0; i < visible.size(); ++i) {
    bytes[2 * i] = static_cast<char>(visible[i] & 0xFF);
    bytes[2 * i + 1] = static_cast<char>(visible[i] >> 8);
  }
  std::string text;
  Translate(bytes, "utf-16le", to, [&text](std::string_view piece) { text += piece; });
  return text;
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

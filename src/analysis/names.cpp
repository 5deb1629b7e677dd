// Copyright (c) 2026 the mimora developers.
#include "analysis/names.h"

#include <algorithm>

#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "codec/encoded_word.h"
#include "platform/ascii.h"

namespace mimora {
namespace {

// Whether a text begins with a line end that folds a line: blanks follow, and something behind
// them.
bool BeginsWithFolding(std::string_view text) {
  if (!text.starts_with("\r\n")) return false;
  const std::string_view behind = TrimLeft(text.substr(2), IsBlank);
  return behind.size() < text.size() - 2 && !behind.empty() && !IsLineEnd(behind[0]);
}

// Leaves folding as it is; any other line end becomes a space.
std::string KeepFolding(std::string_view value) {
  std::string kept(value);
  for (size_t at = 0; at < kept.size(); ++at) {
    if (BeginsWithFolding(std::string_view(kept).substr(at))) {
      ++at;
    } else if (IsLineEnd(kept[at])) {
      kept[at] = ' ';
    }
  }
  return kept;
}

}  // namespace

std::string BodypartName(const Bodypart& part, std::string_view target_charset) {
  std::string scratch;
  auto name = part.Field("Content-Type").FindParameter("name", scratch);
  if (!name || name->text.empty()) {
    name = part.Field("Content-Disposition").FindParameter("filename", scratch);
  }
  if (!name) return {};
  if (!name->is_utf8) return DecodeEncodedWords(name->text, target_charset);
  std::string text = DecodeEncodedWords(name->text, {});
  const uint32_t target = PageOfHeaderCharset(target_charset);
  return target != 0 ? TranslateText(text, kUtf8Page, target) : text;
}

std::string AttachmentName(const Bodypart& part, int32_t number, std::string_view target_charset) {
  if (number == 0) return BodypartName(part, target_charset);
  const EmbeddedAttachment* file = part.Embedded(number);
  return file != nullptr ? file->Name : std::string();
}

bool AddHeaderField(Bodypart& part, std::string_view name, std::string_view value) {
  constexpr size_t kSeparator = 2;
  const auto is_name_letter = [](char c) { return c > ' ' && c < 0x7F && c != ':'; };
  if (name.empty() || !std::all_of(name.begin(), name.end(), is_name_letter)) return false;
  const std::string folded = KeepFolding(value);
  // The name may be that of another field here, which moves when there is no room for one more.
  part.Header.Append(std::string(name), EncodeWords(folded, {}, {}, name.size() + kSeparator));
  return true;
}

}  // namespace mimora

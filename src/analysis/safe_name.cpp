// Copyright (c) 2026 the mimora developers.
#include "analysis/safe_name.h"

#include <algorithm>

#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "platform/ascii.h"

namespace mimora {
namespace {

// File systems take 255 bytes; the number that makes a name unique needs some.
constexpr size_t kLongestName = 240;
constexpr size_t kLongestExtension = 40;

struct Range {
  std::string_view first;
  std::string_view last;
};

// What is not seen, or reads in the other direction, in UTF-8: with such marks "gpj.exe" shows as
// "exe.jpg". Line separators are among them.
constexpr Range kUnsafe[] = {{"\xC2\x80", "\xC2\x9F"},         {"\xC2\xAD", "\xC2\xAD"},
                             {"\xD8\x9C", "\xD8\x9C"},         {"\xE2\x80\x8B", "\xE2\x80\x8F"},
                             {"\xE2\x80\xA8", "\xE2\x80\xAE"}, {"\xE2\x81\xA0", "\xE2\x81\xAF"},
                             {"\xEF\xBB\xBF", "\xEF\xBB\xBF"}};

// How many bytes of that the text begins with.
size_t UnsafeSize(std::string_view text) {
  if (IsControl(text[0])) return 1;
  for (const Range& range : kUnsafe) {
    const std::string_view start = text.substr(0, range.first.size());
    if (start >= range.first && start <= range.last) return start.size();
  }
  return 0;
}

std::string ReplaceUnsafe(std::string_view name) {
  std::string safe;
  while (!name.empty()) {
    const size_t unsafe = UnsafeSize(name);
    safe += unsafe != 0 ? '_' : name[0];
    name.remove_prefix(std::max<size_t>(unsafe, 1));
  }
  return safe;
}

// Names that some systems take for devices, whatever extension they have.
bool IsDevice(std::string_view name) {
  constexpr std::string_view kDevices[] = {"CON", "PRN", "AUX", "NUL"};
  const std::string stem = UpperCase(TrimRight(name.substr(0, name.find('.')), IsBlank));
  const bool numbered = stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) &&
                        IsDigit(stem.back());
  return numbered ||
         std::find(std::begin(kDevices), std::end(kDevices), stem) != std::end(kDevices);
}

// Where the extension begins, with its dot; the end when there is none.
size_t FindExtension(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? name.size() : dot;
}

// Cuts the stem, but not inside a character.
std::string Shorten(std::string_view name) {
  if (name.size() <= kLongestName) return std::string(name);
  std::string_view extension = name.substr(FindExtension(name));
  if (extension.size() > kLongestExtension) extension = {};
  size_t cut = kLongestName - extension.size();
  while (cut > 0 && (static_cast<uint8_t>(name[cut]) & 0xC0) == 0x80) --cut;
  return std::string(name.substr(0, cut)).append(extension);
}

}  // namespace

std::string SafeFileName(std::string_view name) {
  const auto is_end = [](char c) { return c == '.' || IsSpace(c); };
  // Not every file system takes bytes that are no text.
  const std::string text = TranslateText(name, kUtf8Page, kUtf8Page);
  name = text;
  name.remove_prefix(std::min(name.find_last_of("/\\") + 1, name.size()));
  const std::string shown = ReplaceUnsafe(TrimLeft(name, is_end));
  std::string safe = Shorten(TrimRight(shown, is_end));
  safe.resize(TrimRight(safe, is_end).size());
  // Nor what a command would take for an option.
  if (IsDevice(safe) || safe.starts_with('-')) safe.insert(0, 1, '_');
  return safe;
}

std::string UniqueNames::Next(const std::string& name) {
  const size_t extension = FindExtension(name);
  int& number = used_[UpperCase(name)];
  std::string unique = name;
  while (++number > 1) {
    unique = name;
    unique.insert(extension, " (" + std::to_string(number) + ")");
    if (used_.try_emplace(UpperCase(unique), 1).second) break;
  }
  return unique;
}

}  // namespace mimora

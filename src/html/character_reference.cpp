// Copyright (c) 2026 the mimora developers.
#include "html/character_reference.h"

#include <algorithm>

#include "html/named_entity.h"
#include "html/units.h"

namespace mimora {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr uint32_t kHighest = 0x10FFFF;

// 80 to 9F as windows-1252 has them.
constexpr char16_t kC1[] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                            0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

uint32_t CharacterOf(uint32_t number) {
  if (number == 0 || number > kHighest || (number >= 0xD800 && number <= 0xDFFF))
    return kReplacement;
  return number >= 0x80 && number <= 0x9F ? kC1[number - 0x80] : number;
}

void SetText(uint32_t character, CharacterReference& reference) {
  if (character <= 0xFFFF) {
    reference.text[0] = static_cast<char16_t>(character);
    reference.units = 1;
    return;
  }
  reference.text[0] = static_cast<char16_t>(0xD7C0 + (character >> 10));
  reference.text[1] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
  reference.units = 2;
}

// MARKUP begins with "&#".
CharacterReference ReadNumber(std::u16string_view markup) {
  const bool hexadecimal = markup.size() > 2 && (markup[2] == 'x' || markup[2] == 'X');
  const int base = hexadecimal ? 16 : 10;
  const size_t begin = hexadecimal ? 3 : 2;
  size_t at = begin;
  uint32_t number = 0;
  for (; at < markup.size(); ++at) {
    const int digit = DigitValue(markup[at]);
    if (digit < 0 || digit >= base) break;
    number =
        std::min(number * static_cast<uint32_t>(base) + static_cast<uint32_t>(digit), kHighest + 1);
  }
  CharacterReference reference;
  if (at == begin) return reference;
  reference.length = at < markup.size() && markup[at] == ';' ? at + 1 : at;
  SetText(CharacterOf(number), reference);
  return reference;
}

std::string_view NameOf(const NamedEntity& entity) {
  return {kEntityNames + entity.name, entity.length};
}

const NamedEntity* FindEntity(std::string_view name) {
  const NamedEntity* const end = kNamedEntities + kNamedEntityCount;
  const NamedEntity* const found = std::lower_bound(
      kNamedEntities, end, name,
      [](const NamedEntity& entity, std::string_view wanted) { return NameOf(entity) < wanted; });
  return found < end && NameOf(*found) == name ? found : nullptr;
}

CharacterReference Named(const NamedEntity& entity, size_t length) {
  return {length, {entity.text[0], entity.text[1]}, entity.text[1] != 0 ? 2u : 1u};
}

CharacterReference ReadName(std::u16string_view markup) {
  char name[kLongestEntity];
  size_t length = 0;
  while (length < kLongestEntity && length + 1 < markup.size() &&
         IsLetterOrDigit(markup[length + 1])) {
    name[length] = static_cast<char>(markup[length + 1]);
    ++length;
  }
  if (length + 1 < markup.size() && markup[length + 1] == ';') {
    if (const NamedEntity* entity = FindEntity({name, length})) return Named(*entity, length + 2);
  }
  for (length = std::min(length, kLongestBareEntity); length >= kShortestEntity; --length) {
    const NamedEntity* entity = FindEntity({name, length});
    if (entity != nullptr && entity->bare) return Named(*entity, length + 1);
  }
  return {};
}

// Whether a name that ends here without a semicolon belongs to an address such as "?a=1&copy=2".
bool IsParameter(std::u16string_view markup, const CharacterReference& reference) {
  if (reference.length >= markup.size() || markup[1] == '#' || markup[reference.length - 1] == ';')
    return false;
  const char16_t next = markup[reference.length];
  return next == '=' || IsLetterOrDigit(next);
}

}  // namespace

CharacterReference ReadCharacterReference(std::u16string_view markup) {
  return markup.size() > 1 && markup[1] == '#' ? ReadNumber(markup) : ReadName(markup);
}

std::u16string DecodeAttribute(std::u16string_view value) {
  std::u16string text;
  for (size_t at; (at = value.find(u'&')) != std::u16string_view::npos;) {
    text += value.substr(0, at);
    value.remove_prefix(at);
    const CharacterReference reference = ReadCharacterReference(value);
    const bool is_text = reference.length == 0 || IsParameter(value, reference);
    text += is_text ? u"&" : reference.Text();
    value.remove_prefix(is_text ? 1 : reference.length);
  }
  return text.append(value);
}

}  // namespace mimora

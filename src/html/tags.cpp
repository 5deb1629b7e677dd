// Copyright (c) 2026 the mimora developers.
#include "html/tags.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "html/units.h"

namespace mimora {
namespace {

// In the order of Tag, which is that of the names.
constexpr TagTraits kTags[] = {
    {"", Rule::kOther, Display::kInline, 0},
    {"a", Rule::kAnchor, Display::kInline, 0},
    {"address", Rule::kBlock, Display::kBlock, kSpecial | kListParent | kEndsSelect},
    {"applet", Rule::kObject, Display::kInline, kSpecial | kScope | kKept | kEndsSelect},
    {"area", Rule::kVoid, Display::kNone, 0},
    {"article", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"aside", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"audio", Rule::kOther, Display::kNone, kKept | kReplaced},
    {"b", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"base", Rule::kVoid, Display::kNone, 0},
    {"basefont", Rule::kVoid, Display::kNone, 0},
    {"bgsound", Rule::kVoid, Display::kNone, 0},
    {"big", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"blockquote", Rule::kBlock, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"body", Rule::kBody, Display::kBlock, kLeavesForeign},
    {"br", Rule::kBr, Display::kInline, kLeavesForeign | kEndsSelect},
    {"button", Rule::kButton, Display::kInlineBlock, kSpecial | kButtonScope | kEndsSelect},
    {"caption", Rule::kCaption, Display::kCaption, kSpecial | kScope | kEndsSelect},
    {"center", Rule::kBlock, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"code", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"col", Rule::kColumn, Display::kNone, kSpecial | kEndsSelect},
    {"colgroup", Rule::kColumn, Display::kNone, kSpecial | kEndsSelect},
    {"datalist", Rule::kOther, Display::kNone, 0},
    {"dd", Rule::kDefinition, Display::kBlock,
     kSpecial | kImpliedEnd | kLeavesForeign | kEndsSelect},
    {"desc", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"details", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"dialog", Rule::kBlock, Display::kBlock, kEndsSelect},
    {"dir", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"div", Rule::kBlock, Display::kBlock, kSpecial | kListParent | kLeavesForeign | kEndsSelect},
    {"dl", Rule::kBlock, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"dt", Rule::kDefinition, Display::kBlock,
     kSpecial | kImpliedEnd | kLeavesForeign | kEndsSelect},
    {"em", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"embed", Rule::kVoid, Display::kInline, kReplaced | kLeavesForeign | kEndsSelect},
    {"fieldset", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"figcaption", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"figure", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"font", Rule::kFormatting, Display::kInline, 0},
    {"footer", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"foreignobject", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"form", Rule::kForm, Display::kBlock, kSpecial | kEndsSelect},
    {"frame", Rule::kVoid, Display::kNone, 0},
    {"frameset", Rule::kIgnored, Display::kBlock, 0},
    {"h1", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"h2", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"h3", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"h4", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"h5", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"h6", Rule::kHeading, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"head", Rule::kIgnored, Display::kBlock, kLeavesForeign},
    {"header", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"hgroup", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"hr", Rule::kHr, Display::kBlock, kLeavesForeign},
    {"html", Rule::kIgnored, Display::kBlock, 0},
    {"i", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"iframe", Rule::kRaw, Display::kInline, kReplaced | kEndsSelect},
    {"image", Rule::kVoid, Display::kInline, kReplaced | kEndsSelect},
    {"img", Rule::kVoid, Display::kInline, kReplaced | kLeavesForeign | kEndsSelect},
    {"input", Rule::kVoid, Display::kInline, kReplaced | kEndsSelect},
    {"keygen", Rule::kVoid, Display::kInline, kReplaced | kEndsSelect},
    {"legend", Rule::kOther, Display::kBlock, 0},
    {"li", Rule::kListItem, Display::kBlock, kSpecial | kImpliedEnd | kLeavesForeign | kEndsSelect},
    {"link", Rule::kVoid, Display::kNone, 0},
    {"listing", Rule::kPre, Display::kBlock,
     kSpecial | kPreformatted | kLeavesForeign | kEndsSelect},
    {"main", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"marquee", Rule::kObject, Display::kInlineBlock, kSpecial | kScope | kEndsSelect},
    {"math", Rule::kForeign, Display::kInline, kKept | kEndsSelect},
    {"menu", Rule::kBlock, Display::kBlock, kSpecial | kLeavesForeign | kEndsSelect},
    {"meta", Rule::kVoid, Display::kNone, kLeavesForeign},
    {"meter", Rule::kOther, Display::kInline, kKept | kReplaced},
    {"mi", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"mn", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"mo", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"ms", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"mtext", Rule::kOther, Display::kInline, kSpecial | kScope},
    {"nav", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"nobr", Rule::kAnchor, Display::kInline, kLeavesForeign},
    {"noembed", Rule::kRaw, Display::kNone, 0},
    {"noframes", Rule::kRaw, Display::kNone, 0},
    {"object", Rule::kObject, Display::kInline,
     kSpecial | kScope | kKept | kReplaced | kEndsSelect},
    {"ol", Rule::kBlock, Display::kBlock, kSpecial | kListScope | kLeavesForeign | kEndsSelect},
    {"optgroup", Rule::kOptgroup, Display::kBlock, kImpliedEnd},
    {"option", Rule::kOption, Display::kBlock, kImpliedEnd},
    {"p", Rule::kParagraph, Display::kBlock,
     kSpecial | kImpliedEnd | kListParent | kLeavesForeign | kEndsSelect},
    {"param", Rule::kVoid, Display::kNone, 0},
    {"plaintext", Rule::kPlaintext, Display::kBlock, kSpecial | kPreformatted | kEndsSelect},
    {"pre", Rule::kPre, Display::kBlock, kSpecial | kPreformatted | kLeavesForeign | kEndsSelect},
    {"progress", Rule::kOther, Display::kInline, kKept | kReplaced},
    {"rb", Rule::kRubyPart, Display::kInline, kImpliedEnd},
    {"rp", Rule::kRubyPart, Display::kNone, kImpliedEnd},
    {"rt", Rule::kRubyPart, Display::kInline, kImpliedEnd},
    {"rtc", Rule::kRubyPart, Display::kInline, kImpliedEnd},
    {"ruby", Rule::kOther, Display::kInline, kKept | kLeavesForeign},
    {"s", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"script", Rule::kRaw, Display::kNone, 0},
    {"search", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"section", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"select", Rule::kSelect, Display::kInlineBlock, kSpecial | kEndsSelect},
    {"small", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"source", Rule::kVoid, Display::kNone, 0},
    {"span", Rule::kOther, Display::kInline, kLeavesForeign},
    {"strike", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"strong", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"style", Rule::kRaw, Display::kNone, 0},
    {"sub", Rule::kOther, Display::kInline, kLeavesForeign},
    {"summary", Rule::kBlock, Display::kBlock, kSpecial | kEndsSelect},
    {"sup", Rule::kOther, Display::kInline, kLeavesForeign},
    {"svg", Rule::kForeign, Display::kInline, kKept | kEndsSelect},
    {"table", Rule::kTable, Display::kTable, kSpecial | kScope | kLeavesForeign | kEndsSelect},
    {"tbody", Rule::kRowGroup, Display::kRowGroup, kSpecial | kEndsSelect},
    {"td", Rule::kCell, Display::kCell, kSpecial | kScope | kEndsSelect},
    {"template", Rule::kTemplate, Display::kNone, kSpecial | kScope},
    {"text", Rule::kOther, Display::kInline, 0},
    {"textarea", Rule::kRaw, Display::kInline, kReplaced | kEndsSelect},
    {"tfoot", Rule::kRowGroup, Display::kRowGroup, kSpecial | kEndsSelect},
    {"th", Rule::kCell, Display::kCell, kSpecial | kScope | kEndsSelect},
    {"thead", Rule::kRowGroup, Display::kRowGroup, kSpecial | kEndsSelect},
    {"title", Rule::kRaw, Display::kNone, 0},
    {"tr", Rule::kRow, Display::kRow, kSpecial | kEndsSelect},
    {"track", Rule::kVoid, Display::kNone, 0},
    {"tt", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"u", Rule::kFormatting, Display::kInline, kLeavesForeign},
    {"ul", Rule::kBlock, Display::kBlock, kSpecial | kListScope | kLeavesForeign | kEndsSelect},
    {"var", Rule::kOther, Display::kInline, kLeavesForeign},
    {"video", Rule::kOther, Display::kInline, kKept | kReplaced},
    {"wbr", Rule::kVoid, Display::kInline, 0},
    {"xmp", Rule::kRaw, Display::kBlock, kSpecial | kPreformatted | kEndsSelect},
};
static_assert(std::size(kTags) == kTagCount && std::ranges::is_sorted(kTags, {}, &TagTraits::name));

constexpr size_t kKeyLength = 8;

template <typename Text>
constexpr uint64_t KeyOf(Text name) {
  uint64_t key = 0;
  for (size_t i = 0; i < std::min(name.size(), kKeyLength); ++i)
    key = key << 8 | (ToLower(static_cast<char16_t>(name[i])) & 0xFF);
  return key;
}

constexpr int kSlotBits = 9;
using Slots = std::array<uint8_t, size_t{1} << kSlotBits>;

constexpr size_t SlotOf(uint64_t key) { return (key * 0x9E3779B97F4A7C15) >> (64 - kSlotBits); }
constexpr size_t NextSlot(size_t slot) { return (slot + 1) % std::tuple_size_v<Slots>; }

// The tags by key; an empty slot is kUnknown.
consteval Slots MakeSlots() {
  Slots slots = {};
  for (uint8_t tag = 1; tag < kTagCount; ++tag) {
    size_t slot = SlotOf(KeyOf(kTags[tag].name));
    while (slots[slot] != 0) slot = NextSlot(slot);
    slots[slot] = tag;
  }
  return slots;
}

constexpr Slots kSlots = MakeSlots();

}  // namespace

const TagTraits& TraitsOf(Tag tag) { return kTags[static_cast<size_t>(tag)]; }

TagName ReadTagName(std::u16string_view name) {
  const uint64_t key = KeyOf(name);
  for (size_t slot = SlotOf(key); kSlots[slot] != 0; slot = NextSlot(slot)) {
    if (EqualsName(name, kTags[kSlots[slot]].name)) return {static_cast<Tag>(kSlots[slot]), key};
  }
  return {Tag::kUnknown, key};
}

}  // namespace mimora

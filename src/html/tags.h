// Copyright (c) 2026 the mimora developers.
//
// What HTML's elements are: how their tags are read, and how they are shown where no style sheet
// says otherwise.
#ifndef MIMORA_HTML_TAGS_H_
#define MIMORA_HTML_TAGS_H_

#include <cstdint>
#include <string_view>

namespace mimora {

// The elements that differ from a plain inline one such as ABBR, which is kUnknown. The headings,
// the parts of a table, and those of a ruby stand together.
enum class Tag : uint8_t {
  kUnknown,
  // clang-format off
  kA, kAddress, kApplet, kArea, kArticle, kAside, kAudio, kB, kBase, kBasefont, kBgsound, kBig,
  kBlockquote, kBody, kBr, kButton, kCaption, kCenter, kCode, kCol, kColgroup, kDatalist, kDd, kDesc,
  kDetails, kDialog, kDir, kDiv, kDl, kDt, kEm, kEmbed, kFieldset, kFigcaption, kFigure, kFont,
  kFooter, kForeignObject, kForm, kFrame, kFrameset, kH1, kH2, kH3, kH4, kH5, kH6, kHead, kHeader,
  kHgroup, kHr, kHtml, kI, kIframe, kImage, kImg, kInput, kKeygen, kLegend, kLi, kLink, kListing,
  kMain, kMarquee, kMath, kMenu, kMeta, kMeter, kMi, kMn, kMo, kMs, kMtext, kNav, kNobr, kNoembed,
  kNoframes, kObject, kOl, kOptgroup, kOption, kP, kParam, kPlaintext, kPre, kProgress, kRb, kRp,
  kRt, kRtc, kRuby, kS, kScript, kSearch, kSection, kSelect, kSmall, kSource, kSpan, kStrike,
  kStrong, kStyle, kSub, kSummary, kSup, kSvg, kTable, kTbody, kTd, kTemplate, kText, kTextarea,
  kTfoot, kTh, kThead, kTitle, kTr, kTrack, kTt, kU, kUl, kVar, kVideo, kWbr, kXmp,
  // clang-format on
};
constexpr int kTagCount = static_cast<int>(Tag::kXmp) + 1;

// What a start tag does, and an end tag undoes.
enum class Rule : uint8_t {
  kOther,       // opens an element, nothing else
  kFormatting,  // the same; the end tag leaves the blocks open that were opened since
  kAnchor,      // the same, and there is none in another one
  kRubyPart,
  kBlock,  // ends a paragraph
  kParagraph,
  kPre,
  kHeading,
  kListItem,
  kDefinition,
  kForm,
  kButton,
  kSelect,
  kOption,
  kOptgroup,
  kTable,
  kCaption,
  kRowGroup,
  kRow,
  kCell,
  kObject,  // keeps apart what is in it from what is around
  kTemplate,
  kForeign,  // SVG and MathML
  kColumn,
  kVoid,  // has no content
  kBr,
  kHr,
  kRaw,        // its content is no markup
  kPlaintext,  // nothing that follows is
  kBody,
  kIgnored,
};
constexpr int kRuleCount = static_cast<int>(Rule::kIgnored) + 1;

// Whether there is an end tag that closes what the start tag opens, and more than that.
constexpr bool OpensScope(Rule rule) { return rule >= Rule::kBlock && rule <= Rule::kForeign; }

constexpr bool IsTablePart(Rule rule) { return rule >= Rule::kCaption && rule <= Rule::kCell; }

enum class Display : uint8_t {
  kInline,
  kInlineBlock,
  kBlock,
  kTable,
  kCaption,
  kRowGroup,
  kRow,
  kCell,
  kContents,
  kNone,
};

enum Trait : uint16_t {
  kSpecial = 1,      // an end tag of an inline element does not close it
  kScope = 2,        // nor does any other tag from inside
  kButtonScope = 4,  // nor does </p>
  kListScope = 8,    // nor does </li>
  kImpliedEnd = 16,  // it ends with what is around it
  kListParent = 32,  // special, but an item of a list may end across it
  kKept = 64,        // its end matters, even if nothing is to be seen of it
  kReplaced = 128,   // something else is shown in place of the content
  kPreformatted = 256,
  kLeavesForeign = 512,  // its tag ends SVG and MathML
  kEndsSelect = 1024,
};

struct TagTraits {
  std::string_view name;
  Rule rule = Rule::kOther;
  Display display = Display::kInline;
  uint16_t traits = 0;

  constexpr bool Has(int any_of) const { return (traits & any_of) != 0; }
};

const TagTraits& TraitsOf(Tag tag);

// A name's first eight characters in small letters. Tells apart the unknown elements of a document.
struct TagName {
  Tag tag = Tag::kUnknown;
  uint64_t key = 0;
};

TagName ReadTagName(std::u16string_view name);

constexpr bool IsBetween(Tag tag, Tag first, Tag last) { return tag >= first && tag <= last; }
constexpr bool IsHeading(Tag tag) { return IsBetween(tag, Tag::kH1, Tag::kH6); }
constexpr bool IsCell(Tag tag) { return tag == Tag::kTd || tag == Tag::kTh; }
constexpr bool IsRowGroup(Tag tag) {
  return tag == Tag::kTbody || tag == Tag::kThead || tag == Tag::kTfoot;
}
constexpr bool IsTableStructure(Tag tag) {
  return tag == Tag::kTable || tag == Tag::kTr || IsRowGroup(tag);
}
constexpr bool IsFormulaLeaf(Tag tag) {
  return tag == Tag::kMi || tag == Tag::kMn || tag == Tag::kMo || tag == Tag::kMs ||
         tag == Tag::kMtext;
}

}  // namespace mimora

#endif  // MIMORA_HTML_TAGS_H_

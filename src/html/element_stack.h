// Copyright (c) 2026 the mimora developers.
//
// The open elements of a document, and what their edges and their text leave in the sink. Elements
// that change nothing of that are not kept.
#ifndef MIMORA_HTML_ELEMENT_STACK_H_
#define MIMORA_HTML_ELEMENT_STACK_H_

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "html/element.h"

namespace mimora {

class ElementStack {
 public:
  static constexpr size_t kNowhere = ~size_t{0};

  explicit ElementStack(TextSink& sink);

  // The innermost element. Its tag is kUnknown when it is too deep to be known.
  const Element& Top() const { return elements_.back(); }
  Tag TopTag() const { return beyond_ == 0 ? Top().name.tag : Tag::kUnknown; }
  bool IsOpen(Tag tag) const { return open_[static_cast<size_t>(tag)] != 0; }

  // The innermost open element for which IS_WANTED holds, unless there is one inside it for which
  // IS_END does. kNowhere beyond the limit.
  template <typename IsWanted, typename IsEnd>
  size_t Find(IsWanted is_wanted, IsEnd is_end) const {
    if (beyond_ != 0) return kNowhere;
    for (size_t i = elements_.size() - 1; i > 0; --i) {
      if (is_wanted(elements_[i])) return i;
      if (is_end(elements_[i])) break;
    }
    return kNowhere;
  }

  // The innermost element of this tag unless one with any of the traits is inside it.
  size_t FindInScope(Tag tag, int traits) const;

  // Answers whether it is on the stack now.
  bool Open(const TagName& name, const BoxStyle& style);
  // An element without content.
  void Void(const TagName& name, const BoxStyle& style);
  void LineEnd(const BoxStyle& style);

  void CloseTop() { CloseTo(elements_.size() - 1); }
  // Closes this element and all that are in it; kNowhere closes none.
  void CloseTo(size_t index);
  // Closes this one together with what is in it, once that is closed.
  void CloseLater(size_t index);
  // Closes this one and leaves the blocks in it open.
  void CloseAround(size_t index);
  // At the end of the document.
  void CloseAll() { CloseTo(1); }

  // Elements that are nested deeper than the limit are only counted.
  bool IsBeyondLimit() const { return beyond_ != 0; }
  void CloseBeyondLimit(Tag tag);

  void Text(std::u16string_view run);

  // How the whole document is shown.
  void SetRootStyle(const BoxStyle& style);

 private:
  Inherited Outside(Tag tag);
  bool IsKept(const Element& element) const;
  bool HasRoom(Tag tag) const;
  void OpenBeyondLimit(const Element& element);
  void Pop();

  void Begin(const Element& element);
  void BeginRow(const Element& element);
  void BeginCell(const Element& element);
  void StrayText(std::u16string_view run);
  const Inherited& OutsideOfTable() const;

  std::vector<Element> elements_;
  std::array<uint16_t, kTagCount> open_ = {};
  size_t beyond_ = 0;
  size_t hidden_beyond_ = 0;  // from this level on nothing is shown
  bool in_stray_text_ = false;
};

}  // namespace mimora

#endif  // MIMORA_HTML_ELEMENT_STACK_H_

// Copyright (c) 2026 the mimora developers.
#include "analysis/text_letter.h"

#include <string>
#include <vector>

#include "platform/ascii.h"

namespace mimora {
namespace {

bool IsAttachment(const Bodypart& part) {
  return EqualIgnoringCase(part.Field("Content-Disposition").Main(), "ATTACHMENT");
}

bool IsPlainLetter(const Bodypart& part) { return part.Is("text", "plain") && !IsAttachment(part); }

bool IsAlternative(const Bodypart& part) { return part.Is("multipart", "alternative"); }

Bodypart* FirstPlainLetter(const Bodypart& parent) {
  for (const auto& child : parent.Children) {
    if (IsPlainLetter(*child)) return child.get();
  }
  return nullptr;
}

// Looks through alternatives inside alternatives, an outer one before those in it.
Bodypart* SearchAlternative(const Bodypart& alternative) {
  std::vector<const Bodypart*> pending{&alternative};
  while (!pending.empty()) {
    const Bodypart& next = *pending.back();
    pending.pop_back();
    if (Bodypart* letter = FirstPlainLetter(next)) return letter;
    for (auto child = next.Children.rbegin(); child != next.Children.rend(); ++child) {
      if (IsAlternative(**child)) pending.push_back(child->get());
    }
  }
  return nullptr;
}

// A content identifier without its angle brackets (RFC 2045 7).
std::string_view BareId(std::string_view id) {
  id = TrimRight(TrimLeft(id, IsSpace), IsSpace);
  if (id.starts_with('<') && id.ends_with('>')) id = id.substr(1, id.size() - 2);
  return id;
}

// The part that a multipart/related begins with (RFC 2387 3.2): the one that is named, or the
// first.
Bodypart* FindStart(const Bodypart& related) {
  const std::string start = related.Field("Content-Type").Parameter("start").value_or("");
  if (start.empty()) return related.Children.empty() ? nullptr : related.Children.front().get();
  const auto is_start = [&start](const Bodypart& part) {
    const auto id = part.Header.Find("Content-ID");
    return id && BareId(*id) == BareId(start);
  };
  for (const auto& child : related.Children) {
    if (is_start(*child)) return child.get();
    if (!IsAlternative(*child)) continue;
    for (const auto& version : child->Children) {
      if (is_start(*version)) return version.get();
    }
  }
  return nullptr;
}

Bodypart* SearchRelated(const Bodypart& related) {
  Bodypart* start = FindStart(related);
  if (start == nullptr || IsPlainLetter(*start)) return start;
  if (IsAlternative(*start)) return FirstPlainLetter(*start);
  const bool html = start->Is("text", "html") && !IsAttachment(*start);
  return html && IsAlternative(*start->Parent) ? FirstPlainLetter(*start->Parent) : nullptr;
}

Bodypart* SearchMixed(const Bodypart& mixed) {
  for (const auto& child : mixed.Children) {
    std::string scratch;
    const ContentType type = child->Type(scratch);
    if (type.Is("text")) return IsPlainLetter(*child) ? child.get() : nullptr;
    if (type.Is("multipart", "alternative")) return SearchAlternative(*child);
    if (type.Is("multipart", "related")) return SearchRelated(*child);
  }
  return nullptr;
}

}  // namespace

Bodypart* FindTextLetter(Bodypart& part) {
  // Nothing was loaded into it.
  if (part.Header.Count() == 0 && part.DataDefinitionType == kNoBody) return nullptr;
  if (IsPlainLetter(part)) return &part;
  std::string scratch;
  const ContentType type = part.Type(scratch);
  if (!type.Is("multipart")) return nullptr;
  if (type.Is("multipart", "related")) return SearchRelated(part);
  if (type.Is("multipart", "alternative")) return SearchAlternative(part);
  return SearchMixed(part);
}

}  // namespace mimora

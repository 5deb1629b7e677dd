// Copyright (c) 2026 the mimora developers.
//
// The constant table of HTML's named characters. The build makes it from entities.txt,
// which script/entities writes.
#ifndef MIMORA_HTML_NAMED_ENTITY_H_
#define MIMORA_HTML_NAMED_ENTITY_H_

#include <cstddef>
#include <cstdint>

namespace mimora {

constexpr size_t kShortestEntity = 2;
constexpr size_t kLongestEntity = 31;
constexpr size_t kLongestBareEntity = 6;  // of those that need no semicolon

struct NamedEntity {
  uint16_t name;     // where it begins in kEntityNames
  uint8_t length;    // of the name
  bool bare;         // whether the semicolon may be missing
  char16_t text[2];  // the second is 0 when there is one only
};

// All the names in one text, without "&" and ";".
extern const char kEntityNames[];

// By name.
extern const NamedEntity kNamedEntities[];
extern const size_t kNamedEntityCount;

}  // namespace mimora

#endif  // MIMORA_HTML_NAMED_ENTITY_H_

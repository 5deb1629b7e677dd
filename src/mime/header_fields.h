// Copyright (c) 2026 the mimora developers.
//
// The header fields of a part, in the order of the message, duplicates included.
#ifndef MIMORA_MIME_HEADER_FIELDS_H_
#define MIMORA_MIME_HEADER_FIELDS_H_

#include <cstddef>
#include <optional>
#include <string_view>

#include "mime/inline_vector.h"

namespace mimora {

// A zero stands behind either text. Both live until the fields are changed.
struct HeaderField {
  std::string_view name;
  std::string_view value;  // folding is kept as CR LF and the white space
};

class HeaderFields {
 public:
  size_t Count() const { return entries_.size(); }
  HeaderField At(size_t index) const;

  // The value of the N-th field of a name, counted from 1.
  std::optional<std::string_view> Find(std::string_view name, int n = 1) const;

  // Makes room for so many, of that size in all: it need not grow then.
  void Reserve(size_t fields, size_t bytes);
  void Append(std::string_view name, std::string_view value);
  // The name of the field that a line begins; nothing when it begins none.
  static std::optional<std::string_view> NameIn(std::string_view line);
  // Takes a line of a header, which is not empty: a field, or the continuation of the last one. A
  // line that is neither is passed over, and the answer is false.
  bool AppendLine(std::string_view line);
  void Delete(size_t index);
  void Clear();

 private:
  struct Entry {
    size_t start;
    size_t name_size;
    size_t value_size;
    size_t Size() const { return name_size + value_size + 2; }
  };

  void Continue(std::string_view line);
  void CloseGaps();

  // Enough for the header of an attachment.
  InlineVector<char, 256> texts_;
  InlineVector<Entry, 4> entries_;
  size_t deleted_bytes_ = 0;  // still among the texts
};

}  // namespace mimora

#endif  // MIMORA_MIME_HEADER_FIELDS_H_

// Copyright (c) 2026 the mimora developers.
//
// The header fields of a part, in the order of the message, duplicates included.
#ifndef MIMORA_MIME_HEADER_FIELDS_H_
#define MIMORA_MIME_HEADER_FIELDS_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

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
  };

  // All texts, in one block that grows.
  class Texts {
   public:
    size_t Size() const { return size_; }
    const char* At(size_t place) const { return block_.get() + place; }
    void Grow(size_t capacity);
    // Makes room for SIZE more bytes and answers where they are to be written.
    char* Add(size_t size);

   private:
    std::unique_ptr<char[]> block_;
    size_t size_ = 0;
    size_t capacity_ = 0;
  };

  void Continue(std::string_view line);

  // A header costs two allocations that grow, whatever it holds.
  Texts texts_;
  std::vector<Entry> entries_;
};

}  // namespace mimora

#endif  // MIMORA_MIME_HEADER_FIELDS_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_MIME_INLINE_VECTOR_H_
#define MIMORA_MIME_INLINE_VECTOR_H_

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace mimora {

// A vector whose first few values lie in the object itself: a tree has many small collections, and
// each block of memory costs more than what is kept in it. What has the name of a standard vector's
// function does the same; plain values are not initialised.
template <typename Value, size_t kInline>
class InlineVector {
  static_assert(std::is_nothrow_move_assignable_v<Value>);

 public:
  InlineVector() = default;
  InlineVector(const InlineVector&) = delete;
  InlineVector& operator=(const InlineVector&) = delete;

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  Value* data() { return block_ ? block_.get() : inline_; }
  const Value* data() const { return block_ ? block_.get() : inline_; }

  Value& operator[](size_t index) { return data()[index]; }
  const Value& operator[](size_t index) const { return data()[index]; }
  const Value& front() const { return data()[0]; }
  Value& back() { return data()[size_ - 1]; }
  Value* begin() { return data(); }
  Value* end() { return data() + size_; }
  const Value* begin() const { return data(); }
  const Value* end() const { return data() + size_; }
  auto rbegin() const { return std::make_reverse_iterator(end()); }
  auto rend() const { return std::make_reverse_iterator(begin()); }

  void reserve(size_t capacity) {
    if (capacity <= capacity_) return;
    auto larger = std::make_unique_for_overwrite<Value[]>(capacity);
    std::move(begin(), end(), larger.get());
    block_ = std::move(larger);
    capacity_ = capacity;
  }

  // Makes room for COUNT more and answers where they are to be written.
  Value* Add(size_t count) {
    if (count > capacity_ - size_) reserve(std::max(2 * capacity_, size_ + count));
    size_ += count;
    return data() + size_ - count;
  }

  void Erase(size_t index) {
    std::move(begin() + index + 1, end(), begin() + index);
    Truncate(size_ - 1);
  }

  // Drops what stands behind the first COUNT.
  void Truncate(size_t count) {
    if constexpr (!std::is_trivially_copyable_v<Value>) {
      for (size_t i = count; i < size_; ++i) data()[i] = Value();
    }
    size_ = count;
  }

  void clear() {
    Truncate(0);
    block_ = nullptr;
    capacity_ = kInline;
  }

 private:
  std::unique_ptr<Value[]> block_;
  size_t size_ = 0;
  size_t capacity_ = kInline;
  Value inline_[kInline];
};

}  // namespace mimora

#endif  // MIMORA_MIME_INLINE_VECTOR_H_

// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_MIME_INLINE_VECTOR_H_
#define MIMORA_MIME_INLINE_VECTOR_H_

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

namespace mimora {

// Plain values that grow in number. The first few lie in the object itself: a tree has many small
// collections, and each block of memory costs more than what is kept in it.
template <typename Value, size_t kInline>
class InlineVector {
  static_assert(std::is_trivially_copyable_v<Value>);

 public:
  InlineVector() = default;
  InlineVector(const InlineVector&) = delete;
  InlineVector& operator=(const InlineVector&) = delete;

  size_t Size() const { return size_; }
  Value* Data() { return block_ ? block_.get() : inline_; }
  const Value* Data() const { return block_ ? block_.get() : inline_; }

  Value& operator[](size_t index) { return Data()[index]; }
  const Value& operator[](size_t index) const { return Data()[index]; }
  Value* begin() { return Data(); }
  Value* end() { return Data() + size_; }
  const Value* begin() const { return Data(); }
  const Value* end() const { return Data() + size_; }

  void Reserve(size_t capacity) {
    if (capacity <= capacity_) return;
    auto larger = std::make_unique_for_overwrite<Value[]>(capacity);
    std::memcpy(larger.get(), Data(), size_ * sizeof(Value));
    block_ = std::move(larger);
    capacity_ = capacity;
  }

  // Makes room for COUNT more and answers where they are to be written.
  Value* Add(size_t count) {
    if (count > capacity_ - size_) Reserve(std::max(2 * capacity_, size_ + count));
    size_ += count;
    return Data() + size_ - count;
  }

  void Erase(size_t index) {
    Value* const gap = Data() + index;
    std::memmove(gap, gap + 1, (--size_ - index) * sizeof(Value));
  }

  // Drops what stands behind the first COUNT.
  void Truncate(size_t count) { size_ = count; }

  void Clear() {
    block_ = nullptr;
    size_ = 0;
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

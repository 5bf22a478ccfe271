#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace platform {

// A vector that keeps its first N elements inside itself. Objects made by
// the thousand (items, presences, handles) mostly hold one or two observers
// or handles; keeping those in the object spares a heap block each, and a
// walk over many objects a cache miss each. Past N the elements move to the
// heap, as a std::vector's would.
template <class T, std::size_t N>
class SmallVector {
  static_assert(N > 0);

 public:
  using value_type = T;
  using size_type = std::size_t;
  using iterator = T*;
  using const_iterator = const T*;
  using reverse_iterator = std::reverse_iterator<iterator>;
  using const_reverse_iterator = std::reverse_iterator<const_iterator>;

  SmallVector() noexcept = default;
  SmallVector(std::initializer_list<T> values) { append(values.begin(), values.end()); }
  SmallVector(const SmallVector& other) { append(other.begin(), other.end()); }
  SmallVector(SmallVector&& other) noexcept(std::is_nothrow_move_constructible_v<T>) { takeFrom(other); }
  ~SmallVector() { release(); }

  SmallVector& operator=(const SmallVector& other) {
    if (this != &other) {
      clear();
      append(other.begin(), other.end());
    }
    return *this;
  }
  SmallVector& operator=(SmallVector&& other) noexcept(std::is_nothrow_move_constructible_v<T>) {
    if (this != &other) {
      release();
      takeFrom(other);
    }
    return *this;
  }

  size_type size() const noexcept { return size_; }
  size_type capacity() const noexcept { return capacity_; }
  bool empty() const noexcept { return size_ == 0; }
  bool isInline() const noexcept { return data_ == inlineData(); }

  T* data() noexcept { return data_; }
  const T* data() const noexcept { return data_; }
  iterator begin() noexcept { return data_; }
  iterator end() noexcept { return data_ + size_; }
  const_iterator begin() const noexcept { return data_; }
  const_iterator end() const noexcept { return data_ + size_; }
  reverse_iterator rbegin() noexcept { return reverse_iterator(end()); }
  reverse_iterator rend() noexcept { return reverse_iterator(begin()); }
  const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
  const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
  T& operator[](size_type index) noexcept { return data_[index]; }
  const T& operator[](size_type index) const noexcept { return data_[index]; }
  T& front() noexcept { return data_[0]; }
  T& back() noexcept { return data_[size_ - 1]; }
  const T& front() const noexcept { return data_[0]; }
  const T& back() const noexcept { return data_[size_ - 1]; }

  operator std::span<const T>() const noexcept { return {data_, size_}; }

  void reserve(size_type wanted) {
    if (wanted > capacity_) moveTo(wanted);
  }

  template <class... Arguments>
  T& emplace_back(Arguments&&... arguments) {
    if (size_ == capacity_) {
      // The argument may be an element of this vector: build the new element
      // before the old ones move.
      T made(std::forward<Arguments>(arguments)...);
      moveTo(capacity_ * 2);
      return *::new (static_cast<void*>(data_ + size_++)) T(std::move(made));
    }
    return *::new (static_cast<void*>(data_ + size_++)) T(std::forward<Arguments>(arguments)...);
  }
  void push_back(const T& value) { emplace_back(value); }
  void push_back(T&& value) { emplace_back(std::move(value)); }

  iterator erase(const_iterator position) { return erase(position, position + 1); }
  iterator erase(const_iterator first, const_iterator last) {
    T* from = data_ + (first - data_);
    T* to = data_ + (last - data_);
    if (from == to) return from;
    T* newEnd = std::move(to, end(), from);
    std::destroy(newEnd, end());
    size_ -= static_cast<std::uint32_t>(to - from);
    return from;
  }

  void clear() noexcept {
    std::destroy(begin(), end());
    size_ = 0;
  }

  friend bool operator==(const SmallVector& a, const SmallVector& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }
  template <class Allocator>
  friend bool operator==(const SmallVector& a, const std::vector<T, Allocator>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  }

 private:
  T* inlineData() noexcept { return std::launder(reinterpret_cast<T*>(inline_)); }
  const T* inlineData() const noexcept { return std::launder(reinterpret_cast<const T*>(inline_)); }

  template <class Iterator>
  void append(Iterator first, Iterator last) {
    reserve(size_ + static_cast<size_type>(std::distance(first, last)));
    for (; first != last; ++first) ::new (static_cast<void*>(data_ + size_++)) T(*first);
  }

  // Moves the elements to a heap block of the given capacity.
  void moveTo(size_type newCapacity) {
    T* block = std::allocator<T>().allocate(newCapacity);
    std::uninitialized_move(begin(), end(), block);
    std::destroy(begin(), end());
    if (!isInline()) std::allocator<T>().deallocate(data_, capacity_);
    data_ = block;
    capacity_ = static_cast<std::uint32_t>(newCapacity);
  }

  void takeFrom(SmallVector& other) noexcept(std::is_nothrow_move_constructible_v<T>) {
    if (other.isInline()) {
      std::uninitialized_move(other.begin(), other.end(), data_);
      size_ = other.size_;
      other.clear();
      return;
    }
    data_ = std::exchange(other.data_, other.inlineData());
    size_ = std::exchange(other.size_, 0);
    capacity_ = std::exchange(other.capacity_, N);
  }

  void release() noexcept {
    clear();
    if (!isInline()) std::allocator<T>().deallocate(data_, capacity_);
    data_ = inlineData();
    capacity_ = N;
  }

  T* data_ = inlineData();
  std::uint32_t size_ = 0;
  std::uint32_t capacity_ = N;
  alignas(T) std::byte inline_[N * sizeof(T)];
};

}  // namespace platform

#pragma once

#include <cstddef>
#include <memory>

#include "platform/core/Prefetch.h"

namespace platform {

// Free blocks of one size and alignment, kept per thread for the next object
// of that size: a list that is emptied and filled again with thousands of
// objects gets its blocks back at once instead of handing them to malloc,
// which would merge them and split them again. At most kKeptBytes are kept per
// size; the rest goes back to malloc. A thread that ends leaves its blocks.
template <std::size_t Size, std::size_t Alignment>
class RecycledBlocks {
 public:
  static constexpr std::size_t kKeptBytes = std::size_t{64} << 20;

  static void* take() {
    Stack& stack = stackOfThisThread();
    Block* block = stack.top;
    if (!block) return nullptr;
    stack.top = block->next;
    --stack.count;
    // The next object of this size is made soon, mostly: its block, freed
    // long ago, starts coming back from memory now.
    if (stack.top) prefetch(stack.top, Size);
    return block;
  }

  // False when enough blocks are kept already.
  static bool give(void* memory) {
    Stack& stack = stackOfThisThread();
    if ((stack.count + 1) * Size > kKeptBytes) return false;
    stack.top = ::new (memory) Block{stack.top};
    ++stack.count;
    return true;
  }

 private:
  struct Block {
    Block* next;
  };
  static_assert(Size >= sizeof(Block) && Alignment >= alignof(Block));
  // Trivially destructible, so it outlives every object freed during exit.
  struct Stack {
    Block* top;
    std::size_t count;
  };
  static Stack& stackOfThisThread() {
    thread_local Stack stack{nullptr, 0};
    return stack;
  }
};

#if defined(__SANITIZE_ADDRESS__)
#define PLATFORM_RECYCLES_BLOCKS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define PLATFORM_RECYCLES_BLOCKS 0
#endif
#endif
#ifndef PLATFORM_RECYCLES_BLOCKS
#define PLATFORM_RECYCLES_BLOCKS 1
#endif

// An allocator for std::allocate_shared of objects that are made and dropped
// by the thousand (people-list items and presences). Single objects come from
// and go back to RecycledBlocks; under AddressSanitizer every block goes to
// malloc, so that a use after free is still caught.
template <class T>
class RecyclingAllocator {
 public:
  using value_type = T;

  RecyclingAllocator() noexcept = default;
  template <class U>
  RecyclingAllocator(const RecyclingAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    if (PLATFORM_RECYCLES_BLOCKS && count == 1)
      if (void* block = Blocks::take()) return static_cast<T*>(block);
    return std::allocator<T>().allocate(count);
  }

  void deallocate(T* memory, std::size_t count) noexcept {
    if (PLATFORM_RECYCLES_BLOCKS && count == 1 && Blocks::give(memory)) return;
    std::allocator<T>().deallocate(memory, count);
  }

  template <class U>
  bool operator==(const RecyclingAllocator<U>&) const noexcept {
    return true;
  }

 private:
  using Blocks = RecycledBlocks<sizeof(T), alignof(T)>;
};

}  // namespace platform

// The blocks in which files are read and written.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

namespace io {

#ifdef ZANDOR_BLOCK_SIZE  // small in a fuzz build, where short files are to reach across blocks
inline constexpr std::size_t block_size = ZANDOR_BLOCK_SIZE;
#else
inline constexpr std::size_t block_size = std::size_t{256} * 1024;
#endif

// Leaves new elements as they are: a small file touches no more of a block than it fills.
template <class T>
struct Unfilled : std::allocator<T> {
  template <class U>
  struct rebind {
    using other = Unfilled<U>;
  };
  template <class U>
  void construct(U* at) noexcept {
    ::new (static_cast<void*>(at)) U;
  }
  template <class U>
  void construct(U* at, const U& value) noexcept {
    ::new (static_cast<void*>(at)) U(value);
  }
};
using Block = std::vector<char, Unfilled<char>>;

}  // namespace io

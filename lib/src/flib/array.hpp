// Arrays as the formulas of the field write them: indices from 1 (the last one from a stated lower
// bound, so that job 0 is the reference), the first index varying fastest. Every access through an
// index is checked; hot loops take column() and run on the raw contiguous elements.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

#include "io/exact_arithmetic.hpp"
#include "io/fatal.hpp"

namespace flib {

// A view of elements that somebody else owns.
template <class T, std::size_t rank>
class ArrayView {
 public:
  using Extents = std::array<long long, rank>;

  ArrayView() = default;
  ArrayView(T* data, const Extents& extents, long long last_lower_bound = 1)
      : data_(data), extents_(extents) {
    lower_bounds_.fill(1);
    lower_bounds_[rank - 1] = last_lower_bound;
  }
  // A view that only reads, from one that also writes.
  template <class Writable>
  requires(std::is_same_v<const Writable, T> && !std::is_const_v<Writable>)
      ArrayView(const ArrayView<Writable, rank>& view)
      : data_(view.data_), extents_(view.extents_), lower_bounds_(view.lower_bounds_) {}

  template <class... Index>
  T& operator()(Index... index) const {
    static_assert(sizeof...(Index) == rank);
    return data_[offset({static_cast<long long>(index)...})];
  }

  // The first element of the column that the trailing indices name.
  template <class... Index>
  T* column(Index... index) const {
    static_assert(sizeof...(Index) == rank - 1);
    return data_ + offset({1, static_cast<long long>(index)...});
  }

  T* data() const { return data_; }

  std::size_t size() const {
    std::size_t count = 1;
    for (const long long extent : extents_) count *= static_cast<std::size_t>(extent);
    return count;
  }

 private:
  template <class Other, std::size_t other_rank>
  friend class ArrayView;

  std::size_t offset(const Extents& index) const {
    std::size_t place = 0;
    std::size_t stride = 1;
    for (std::size_t k = 0; k < rank; ++k) {
      const long long from_zero = index[k] - lower_bounds_[k];
      if (from_zero < 0 || from_zero >= extents_[k]) {
        io::fatal_stop({}, "expected array index ", k + 1, " within ", lower_bounds_[k], "..",
                       lower_bounds_[k] + extents_[k] - 1, ", found ", index[k]);
      }
      place += static_cast<std::size_t>(from_zero) * stride;
      stride *= static_cast<std::size_t>(extents_[k]);
    }
    return place;
  }

  T* data_ = nullptr;
  Extents extents_{};
  Extents lower_bounds_{};
};

// Zeroed memory for the product of the extents; a fatal stop with its size when it cannot be had.
template <class T, std::size_t rank>
T* obtain_elements(const char* name, const std::array<long long, rank>& extents) {
  double bytes = sizeof(T);
  for (const long long extent : extents) bytes *= static_cast<double>(extent);
  void* const memory = bytes < static_cast<double>(std::numeric_limits<std::ptrdiff_t>::max())
                           ? std::calloc(static_cast<std::size_t>(std::max(bytes, 1.0)), 1)
                           : nullptr;
  if (memory == nullptr) {
    io::fatal_stop({}, "expected memory for the array '", name, "', found none: ", bytes, " bytes");
  }
  return static_cast<T*>(memory);
}

// An array that owns its elements, zero at first. A constant one cannot be written to.
template <class T, std::size_t rank>
class Array {
 public:
  using Extents = typename ArrayView<T, rank>::Extents;

  Array() = default;
  // A fatal stop with the size in bytes when the memory cannot be had. `name` is for that message.
  Array(const char* name, const Extents& extents, long long last_lower_bound = 1)
      : elements_(obtain_elements<T, rank>(name, extents)),
        view_(elements_.get(), extents, last_lower_bound) {}

  template <class... Index>
  T& operator()(Index... index) {
    return view_(index...);
  }
  template <class... Index>
  const T& operator()(Index... index) const {
    return view_(index...);
  }
  template <class... Index>
  T* column(Index... index) {
    return view_.column(index...);
  }
  template <class... Index>
  const T* column(Index... index) const {
    return view_.column(index...);
  }
  T* data() { return view_.data(); }
  const T* data() const { return view_.data(); }
  std::size_t size() const { return view_.size(); }

  operator ArrayView<T, rank>() { return view_; }
  operator ArrayView<const T, rank>() const { return view_; }

 private:
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };
  std::unique_ptr<T[], Free> elements_;
  ArrayView<T, rank> view_;
};

}  // namespace flib

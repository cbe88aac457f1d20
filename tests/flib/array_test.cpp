#include "flib/array.hpp"

#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

TEST(array, stops_at_an_index_beyond_its_bounds) {
  flib::Array<int, 2> jobs("jobs", {3, 4}, 0);
  const flib::Array<int, 2>& constant = jobs;
  jobs(3, 0) = 7;
  EXPECT_EQ(constant.data()[2], 7);
  EXPECT_EQ(constant.column(3), jobs.data() + 9);
  const std::pair<int, int> beyond[] = {{0, 0}, {4, 0}, {1, -1}, {1, 4}};
  for (const auto& [i, j] : beyond) {
    const std::string text = j == 0 ? "array index 1 within 1..3, found " + std::to_string(i)
                                    : "array index 2 within 0..3, found " + std::to_string(j);
    EXPECT_TRUE(support::stops(2, text, [&] { constant(i, j); }));
  }
#ifndef __SANITIZE_ADDRESS__  // which ends the process itself
  EXPECT_TRUE(support::stops(2, "the array 'huge', found none: 2305843009213693952 bytes",
                             [] { flib::Array<double, 1>("huge", {1LL << 58}); }));
#endif
  EXPECT_TRUE(support::stops(2, "the array 'huge', found none: 9.671406556917033e+24 bytes", [] {
    flib::Array<double, 2>("huge", {1LL << 40, 1LL << 40});
  }));
}

}  // namespace

#include "flib/fc_to_fcm.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(fc_to_fcm, weights_the_upper_triangle_and_mirrors_it) {
  const std::vector<double> root = {2.0, 3.0};
  std::vector<double> fc = {8.0, -99.0, 12.0, 27.0};  // column by column
  std::vector<double> fcm(4);
  int info = 5;
  flib::fc_to_fcm(2, root.data(), fc.data(), fcm.data(), 1, info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(fcm, (std::vector<double>{2.0, 2.0, 2.0, 3.0}));
  fcm[1] = 77.0;
  flib::fc_to_fcm(2, root.data(), fc.data(), fcm.data(), -1, info);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(fc, (std::vector<double>{8.0, 12.0, 12.0, 27.0}));
}

TEST(fc_to_fcm, checks_the_order_before_the_direction) {
  int info = 5;
  double unset = 1.0;
  flib::fc_to_fcm(0, &unset, &unset, &unset, 7, info);
  EXPECT_EQ(info, -1);
  flib::fc_to_fcm(1, &unset, &unset, &unset, 7, info);
  EXPECT_EQ(info, -2);
  EXPECT_EQ(unset, 1.0);
}

}  // namespace

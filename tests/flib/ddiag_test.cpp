#include "flib/ddiag.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "flib/array.hpp"

namespace {

struct Solution {
  std::vector<double> d, e, z;
  int ierr = 0;
};

constexpr double untouched = -77.0;

// Diagonalises the leading n x n block of a symmetric matrix stored with nm rows.
Solution solve(int nm, int n, const std::vector<double>& a) {
  const auto rows = static_cast<std::size_t>(nm);
  const auto order = static_cast<std::size_t>(n);
  Solution s{std::vector<double>(order), std::vector<double>(order),
             std::vector<double>(rows * order, untouched), 0};
  flib::tred2e(nm, n, a.data(), s.d.data(), s.e.data(), s.z.data());
  flib::tql2e(nm, n, s.d.data(), s.e.data(), s.z.data(), s.ierr);
  return s;
}

// A V = V D, V orthonormal, D ascending. Both errors grow like n times the unit roundoff times the
// norm; 20 n is ample and far below any fault.
void expect_eigenpairs(int nm, int n, std::vector<double> a, Solution s, double norm) {
  const flib::ArrayView<double, 2> matrix(a.data(), {nm, n});
  const flib::ArrayView<double, 2> z(s.z.data(), {nm, n});
  const double unit = 20.0 * n * 2.2e-16;
  ASSERT_EQ(s.ierr, 0);
  for (int k = 1; k <= n; ++k) {
    const double value = s.d[static_cast<std::size_t>(k - 1)];
    EXPECT_LE(s.d[static_cast<std::size_t>(std::max(k - 2, 0))], value);
    for (int i = 1; i <= n; ++i) {
      double product = 0.0, overlap = 0.0;
      for (int j = 1; j <= n; ++j) {
        product += matrix(std::max(i, j), std::min(i, j)) * z(j, k);
        overlap += z(j, i) * z(j, k);
      }
      EXPECT_NEAR(product, value * z(i, k), unit * norm);
      EXPECT_NEAR(overlap, i == k ? 1.0 : 0.0, unit);
    }
  }
}

TEST(ddiag, solves_matrices_of_every_kind) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> number(-1.0, 1.0);
  for (const int n : {1, 2, 3, 7, 24}) {
    const int nm = n + 3;
    for (int kind = 0; kind < 5; ++kind) {
      std::vector<double> a(static_cast<std::size_t>(nm) * static_cast<std::size_t>(n), 1e300);
      const flib::ArrayView<double, 2> matrix(a.data(), {nm, n});
      for (int j = 1; j <= n; ++j) {
        for (int i = j; i <= n; ++i) {
          matrix(i, j) = number(random);
          if (kind == 1) matrix(i, j) += i == j ? 100000.0 : 0.0;  // as the driver shifts it
          if (kind == 2) matrix(i, j) = 1.0;                       // all but one eigenvalue equal
          if (kind == 3 && (i % 3 == 0 || j % 3 == 0)) matrix(i, j) = 0.0;  // zero rows
          if (kind == 4) matrix(i, j) *= 1e-160;
        }
      }
      const double norm = (kind == 4 ? 1e-160 : kind == 1 ? 1e5 : 1.0) * n;
      const Solution s = solve(nm, n, a);
      expect_eigenpairs(nm, n, a, s, norm);
      for (std::size_t i = static_cast<std::size_t>(n); i < static_cast<std::size_t>(nm); ++i) {
        EXPECT_EQ(s.z[i], untouched) << "rows beyond n are not written";
      }
    }
  }
}

TEST(ddiag, sorts_a_diagonal_matrix_into_unit_vectors) {
  const Solution s = solve(3, 3, {3, 0, 0, 0, -1, 0, 0, 0, 2});
  EXPECT_EQ(s.d, (std::vector<double>{-1, 2, 3}));
  EXPECT_EQ(s.z, (std::vector<double>{0, 1, 0, 0, 0, 1, 1, 0, 0}));
  EXPECT_EQ(solve(1, 1, {4.0}).z, std::vector<double>{1.0});
}

// The sign of every vector is part of the contract: modes are compared across programs.
TEST(ddiag, keeps_the_signs_of_the_published_routines) {
  const Solution s = solve(2, 2, {2, 1, 1, 2});
  EXPECT_EQ(s.d, (std::vector<double>{1, 3}));
  const double half = std::sqrt(0.5);
  const std::vector<double> expected = {half, -half, half, half};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(s.z[i], expected[i], 1e-15);
}

TEST(ddiag, reports_what_does_not_converge) {
  std::vector<double> a(16, 0.5);
  a[6] = std::nan("");
  EXPECT_GT(solve(4, 4, a).ierr, 0);
}

}  // namespace

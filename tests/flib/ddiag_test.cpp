#include "flib/ddiag.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "flib/all_kernels.hpp"
#include "flib/array.hpp"
#include "models/plain_ddiag.hpp"

namespace {

struct Solution {
  std::vector<double> d, e, z;
  int ierr = 0;
};

constexpr double untouched = -77.0;

Solution blank_solution(int nm, int n) {
  const auto order = static_cast<std::size_t>(n);
  return {std::vector<double>(order), std::vector<double>(order),
          std::vector<double>(static_cast<std::size_t>(nm) * order, untouched), 0};
}

// Diagonalises the leading n x n block of a symmetric matrix stored with nm rows.
Solution solve(int nm, int n, const std::vector<double>& a) {
  Solution s = blank_solution(nm, n);
  flib::tred2e(nm, n, a.data(), s.d.data(), s.e.data(), s.z.data());
  flib::tql2e(nm, n, s.d.data(), s.e.data(), s.z.data(), s.ierr);
  return s;
}

// A symmetric matrix of one of several kinds, stored with nm rows; its upper triangle must not be
// read.
constexpr int kinds = 6;
std::vector<double> make_matrix(int nm, int n, int kind, std::mt19937& random) {
  std::uniform_real_distribution<double> number(-1.0, 1.0);
  std::vector<double> a(static_cast<std::size_t>(nm) * static_cast<std::size_t>(n), 1e300);
  const flib::ArrayView<double, 2> matrix(a.data(), {nm, n});
  for (int j = 1; j <= n; ++j) {
    for (int i = j; i <= n; ++i) {
      double& element = matrix(i, j) = number(random);
      if (kind == 1)
        element = 1e-4 * element + (i == j ? 100000.0 : 0.0);      // as the driver shifts it
      if (kind == 2) element = 1.0;                                // all but one equal
      if (kind == 3 && (i % 3 == 0 || j % 3 == 0)) element = 0.0;  // zero rows
      if (kind == 4) element *= 1e-160;
      if (kind == 5 && (i - 1) / 7 != (j - 1) / 7) element = -0.0;  // blocks: sweeps of all lengths
    }
  }
  return a;
}

// The largest element of A V - V D, in units of the rounding of its norm.
double residue(int nm, int n, std::vector<double> a, Solution s) {
  const flib::ArrayView<double, 2> matrix(a.data(), {nm, n});
  const flib::ArrayView<double, 2> z(s.z.data(), {nm, n});
  double largest = 0.0, norm = 0.0;
  for (int k = 1; k <= n; ++k) {
    const double value = s.d[static_cast<std::size_t>(k - 1)];
    for (int i = 1; i <= n; ++i) {
      double element = -value * z(i, k);
      for (int j = 1; j <= n; ++j) element += matrix(std::max(i, j), std::min(i, j)) * z(j, k);
      largest = std::max(largest, std::fabs(element));
      norm = std::max(norm, std::fabs(matrix(std::max(i, k), std::min(i, k))));
    }
  }
  return largest / (norm * n * 2.2e-16);
}

bool same_bits(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

// Blocks, panels, waves and registers of every width against the formulas element by element, with
// sizes around every block size.
TEST(ddiag, equals_the_textbook_order_bit_for_bit) {
  std::mt19937 random(4);
  for (const int n : {1, 2, 5, 8, 9, 15, 31, 33, 63, 64, 65, 66, 131}) {
    for (int kind = 0; kind < kinds; ++kind) {
      const int nm = n + n % 3;
      const std::vector<double> a = make_matrix(nm, n, kind, random);
      Solution plain = blank_solution(nm, n);
      plain::tred2e(nm, n, a.data(), plain.d.data(), plain.e.data(), plain.z.data());
      const Solution reduced = plain;
      plain::tql2e(nm, n, plain.d.data(), plain.e.data(), plain.z.data(), plain.ierr);
      EXPECT_LT(residue(nm, n, a, plain), 20) << n << " of kind " << kind;
      for (const flib::Kernels* const kernels : support::all_kernels()) {
        const std::string which =
            std::to_string(n) + " of kind " + std::to_string(kind) + ", " + kernels->name;
        Solution s = blank_solution(nm, n);
        flib::tred2e(*kernels, nm, n, a.data(), s.d.data(), s.e.data(), s.z.data());
        EXPECT_TRUE(same_bits(s.d, reduced.d) && same_bits(s.e, reduced.e)) << which;
        EXPECT_TRUE(same_bits(s.z, reduced.z)) << which;
        flib::tql2e(*kernels, nm, n, s.d.data(), s.e.data(), s.z.data(), s.ierr);
        EXPECT_TRUE(same_bits(s.d, plain.d) && same_bits(s.z, plain.z)) << which;
        EXPECT_EQ(s.ierr, 0) << which;
      }
    }
  }
}

int sweeps = 0;

TEST(ddiag, gives_an_eigenvalue_up_after_30_iterations) {
  flib::Kernels counting = flib::best_kernels();
  counting.rotate_columns = [](double*, std::ptrdiff_t, std::ptrdiff_t, const flib::Sweeps& batch,
                               double*) { sweeps += batch.count; };
  double d[] = {1.0, NAN}, e[] = {0.0, 1.0}, z[4] = {};
  int ierr = 0;
  flib::tql2e(counting, 2, 2, d, e, z, ierr);
  EXPECT_EQ(ierr, 1);
  EXPECT_EQ(sweeps, 30);
}

TEST(ddiag, tells_of_a_nan_whatever_the_kernels) {
  for (const flib::Kernels* const* kernels = flib::usable_kernels(); *kernels != nullptr;
       ++kernels) {
    constexpr int n = 40;
    std::vector<double> a(n * n, 0.5), d(n), e(n), z(n * n);
    a[n / 2 * (n + 1)] = NAN;
    int ierr = 0;
    flib::tred2e(**kernels, n, n, a.data(), d.data(), e.data(), z.data());
    flib::tql2e(**kernels, n, n, d.data(), e.data(), z.data(), ierr);
    EXPECT_GT(ierr, 0) << (*kernels)->name;
  }
}

// The sign of every vector is part of the contract: modes are compared across programs.
TEST(ddiag, keeps_the_signs_of_the_published_routines) {
  const Solution s = solve(2, 2, {2, 1, 1, 2});
  EXPECT_EQ(s.d, (std::vector<double>{1, 3}));
  const double half = std::sqrt(0.5);
  const std::vector<double> expected = {half, -half, half, half};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(s.z[i], expected[i], 1e-15);
}

}  // namespace

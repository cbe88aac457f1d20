// The projector and the vector routines it rests on.
#include "flib/projtrm_rot.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "flib/all_kernels.hpp"
#include "flib/array.hpp"
#include "flib/com.hpp"
#include "flib/formtrm1.hpp"
#include "flib/rotn.hpp"

namespace {

struct Molecule {
  const char* name;
  std::vector<double> mass, x;
  int motions;        // vectors that do not vanish
  bool is_principal;  // inertia tensor diagonal in the given axes
};

const Molecule molecules[] = {
    {"single atom", {12.0}, {0.3, -2.0, 1.0}, 3, true},
    {"linear along z", {1.0, 16.0, 12.0}, {0, 0, -1.5, 0, 0, 0.25, 0, 0, 3.0}, 5, true},
    {"principal axes", {16.0, 1.0, 1.0}, {0, 0, 0.22, 0, 1.43, -0.89, 0, -1.43, -0.89}, 6, true},
    {"tilted",
     {12.0, 1.0, 14.0, 16.0},
     {0, 0, 0, 1.1, 0.3, -0.7, -1.2, 1.9, 0.4, 0.5, -1.3, 2.2},
     6,
     false},
};

// The rigid-motion vectors of a molecule, moved to its centre of mass.
std::vector<double> motions_of(const Molecule& molecule) {
  const int n = static_cast<int>(molecule.mass.size());
  std::vector<double> xc = molecule.x;
  std::vector<double> v(molecule.x.size() * 6);
  int ier = 1;
  flib::com(n, molecule.mass.data(), xc.data(), ier);
  EXPECT_EQ(ier, 0);
  flib::formtrm1(n, molecule.mass.data(), xc.data(), v.data());
  return v;
}

TEST(projtrm_rot, does_nothing_without_atoms) {
  double hess = 5.0;
  int info = 1;
  flib::projtrm_rot(0, &hess, &hess, &hess, info);
  flib::formtrm1(0, &hess, &hess, &hess);
  EXPECT_EQ(info, 0);
  EXPECT_EQ(hess, 5.0);
}

TEST(projtrm_rot, removes_the_motions_exactly_in_principal_axes_only) {
  for (const Molecule& molecule : molecules) {
    const int n3 = static_cast<int>(molecule.x.size());
    std::vector<double> hess(molecule.x.size() * molecule.x.size());
    const flib::ArrayView<double, 2> h(hess.data(), {n3, n3});
    for (int i = 1; i <= n3; ++i) {
      for (int j = 1; j <= n3; ++j) h(i, j) = i == j ? 2.0 + i : 1.0 / (i + j);
    }
    const std::vector<double> x = molecule.x;
    int info = 1;
    flib::projtrm_rot(n3 / 3, x.data(), molecule.mass.data(), hess.data(), info);
    EXPECT_EQ(info, 0);
    EXPECT_EQ(x, molecule.x);
    std::vector<double> v = motions_of(molecule);
    int unit_vectors = 0;
    for (int k = 1; k <= 6; ++k) {
      double residue = 0.0, squared = 0.0;
      for (int i = 1; i <= n3; ++i) {
        double element = 0.0;
        for (int j = 1; j <= n3; ++j) {
          element += h(i, j) * v[static_cast<std::size_t>((k - 1) * n3 + j - 1)];
        }
        residue = std::max(residue, std::fabs(element));
        const double component = v[static_cast<std::size_t>((k - 1) * n3 + i - 1)];
        squared += component * component;
      }
      // 1/sqrt and the products round n3 times: a few units of 2**-52.
      if (std::fabs(squared - 1.0) < 1e-15 * n3) ++unit_vectors;
      // Elements of h are below 15; the rounding of the products stays below 1e-12.
      if (k <= 3 || molecule.is_principal) {
        EXPECT_LT(residue, 1e-12) << molecule.name << ", motion " << k;
      } else {
        EXPECT_GT(residue, 1e-3) << molecule.name << ", motion " << k << ": not orthogonalised";
      }
    }
    EXPECT_EQ(unit_vectors, molecule.motions) << molecule.name;
  }
}

TEST(projtrm_rot, multiplies_in_the_order_of_the_inner_index) {
  constexpr std::size_t n = 37;
  std::vector<double> a(n * n), b(n * n), plain(n * n), product(n * n),
      panel(flib::multiply_rows * n);
  for (std::size_t i = 0; i < a.size(); ++i) {
    a[i] = std::sin(static_cast<double>(i * i));
    b[i] = std::exp(std::cos(static_cast<double>(i)) * 20);
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t k = 0; k < n; ++k) plain[j * n + i] += a[k * n + i] * b[j * n + k];
    }
  }
  for (const flib::Kernels* const kernels : support::all_kernels()) {
    kernels->multiply(n, a.data(), b.data(), product.data(), panel.data());
    EXPECT_EQ(product, plain) << kernels->name;
  }
}

TEST(rotn, applies_the_matrix_and_not_its_transpose) {
  const std::vector<double> quarter_turn = {0, 1, 0, -1, 0, 0, 0, 0, 1};  // columns: y, -x, z
  std::vector<double> v = {1, 2, 3, -4, 5, 6};
  flib::rotn(2, quarter_turn.data(), v.data());
  EXPECT_EQ(v, (std::vector<double>{-2, 1, 3, -5, -4, 6}));
}

}  // namespace

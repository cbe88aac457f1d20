// A synthetic molecule of any size: a jittered grid of carbon atoms with springs between all pairs.
#pragma once

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace models {

constexpr double carbon_mass = 12.0;  // atomic mass units

struct Molecule {
  int natom;
  std::vector<double> x;  // 3 x natom, Angstrom
  std::vector<double> k;  // n3 x n3 force constants, Hartree/Bohr**2
};

// Adds the spring between the atoms whose x coordinates stand at a and b.
inline void add_spring(Molecule& m, std::size_t a, std::size_t b) {
  const std::size_t n3 = m.x.size();
  double d[3];
  double squared = 0.0;
  for (std::size_t i = 0; i < 3; ++i) {
    d[i] = m.x[a + i] - m.x[b + i];
    squared += d[i] * d[i];
  }
  const double spring = 0.6 * std::exp(-0.9 * std::sqrt(squared)) / squared;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const double term = spring * d[i] * d[j];
      m.k[(a + i) * n3 + a + j] += term;
      m.k[(b + i) * n3 + b + j] += term;
      m.k[(a + i) * n3 + b + j] -= term;
      m.k[(b + i) * n3 + a + j] -= term;
    }
  }
}

inline Molecule make_molecule(int natom) {
  Molecule m{natom, {}, {}};
  std::mt19937 random(42);
  std::uniform_real_distribution<double> jitter(-0.3, 0.3);
  const int side = static_cast<int>(std::ceil(std::cbrt(natom)));
  for (int a = 0; a < natom; ++a) {
    for (const int place : {a % side, a / side % side, a / side / side}) {
      m.x.push_back(1.6 * place + jitter(random));
    }
  }
  m.k.resize(m.x.size() * m.x.size());
  for (std::size_t a = 0; a < m.x.size(); a += 3) {
    for (std::size_t b = 0; b < a; b += 3) add_spring(m, a, b);
  }
  return m;
}

}  // namespace models

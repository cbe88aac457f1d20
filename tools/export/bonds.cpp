#include "export/bonds.hpp"

#include <cmath>

#include "flib/units_of_measure.hpp"

namespace exporting {

namespace {

// Of elements 1 to 96, pm.
constexpr int covalent_radii[] = {
    31,  28,  128, 96,  84,  76,  71,  66,  57,  58,  166, 141, 121, 111, 107, 105,
    102, 106, 203, 176, 170, 160, 153, 139, 139, 132, 126, 124, 132, 122, 122, 120,
    119, 120, 120, 116, 220, 195, 190, 175, 164, 154, 147, 146, 142, 139, 145, 144,
    142, 139, 139, 138, 139, 140, 244, 215, 207, 204, 203, 201, 199, 198, 198, 196,
    194, 192, 192, 189, 190, 187, 187, 175, 170, 162, 151, 144, 141, 136, 136, 132,
    145, 146, 148, 140, 150, 150, 260, 221, 215, 206, 200, 196, 190, 187, 180, 169};

}  // namespace

double covalent_radius(int atomic_number) {
  const auto place = static_cast<std::size_t>(atomic_number - 1);
  return place < std::size(covalent_radii) ? covalent_radii[place] / 100.0 : 1.5;
}

std::vector<std::size_t> bonded_atoms(const Content& content) {
  std::vector<std::size_t> pairs;
  const std::vector<int>& numbers = content.atomic_numbers;
  for (std::size_t a = 0; a < numbers.size(); ++a) {
    const double* const p = &content.geometry[3 * a];
    for (std::size_t b = 0; b < a; ++b) {
      const double* const q = &content.geometry[3 * b];
      const double apart = std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
      const double touching =
          (covalent_radius(numbers[a]) + covalent_radius(numbers[b])) / flib::angstrom_per_bohr;
      if (apart < 1.2 * touching) pairs.insert(pairs.end(), {b, a});
    }
  }
  return pairs;
}

}  // namespace exporting

#include "export/content.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace exporting {

std::vector<int> largest_rigid_weights(const std::vector<double>& rigid_weights,
                                       std::size_t count) {
  std::vector<int> modes(rigid_weights.size());
  std::iota(modes.begin(), modes.end(), 1);
  std::stable_sort(modes.begin(), modes.end(), [&](int a, int b) {
    return rigid_weights[static_cast<std::size_t>(a - 1)] >
           rigid_weights[static_cast<std::size_t>(b - 1)];
  });
  modes.resize(std::min(count, modes.size()));
  std::sort(modes.begin(), modes.end());
  return modes;
}

bool is_rigid_motion(const ModeList& list, std::size_t mode) {
  return std::binary_search(list.rigid_motions.begin(), list.rigid_motions.end(),
                            static_cast<int>(mode));
}

double scale_to_unit_motion(const ModeList& list, std::size_t mode) {
  const std::size_t natom = list.frequencies.size() / 3;
  const double* d = list.displacements.column(1, mode);
  double largest = 0.0;
  for (std::size_t a = 0; a < natom; ++a, d += 3) {
    largest = std::max(largest, std::hypot(d[0], d[1], d[2]));
  }
  return largest > 0.0 ? 1.0 / largest : 0.0;
}

}  // namespace exporting

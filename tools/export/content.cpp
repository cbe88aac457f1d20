#include "export/content.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "io/fatal.hpp"

namespace exporting {

std::string title(const Content& content) {
  const std::string changed = content.changed_masses.empty() ? "" : "; " + content.changed_masses;
  return "zandor_export " ZANDOR_VERSION ": " + io::printable(content.folder) + changed;
}

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

std::vector<std::size_t> vibrations(const ModeList& list) {
  std::vector<std::size_t> modes;
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    if (!is_rigid_motion(list, k)) modes.push_back(k);
  }
  return modes;
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

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

std::vector<bool> largest(const std::vector<double>& values, int count) {
  std::vector<std::size_t> order(values.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return values[a] > values[b]; });
  std::vector<bool> chosen(values.size());
  for (int i = 0; i < count; ++i) chosen[order[static_cast<std::size_t>(i)]] = true;
  return chosen;
}

std::vector<std::size_t> vibrations(const ModeList& list) {
  std::vector<std::size_t> modes;
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    if (!list.rigid[k - 1]) modes.push_back(k);
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

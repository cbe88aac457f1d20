// The axes of an output against those of the job list.
#pragma once

#include <string>

#include "collect/output_data.hpp"

namespace collect {

// Two places of an atom that agree within this count as the same, Angstrom: as printed with six
// decimals they differ by less, and a step is hundreds of times as long.
inline constexpr double place_tolerance = 1e-5;

struct Match {
  bool found = false;
  double largest = 0.0;  // distance that is left along an axis, Angstrom
  int atom = 0;          // whose, from 1
  double angle = 0.0;    // by which the output was turned back, degrees
};

// Whether the geometry is the expected one but for a shift and one turn.
Match match_geometry(const Eigen::Matrix3Xd& places, const Eigen::Matrix3Xd& expected);

// Brings places, forces, dipole and marks into the axes of the expected geometry, where the
// output's geometry matches it. A turn of atoms on one line, about which a dipole may stand anyhow,
// is a fatal stop; so are elements other than `numbers` (0: not known).
Match bring_into_axes(const std::string& file, const std::vector<int>& numbers,
                      const Eigen::Matrix3Xd& expected, JobOutput& output);

}  // namespace collect

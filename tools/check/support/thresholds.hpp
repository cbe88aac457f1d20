// The thresholds of the checks: one table, from which the options and the output are made.
#pragma once

#include <span>

namespace check {

// With the reason for each value; the units stand in the table. "Sound": measured in 13 real
// directories, of which two are loosely converged.
struct Thresholds {
  double header_change = 0.2;     // sound: 0.015 at most
  double geometry = 1e-5;         // two half units of the fifth decimal
  double input = 1e-4;            // two half units of the fourth decimal
  double stationary_note = 1e-4;  // sound: 8e-8, or a reference that was not optimised
  double stationary = 1e-3;       // usual optimisations stop at 4.5e-4
  double asymmetry = 1e-3;        // sound: 2.9e-5, 6.6e-4 with a step of 0.01 Angstrom
  double asymmetry_ratio = 10.0;  // sound: 1.2 at most
  double net_force = 1e-4;        // sound, tight: 2e-5 at most
  double frequency = 6000.0;      // sound: 4407 at most
  double rounding_note = 5.0;     // six decimals move frequencies by 4.7 at most, five by 48
  double rounding = 50.0;         // four decimals move them by up to 228
  double dipole_bounds = 3.0;     // ResidualLimits tells of these three
  double dipole_relative = 1e-2;
  double dipole_noise = 8.0;
  double dipole_mean = 10.0;  // sound: 6.3 at most
  double derived = 1e-4;      // what symmetry programs leave of a symmetric geometry
  double frame_angle = 0.1;   // in principal axes 0, in others 4.8 at least
  double frame = 30.0;        // in principal axes 3e-5 at most, in others 246 at least
  double mass = 0.02;         // masses rounded to two decimals pass
  double noise = 4.4e-10;     // 30 quanta of 2**-36, in which eigenvalues come
};

struct ThresholdName {
  const char* name;  // also of the option: --NAME
  double Thresholds::*value;
  const char* unit;
  const char* meaning;  // empty where there is no option: the value follows from the procedure
};

std::span<const ThresholdName> threshold_names();

}  // namespace check

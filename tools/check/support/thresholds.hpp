// The thresholds of the checks: one table, from which the options and the output are made.
#pragma once

#include <span>

namespace check {

struct Thresholds {
  double header_change = 0.2;
  double geometry = 1e-5;
  double input = 1e-4;
  double stationary_note = 1e-4;
  double stationary = 1e-3;
  double asymmetry = 1e-3;
  double asymmetry_ratio = 10.0;
  double net_force = 1e-4;
  double frequency = 6000.0;
  double rounding_note = 5.0;
  double rounding = 50.0;
  double dipole_bounds = 3.0;
  double dipole_relative = 1e-2;
  double dipole_noise = 8.0;
  double dipole_mean = 10.0;
  double derived = 1e-4;
  double frame_angle = 0.1;
  double frame = 30.0;
  double mass = 0.02;
  double noise = 4.4e-10;
};

struct ThresholdName {
  const char* name;  // also of the option: --NAME
  double Thresholds::*value;
  const char* unit;
  const char* meaning;  // empty where there is no option: the value follows from the procedure
};

std::span<const ThresholdName> threshold_names();

}  // namespace check

// The thresholds of the checks: one table, from which the options and the output are made.
#pragma once

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

inline constexpr ThresholdName threshold_names[] = {
    {"header-change", &Thresholds::header_change, "1",
     "relative change of the largest transition-density element"},
    {"geometry", &Thresholds::geometry, "Angstrom",
     "deviation of a displaced geometry from the reference and the step"},
    {"input", &Thresholds::input, "Angstrom",
     "difference between the reference's input and its sign file"},
    {"stationary-note", &Thresholds::stationary_note, "Hartree/Bohr",
     "largest reference force that is worth a note"},
    {"stationary", &Thresholds::stationary, "Hartree/Bohr",
     "largest reference force that is worth a warning"},
    {"asymmetry", &Thresholds::asymmetry, "Hartree/Bohr**2",
     "difference between H(i,j) and H(j,i), above what print rounding allows"},
    {"asymmetry-ratio", &Thresholds::asymmetry_ratio, "1",
     "asymmetry of a column against the median column, and against print rounding"},
    {"net-force", &Thresholds::net_force, "Hartree/Bohr**2",
     "net force or torque in a column, above what print rounding allows; 10 times the median too"},
    {"frequency", &Thresholds::frequency, "cm-1", "highest frequency that a molecule has"},
    {"rounding-note", &Thresholds::rounding_note, "cm-1",
     "what print rounding of forces may do to a frequency, worth a note"},
    {"rounding", &Thresholds::rounding, "cm-1", "the same, worth a warning"},
    {"dipole-bounds", &Thresholds::dipole_bounds, "1",
     "what misses a sum rule of the transition dipole over what print rounding allows"},
    {"dipole-relative", &Thresholds::dipole_relative, "1",
     "the same over the terms of the sum rules"},
    {"dipole-noise", &Thresholds::dipole_noise, "1",
     "the same over the noise of the dipoles; all three must be exceeded"},
    {"dipole-mean", &Thresholds::dipole_mean, "1",
     "distance of the mean dipole of two steps from the reference's, against the median coordinate "
     "and against print rounding"},
    {"derived", &Thresholds::derived, "Angstrom",
     "deviation of an operation from the symmetry of the reference"},
    {"frame-angle", &Thresholds::frame_angle, "degree",
     "angle between the axes and the principal axes that is worth a note"},
    {"frame", &Thresholds::frame, "cm-1", "projected rigid motion that is worth a warning"},
    {"mass", &Thresholds::mass, "amu", "distance of a mass from the nearest isotope"},
    {"noise", &Thresholds::noise, "atomic units", ""},
};

}  // namespace check

#include "check/support/thresholds.hpp"

namespace check {

namespace {

constexpr ThresholdName names[] = {
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

}  // namespace

std::span<const ThresholdName> threshold_names() { return names; }

}  // namespace check

// What zandor_ht was asked for and what it found: one line per vibration, sums over degenerate
// ones, and totals.
#pragma once

#include <Eigen/Dense>
#include <optional>
#include <string>
#include <vector>

#include "analysis/job_directory.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "ht/other_state.hpp"
#include "zandor/run_data.hpp"

namespace ht {

// A spectrum as it is asked for, cm-1.
struct Spectrum {
  double low = 0.0, high = 0.0, step = 0.0;
  double width = 0.0;    // full width at half maximum
  bool lorentz = false;  // the shape; Gaussian otherwise
  double origin = 0.0;   // place of the transition without quanta
};

struct Request {
  std::string control_file;
  analysis::DipoleChoices dipoles;
  std::vector<analysis::MassChange> masses;
  std::optional<double> kelvin;
  std::optional<double> energy;  // eV
  bool vertical = false;         // kind of the energy: vertical, or that of the 0-0 transition
  bool emission = false;
  std::optional<std::string> modes_of;  // a file with another state's modes
  double within = 0.5;  // Angstrom: how far its geometry may be from that of the jobs
  std::optional<Spectrum> spectrum;
};

// A vibration, or several degenerate ones together. Atomic units unless said.
struct Line {
  std::vector<int> modes;                            // numbers in the report's projected list
  double frequency = 0.0;                            // cm-1, the mean of several
  double overlap = 0.0;                              // with the report's mode, the least of several
  Eigen::Vector3d dmu_dQ = Eigen::Vector3d::Zero();  // e/sqrt(m_e), of one vibration only
  // Of real frequencies only:
  std::optional<double> dmu_dq;    // |dmu/dq|, e Bohr; root of the sum of squares of several
  std::optional<double> strength;  // 0 -> 1: |dmu/dq|**2 / 2, e**2 Bohr**2
  std::optional<double> share;     // of the sum of the strengths; none where the strength is zero
  std::optional<double> thermal;   // strength times coth(omega / 2kT), when asked for
  // f of 0 -> 1, when an energy is given and the transition's energy is above zero.
  std::optional<double> oscillator;
};

struct Totals {
  double reference_square = 0.0;  // |mu0|**2, e**2 Bohr**2
  double strength = 0.0;          // sum over the real modes
  int imaginary = 0;              // modes without strength, frequency zero included
  int without_oscillator = 0;     // modes with a strength, but E - omega not above zero
  std::optional<double> thermal;  // <|mu|**2> = |mu0|**2 + sum of the thermal strengths
  // With an energy: f of the 0-0 transition, sum of f over the modes that have one, and, with a
  // vertical energy and a temperature, 2/3 E <|mu|**2>.
  std::optional<double> reference_oscillator, oscillator, thermal_oscillator;
};

struct Results {
  std::optional<Fit> fit;  // of another state's geometry, whose modes these are
  int rigid_motions = 0;
  std::vector<Line> lines;       // by ascending frequency
  std::vector<Line> degenerate;  // sums over degenerate modes
  Totals totals;
  // The spectrum that was asked for, e**2 Bohr**2 per cm-1, at these places, cm-1: low, low + step
  // ... up to high. Each mode's strength stands at the place of its 0-1 transition, broadened to
  // that area. With a temperature hot bands are at 1-0, and the strengths of both add up to the
  // thermal one. Herzberg-Teller terms alone, without |mu0|**2 and what displaced geometries make
  // of it.
  std::vector<double> spectrum, places;
};

// Takes everything apart from the text of the head. The dipoles have to be fit for use.
Results form_results(const Request& request, const zandor::RunData& run,
                     const analysis::PreparedDipoles& dipoles);

}  // namespace ht

#include "export/xyz.hpp"

#include <cmath>
#include <numbers>

#include "export/text_columns.hpp"
#include "flib/units_of_measure.hpp"

namespace exporting {

namespace {

// What the second line of a frame says of its mode.
std::string mode_facts(const Results& results, const ModeList& list, std::size_t mode) {
  std::string text = "mode#=" + std::to_string(mode) +
                     " frequency_cm-1=" + shortest(list.frequencies[mode - 1]) +
                     " reduced_mass_u=" + shortest(list.reduced_masses[mode - 1]) +
                     " rigid_weight=" + shortest(list.rigid_weights[mode - 1]);
  if (!results.changed_masses.empty()) {
    text += " note=\"" + io::printable(results.changed_masses, "\"") + "\"";
  }
  return text;
}

void vector_columns(const double* vector, double factor, io::OutputFile& out) {
  for (int k = 0; k < 3; ++k) fixed_column(out, factor * vector[k], 16, 10);
}

// Where atom `a` (from 0) stands when it is moved by `shift` times its displacement, in Angstrom.
void place_columns(const Results& results, std::size_t a, const double* displacement, double shift,
                   io::OutputFile& out) {
  std::array<double, 3> place{};
  for (std::size_t k = 0; k < 3; ++k) {
    place[k] = results.geometry[3 * a + k] * flib::angstrom_per_bohr + shift * displacement[k];
  }
  out.text(results.symbols[a], 4);
  vector_columns(place.data(), 1.0, out);
}

}  // namespace

void write_xyz(const Results& results, const ModeList& list, double amplitude, std::size_t only,
               io::OutputFile& out) {
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    if (only != 0 && k != only) continue;
    out.text(std::to_string(results.symbols.size()));
    out.text("\nProperties=species:S:1:pos:R:3:mode:R:3 " + mode_facts(results, list, k) + "\n");
    const double scale = amplitude * scale_to_unit_motion(list, k);
    for (std::size_t a = 0; a < results.symbols.size(); ++a) {
      const double* const displacement = list.displacements.column(a + 1, k);
      place_columns(results, a, displacement, 0.0, out);
      vector_columns(displacement, scale, out);
      out.end_line();
    }
  }
}

void write_xyz_movie(const Results& results, const ModeList& list, double amplitude,
                     std::size_t mode, int frames, io::OutputFile& out) {
  const double scale = amplitude * scale_to_unit_motion(list, mode);
  for (int frame = 0; frame < frames; ++frame) {
    out.text(std::to_string(results.symbols.size()));
    out.text("\nProperties=species:S:1:pos:R:3 " + mode_facts(results, list, mode));
    out.text(" frame=" + std::to_string(frame + 1) + "\n");
    const double shift = scale * std::sin(2.0 * std::numbers::pi * frame / frames);
    for (std::size_t a = 0; a < results.symbols.size(); ++a) {
      place_columns(results, a, list.displacements.column(a + 1, mode), shift, out);
      out.end_line();
    }
  }
}

}  // namespace exporting

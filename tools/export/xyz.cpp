#include <algorithm>
#include <cmath>
#include <numbers>

#include "export/formats.hpp"
#include "export/text_columns.hpp"
#include "flib/units_of_measure.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

// What the second line of a frame says of its mode.
std::string mode_facts(const Content& content, const ModeList& list, std::size_t mode) {
  std::string text = io::joined("mode#=", mode, " frequency_cm-1=", list.frequencies[mode - 1],
                                " reduced_mass_u=", list.reduced_masses[mode - 1],
                                " rigid_weight=", list.rigid_weights[mode - 1]);
  if (!content.changed_masses.empty()) {
    text += " note=\"" + io::printable(content.changed_masses, "\"") + "\"";
  }
  return text;
}

std::string vector_columns(const std::array<double, 3>& vector) {
  std::string text;
  for (const double component : vector) text += fixed_column(component, 16, 10);
  return text;
}

// Symbol and place of an atom that is moved by `shift` times its displacement, in Angstrom.
std::string atom_columns(const Content& content, std::size_t a, const double* displacement,
                         double shift) {
  std::array<double, 3> place{};
  for (std::size_t k = 0; k < 3; ++k) {
    place[k] = content.geometry[3 * a + k] * flib::angstrom_per_bohr + shift * displacement[k];
  }
  std::string symbol(4, ' ');
  io::text_field(symbol.data(), content.symbols[a], 4);
  return symbol + vector_columns(place);
}

void begin_frame(const Content& content, const std::string& head, io::OutputFile& out) {
  out.text(std::to_string(content.symbols.size()) + "\n" + head + "\n");
}

// The factor that makes the farthest moving atom of a mode move by 1; 0 where no atom moves.
double scale_to_unit_motion(const ModeList& list, std::size_t mode) {
  const std::size_t natom = list.frequencies.size() / 3;
  const double* d = list.displacements.column(1, mode);
  double largest = 0.0;
  for (std::size_t a = 0; a < natom; ++a, d += 3) {
    largest = std::max(largest, std::hypot(d[0], d[1], d[2]));
  }
  return largest > 0.0 ? 1.0 / largest : 0.0;
}

}  // namespace

std::string frame_head(const Content& content, const ModeList& list, std::size_t mode) {
  return "Properties=species:S:1:pos:R:3:mode:R:3 " + mode_facts(content, list, mode);
}

std::string atom_at_rest(const Content& content, std::size_t a) {
  constexpr double nowhere[3] = {};
  return atom_columns(content, a, nowhere, 0.0);
}

void write_xyz(const Content& content, const ModeList& list, double amplitude, std::size_t only,
               io::OutputFile& out) {
  for (std::size_t k = 1; k <= list.frequencies.size(); ++k) {
    if (only != 0 && k != only) continue;
    begin_frame(content, frame_head(content, list, k), out);
    const double scale = amplitude * scale_to_unit_motion(list, k);
    for (std::size_t a = 0; a < content.symbols.size(); ++a) {
      const double* const d = list.displacements.column(a + 1, k);
      out.text(atom_at_rest(content, a) +
               vector_columns({scale * d[0], scale * d[1], scale * d[2]}) + "\n");
    }
  }
}

void write_xyz_movie(const Content& content, const ModeList& list, double amplitude,
                     std::size_t mode, int frames, io::OutputFile& out) {
  const double scale = amplitude * scale_to_unit_motion(list, mode);
  for (int frame = 0; frame < frames; ++frame) {
    begin_frame(content,
                "Properties=species:S:1:pos:R:3 " + mode_facts(content, list, mode) +
                    " frame=" + std::to_string(frame + 1),
                out);
    const double shift = scale * std::sin(2.0 * std::numbers::pi * frame / frames);
    for (std::size_t a = 0; a < content.symbols.size(); ++a) {
      out.text(atom_columns(content, a, list.displacements.column(a + 1, mode), shift) + "\n");
    }
  }
}

}  // namespace exporting

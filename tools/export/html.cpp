#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "analysis/formula.hpp"
#include "analysis/herzberg_teller.hpp"
#include "analysis/vibrations.hpp"
#include "export/bonds.hpp"
#include "export/formats.hpp"
#include "export/json.hpp"
#include "export/page.hpp"
#include "flib/units_of_measure.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

// The columns of a mode's row, which the page shows and saves.
Json columns(bool with_dipoles) {
  Json names = {"mode", "frequency_cm-1", "reduced_mass_u", "rigid_weight", "rigid_motion"};
  if (!with_dipoles) return names;
  for (const char* const name :
       {"dmu_dQ_x_au", "dmu_dQ_y_au", "dmu_dQ_z_au", "dmu_dq_au", "strength_0-1_au"}) {
    names.push_back(name);
  }
  return names;
}

Json row(const ModeList& list, std::size_t mode) {
  const std::size_t k = mode - 1;
  const bool rigid = list.rigid[k];
  Json cells = {mode, list.frequencies[k], list.reduced_masses[k], list.rigid_weights[k],
                rigid ? 1 : 0};
  if (list.dipole_derivatives.empty()) return cells;
  for (std::size_t i = 0; i < 3; ++i) cells.push_back(list.dipole_derivatives[3 * k + i]);
  const bool vibrates = list.frequencies[k] > 0.0 && !rigid;
  cells.push_back(vibrates ? Json(std::sqrt(2.0 * list.strengths[k])) : Json());
  cells.push_back(vibrates ? Json(list.strengths[k]) : Json());
  return cells;
}

Json mode_set(const Content& content, const ModeList& list) {
  const std::size_t n3 = list.frequencies.size();
  // One base64 text, whose pieces must not end within a group of three bytes: a mode has 3 natom
  // integers of two bytes.
  std::string displacements;
  std::vector<double> scales(n3);
  Json rows = Json::array(), frames = Json::array();
  for (std::size_t k = 1; k <= n3; ++k) {
    rows.push_back(row(list, k));
    frames.push_back(frame_head(content, list, k));
    displacements += packed_displacements(list.displacements.column(1, k), n3, scales[k - 1]);
  }
  return {{"rows", rows},
          {"frames", frames},
          {"displacements", displacements},
          {"displacement_scales", numbers(scales.data(), {n3})}};
}

Json data_of(const Content& content) {
  std::vector<double> geometry, radii;
  Json notes = Json::array(), atoms = Json::array();
  for (const double x : content.geometry) geometry.push_back(x * flib::angstrom_per_bohr);
  for (const int number : content.atomic_numbers) radii.push_back(covalent_radius(number));
  for (const Note& note : content.notes) {
    notes.push_back({{"text", note.text}, {"warning", note.warning}});
  }
  for (std::size_t a = 0; a < content.symbols.size(); ++a)
    atoms.push_back(atom_at_rest(content, a));
  return {{"program", std::string(io::program_name) + " " ZANDOR_VERSION},
          {"folder", content.folder},
          {"control_file", content.control_file},
          {"notes", notes},
          {"debye_per_angstrom_root_u", analysis::debye_per_angstrom_root_amu},
          {"degenerate_within", analysis::degenerate_within},
          {"formula", analysis::formula_parts(content.symbols)},
          {"symbols", content.symbols},
          {"atomic_numbers", content.atomic_numbers},
          {"geometry", numbers(geometry.data(), {geometry.size()})},
          {"radii", radii},
          {"bonds", bonded_atoms(content)},
          {"view", content.view},
          {"atoms", atoms},
          {"columns", columns(!content.projected.dipole_derivatives.empty())},
          {"projected", mode_set(content, content.projected)},
          {"unprojected", mode_set(content, content.unprojected)}};
}

}  // namespace

std::string packed_displacements(const double* values, std::size_t size, double& scale) {
  constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  scale = 0.0;
  for (std::size_t i = 0; i < size; ++i) scale = std::max(scale, std::fabs(values[i]));
  std::string text;
  // The three numbers of an atom, six bytes, make eight digits.
  for (std::size_t i = 0; i + 2 < size; i += 3) {
    std::uint64_t group = 0;
    for (std::size_t k = i; k < i + 3; ++k) {
      const double share = scale > 0.0 ? values[k] / scale : 0.0;
      const auto packed = static_cast<std::uint64_t>(std::lround(share * 32767));
      group = group << 16 | (packed & 0xff) << 8 | (packed >> 8 & 0xff);
    }
    for (int shift = 42; shift >= 0; shift -= 6) text += digits[group >> shift & 63];
  }
  return text;
}

void write_html(const Content& content, io::OutputFile& out) {
  constexpr std::string_view place_of_data = "@DATA@";
  const std::string_view page(page_template);
  const std::size_t at = page.find(place_of_data);
  out.text(page.substr(0, at));
  // '<' as an escape, so that no text can end the element that holds the data.
  const std::string data = text_of(data_of(content));
  std::size_t from = 0;
  for (std::size_t to = 0; (to = data.find('<', from)) != std::string::npos; from = to + 1) {
    out.text(data.substr(from, to - from)).text("\\u003c");
  }
  out.text(data.substr(from));
  out.text(page.substr(at + place_of_data.size()));
}

}  // namespace exporting

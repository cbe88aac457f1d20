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
#include "io/fatal.hpp"

namespace exporting {

namespace {

// A mode's row in the table, by the names of its columns, which the page shows and saves.
Json row(const ModeList& list, std::size_t mode) {
  const std::size_t k = mode - 1;
  Json row = {{"mode", mode},
              {"frequency_cm-1", list.frequencies[k]},
              {"reduced_mass_u", list.reduced_masses[k]},
              {"rigid_weight", list.rigid_weights[k]},
              {"rigid_motion", list.rigid[k] ? 1 : 0}};
  if (list.dipole_derivatives.empty()) return row;
  const double* const slope = &list.dipole_derivatives[3 * k];
  const bool vibrates = list.frequencies[k] > 0.0 && !list.rigid[k];
  row.update({{"dmu_dQ_x_au", slope[0]},
              {"dmu_dQ_y_au", slope[1]},
              {"dmu_dQ_z_au", slope[2]},
              {"dmu_dq_au", vibrates ? Json(std::sqrt(2.0 * list.strengths[k])) : Json()},
              {"strength_0-1_au", vibrates ? Json(list.strengths[k]) : Json()}});
  return row;
}

Json mode_set(const Content& content, const ModeList& list) {
  const std::size_t n3 = list.frequencies.size();
  std::string displacements;
  std::vector<double> scales(n3);
  Json rows = Json::array(), frames = Json::array();
  for (std::size_t k = 1; k <= n3; ++k) {
    const Json cells = row(list, k);
    rows.push_back(Json::array_t(cells.begin(), cells.end()));
    frames.push_back(frame_head(content, list, k));
    displacements += packed_displacements(list.displacements.column(1, k), n3, scales[k - 1]);
  }
  return {{"rows", rows},
          {"frames", frames},
          {"displacements", displacements},
          {"displacement_scales", scales}};
}

Json data_of(const Content& content) {
  std::vector<double> radii;
  std::vector<std::string> columns;
  Json notes = Json::array(), atoms = Json::array();
  const Json first_row = row(content.projected, 1);
  for (const auto& [name, cell] : first_row.items()) columns.push_back(name);
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
          {"geometry", in_angstrom(content.geometry)},
          {"radii", radii},
          {"bonds", bonded_atoms(content)},
          {"view", content.view},
          {"atoms", atoms},
          {"columns", columns},
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

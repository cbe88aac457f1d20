#include "export/json.hpp"

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <numeric>
#include <span>

#include "io/fatal.hpp"

namespace exporting {

namespace {

Json array_of(const double* values, std::span<const std::size_t> shape) {
  if (shape.empty()) {
    if (!std::isfinite(*values)) {
      io::fatal_stop("expected finite numbers to write, found one that is not");
    }
    return *values;
  }
  const auto inner = shape.subspan(1);
  const std::size_t step =
      std::accumulate(inner.begin(), inner.end(), std::size_t{1}, std::multiplies());
  Json array = Json::array();
  for (std::size_t i = 0; i < shape.front(); ++i)
    array.push_back(array_of(values + i * step, inner));
  return array;
}

Json provenance(const Content& content) {
  Json inputs = Json::array(), notes = Json::array();
  for (const std::string& file : content.input_files) inputs.push_back({{"file", file}});
  for (const Note& note : content.notes) notes.push_back(note.text);
  return {{"program", io::program_name},
          {"version", ZANDOR_VERSION},
          {"control_file", content.control_file},
          {"inputs", inputs},
          {"notes", notes}};
}

Json units() {
  return {
      {"masses", "u"},
      {"geometry", "bohr"},
      {"step", "bohr"},
      {"hessian", "hartree/bohr**2, symmetrised: both elements of a pair are their mean"},
      {"transition_dipole", "e*bohr"},
      {"transition_dipole_gradient",
       "e: [atom][axis of the displacement][component of the dipole]"},
      {"frequencies", "cm-1, imaginary ones negative"},
      {"reduced_masses", "u, of displacements of unit Cartesian length"},
      {"displacements", "none, unit Cartesian length: [mode][atom][axis]"},
      {"rigid_weight",
       "none, 0 to 1: share of translations and rotations in the mass-weighted mode"},
      {"transition_dipole_derivatives",
       "e/sqrt(electron mass), along the mass-weighted mode: [mode][component]"},
  };
}

Json modes(const ModeList& list) {
  const std::size_t n3 = list.frequencies.size();
  Json json = {{"frequencies", numbers(list.frequencies.data(), {n3})},
               {"reduced_masses", numbers(list.reduced_masses.data(), {n3})},
               {"displacements", numbers(list.displacements.data(), {n3, n3 / 3, 3})},
               {"rigid_weight", numbers(list.rigid_weights.data(), {n3})}};
  if (!list.dipole_derivatives.empty()) {
    json["transition_dipole_derivatives"] = numbers(list.dipole_derivatives.data(), {n3, 3});
  }
  return json;
}

// Objects a key to a line; an array stays on the line of its key.
void write_value(const Json& value, const std::string& indent, io::OutputFile& out) {
  if (!value.is_object()) {
    out.text(text_of(value));
    return;
  }
  const char* before = "{\n ";
  for (const auto& [key, member] : value.items()) {
    out.text(before + indent + text_of(key) + ": ");
    write_value(member, indent + " ", out);
    before = ",\n ";
  }
  out.text("\n" + indent + "}");
}

}  // namespace

Json numbers(const double* values, std::initializer_list<std::size_t> shape) {
  return array_of(values, {shape.begin(), shape.size()});
}

std::string text_of(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void write_json(const Content& content, io::OutputFile& out) {
  const std::size_t natom = content.symbols.size();
  Json json = {{"schema_name", "zandor_vibrations"},
               {"schema_version", 1},
               {"provenance", provenance(content)},
               {"units", units()},
               {"symbols", content.symbols},
               {"atomic_numbers", content.atomic_numbers},
               {"masses", numbers(content.masses.data(), {natom})},
               {"geometry", numbers(content.geometry.data(), {3 * natom})},
               {"step", numbers(&content.step, {})},
               {"symmetry_used", content.symmetry_used},
               {"hessian", numbers(content.hessian.data(), {3 * natom, 3 * natom})},
               {"transition_dipole", numbers(content.dipole.data(), {3})}};
  if (!content.dipole_gradient.empty()) {
    json["transition_dipole_gradient"] = numbers(content.dipole_gradient.data(), {natom, 3, 3});
  }
  json["projected"] = modes(content.projected);
  json["unprojected"] = modes(content.unprojected);
  write_value(json, "", out);
  out.end_line();
}

}  // namespace exporting

#include "export/json.hpp"

#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>
#include <span>

#include "export/formats.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

using Shape = std::span<const std::size_t>;

std::size_t size_of(Shape shape) {
  return std::accumulate(shape.begin(), shape.end(), std::size_t{1}, std::multiplies());
}

Json array_of(const double* values, Shape shape) {
  if (shape.empty()) {
    if (!std::isfinite(*values)) {
      io::fatal_stop("expected finite numbers to write, found one that is not");
    }
    return *values;
  }
  const Shape inner = shape.subspan(1);
  Json array = Json::array();
  for (std::size_t i = 0; i < shape.front(); ++i) {
    array.push_back(array_of(values + i * size_of(inner), inner));
  }
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
      {"excitation_energy", "hartree, as the reference's sign file has it"},
      {"oscillator_strength", "none, as the reference's sign file has it"},
      {"gradient", "hartree/bohr, of the energy at the reference geometry: minus the forces"},
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

void add_modes(const ModeList& list, JsonObject json) {
  const std::size_t n3 = list.frequencies.size();
  json.add_numbers("frequencies", list.frequencies.data(), {n3});
  json.add_numbers("reduced_masses", list.reduced_masses.data(), {n3});
  json.add_numbers("displacements", list.displacements.data(), {n3, n3 / 3, 3});
  json.add_numbers("rigid_weight", list.rigid_weights.data(), {n3});
  if (!list.dipole_derivatives.empty()) {
    json.add_numbers("transition_dipole_derivatives", list.dipole_derivatives.data(), {n3, 3});
  }
  json.end();
}

}  // namespace

std::string text_of(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

io::OutputFile& JsonObject::begin(const std::string& key) {
  out_.text((empty_ ? "{\n " : ",\n ") + indent_ + text_of(key) + ": ");
  empty_ = false;
  return out_;
}

void JsonObject::add(const std::string& key, const Json& value) {
  if (!value.is_object()) {
    begin(key).text(text_of(value));
    return;
  }
  JsonObject members = object(key);
  for (const auto& [name, member] : value.items()) members.add(name, member);
  members.end();
}

void JsonObject::add_numbers(const std::string& key, const double* values,
                             const std::vector<std::size_t>& shape) {
  begin(key);
  if (shape.size() < 2) {
    out_.text(text_of(array_of(values, shape)));
    return;
  }
  const Shape inner = Shape(shape).subspan(1);
  for (std::size_t i = 0; i < shape.front(); ++i) {
    const Json row = array_of(values + i * size_of(inner), inner);
    out_.text((i == 0 ? "[" : ",") + text_of(row));
  }
  out_.text(shape.front() == 0 ? "[]" : "]");
}

void write_json(const Content& content, io::OutputFile& out) {
  const std::size_t natom = content.symbols.size();
  const auto n3 = 3 * natom;
  JsonObject json(out);
  json.add("schema_name", "zandor_vibrations");
  json.add("schema_version", 1);
  json.add("provenance", provenance(content));
  json.add("units", units());
  json.add("symbols", content.symbols);
  json.add("atomic_numbers", content.atomic_numbers);
  json.add_numbers("masses", content.masses.data(), {natom});
  json.add_numbers("geometry", content.geometry.data(), {n3});
  json.add_numbers("step", &content.step, {});
  json.add("symmetry_used", content.symmetry_used);
  if (content.excitation_energy) json.add("excitation_energy", *content.excitation_energy);
  if (content.oscillator_strength) json.add("oscillator_strength", *content.oscillator_strength);
  if (!content.gradient.empty()) json.add_numbers("gradient", content.gradient.data(), {n3});
  json.add_numbers("hessian", content.hessian.data(), {n3, n3});
  json.add_numbers("transition_dipole", content.dipole.data(), {3});
  if (!content.dipole_gradient.empty()) {
    json.add_numbers("transition_dipole_gradient", content.dipole_gradient.data(), {natom, 3, 3});
  }
  add_modes(content.projected, json.object("projected"));
  add_modes(content.unprojected, json.object("unprojected"));
  json.end();
  out.end_line();
}

}  // namespace exporting

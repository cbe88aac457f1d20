#include "export/json.hpp"

#include "export/json_text.hpp"
#include "export/sha256.hpp"
#include "io/fatal.hpp"

namespace exporting {

namespace {

struct Unit {
  const char* key;
  const char* text;
};

constexpr Unit units[] = {
    {"masses", "u"},
    {"geometry", "bohr"},
    {"step", "bohr"},
    {"hessian", "hartree/bohr**2, symmetrised: both elements of a pair are their mean"},
    {"transition_dipole", "e*bohr"},
    {"transition_dipole_gradient", "e: [atom][axis of the displacement][component of the dipole]"},
    {"frequencies", "cm-1, imaginary ones negative"},
    {"reduced_masses", "u, of displacements of unit Cartesian length"},
    {"displacements", "none, unit Cartesian length: [mode][atom][axis]"},
    {"rigid_weight", "none, 0 to 1: share of translations and rotations in the mass-weighted mode"},
    {"transition_dipole_derivatives",
     "e/sqrt(electron mass), along the mass-weighted mode: [mode][component]"},
};

void write_provenance(const Results& results, JsonText& json) {
  json.begin_object();
  json.key("program");
  json.text(io::program_name);
  json.key("version");
  json.text(ZANDOR_VERSION);
  json.key("control_file");
  json.text(results.control_file);
  json.key("inputs");
  json.begin_array();
  for (const std::string& file : results.input_files) {
    json.begin_object(true);
    json.key("file");
    json.text(file);
    json.key("sha256");
    json.text(sha256_of_file(file));
    json.end_object();
  }
  json.end_array();
  json.key("notes");
  json.texts(results.notes);
  json.end_object();
}

void write_units(JsonText& json) {
  json.begin_object();
  for (const Unit& unit : units) {
    json.key(unit.key);
    json.text(unit.text);
  }
  json.end_object();
}

// Rows of `rows` vectors of three components, one row to a line.
void write_vectors(const double* values, std::size_t count, std::size_t rows, JsonText& json) {
  json.begin_array();
  for (std::size_t i = 0; i < count; ++i) {
    json.begin_array(true);
    for (std::size_t row = 0; row < rows; ++row, values += 3) json.numbers(values, 3);
    json.end_array();
  }
  json.end_array();
}

void write_modes(const ModeList& list, JsonText& json) {
  const std::size_t n3 = list.frequencies.size();
  json.begin_object();
  json.key("frequencies");
  json.numbers(list.frequencies.data(), n3);
  json.key("reduced_masses");
  json.numbers(list.reduced_masses.data(), n3);
  json.key("displacements");
  write_vectors(list.displacements.data(), n3, n3 / 3, json);
  json.key("rigid_weight");
  json.numbers(list.rigid_weights.data(), n3);
  if (!list.dipole_derivatives.empty()) {
    json.key("transition_dipole_derivatives");
    json.number_rows(list.dipole_derivatives.data(), n3, 3);
  }
  json.end_object();
}

void write_molecule(const Results& results, JsonText& json) {
  const std::size_t natom = results.symbols.size();
  json.key("symbols");
  json.texts(results.symbols);
  json.key("atomic_numbers");
  json.integers(results.atomic_numbers);
  json.key("masses");
  json.numbers(results.masses.data(), natom);
  json.key("geometry");
  json.numbers(results.geometry.data(), 3 * natom);
  json.key("step");
  json.number(results.step);
  json.key("symmetry_used");
  json.boolean(results.symmetry_used);
}

}  // namespace

void write_json(const Results& results, io::OutputFile& out) {
  const std::size_t natom = results.symbols.size();
  JsonText json(out);
  json.begin_object();
  json.key("schema_name");
  json.text("zandor_vibrations");
  json.key("schema_version");
  json.integer(1);
  json.key("provenance");
  write_provenance(results, json);
  json.key("units");
  write_units(json);
  write_molecule(results, json);
  json.key("hessian");
  json.number_rows(results.hessian.data(), 3 * natom, 3 * natom);
  json.key("transition_dipole");
  json.numbers(results.dipole.data(), 3);
  if (!results.dipole_gradient.empty()) {
    json.key("transition_dipole_gradient");
    write_vectors(results.dipole_gradient.data(), natom, 3, json);
  }
  json.key("projected");
  write_modes(results.projected, json);
  json.key("unprojected");
  write_modes(results.unprojected, json);
  json.end_object();
  out.end_line();
}

}  // namespace exporting

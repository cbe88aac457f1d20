// The neutral form that any script can write: docs/zandor-job.schema.json.
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>

#include "analysis/isotopes.hpp"
#include "collect/output_lines.hpp"
#include "collect/readers/readers.hpp"
#include "flib/units_of_measure.hpp"

namespace collect {

namespace {

using Json = nlohmann::json;

constexpr std::size_t longest_text = 64UL << 20;
constexpr int deepest = 16;

struct Unit {
  const char* name;
  double factor;  // to that of JobOutput
};
constexpr std::array length_units = {Unit{"Angstrom", 1.0}, Unit{"Bohr", flib::angstrom_per_bohr}};
constexpr std::array energy_units = {Unit{"Hartree", 1.0},
                                     Unit{"eV", 1.0 / flib::electronvolts_per_hartree}};
constexpr std::array force_units = {
    Unit{"Hartree/Bohr", 1.0},
    Unit{"eV/Angstrom", flib::angstrom_per_bohr / flib::electronvolts_per_hartree}};
constexpr std::array dipole_units = {Unit{"au", 1.0}, Unit{"Debye", 1.0 / flib::debye_per_au}};

class JobDocument {
 public:
  JobDocument(const std::string& file, Json document) : file_(file), all_(std::move(document)) {}

  void read(const Request& request, JobOutput& output) const {
    const auto atoms = static_cast<std::size_t>(request.natom);
    if (text("format") != "zandor-job") stop("'format' to be \"zandor-job\"", all_["format"]);
    const Json& ended = member("finished");
    if (!ended.is_boolean() || !ended.get<bool>()) stop("'finished' to be true", ended);
    output.program = all_.contains("program") ? text("program") : "JSON";
    output.root = integer("state");
    need_root(file_, request, output.root);
    read_symbols(request, output);
    output.places = rows("geometry", atoms) * factor("length", length_units);
    const bool as_gradient = all_.contains("gradient");
    if (as_gradient == all_.contains("forces")) {
      io::fatal_stop({file_}, "expected either 'gradient' or 'forces', found both or none");
    }
    output.forces = rows(as_gradient ? "gradient" : "forces", atoms) *
                    ((as_gradient ? -1.0 : 1.0) * factor("force", force_units));
    read_transition(output);
  }

 private:
  [[noreturn]] void stop(const std::string& expected, const Json& found) const {
    io::fatal_stop({file_},
                   "expected " + expected + ", found " +
                       io::quoted(found.dump(-1, ' ', true, Json::error_handler_t::replace)));
  }
  const Json& member(const char* key) const {
    if (!all_.contains(key))
      io::fatal_stop({file_}, "expected the member '" + std::string(key) + "', found none");
    return all_[key];
  }
  std::string text(const char* key) const {
    const Json& value = member(key);
    if (!value.is_string()) stop("'" + std::string(key) + "' (text)", value);
    return value.get<std::string>();
  }
  double number(const Json& value, const std::string& what) const {
    if (!value.is_number() || !std::isfinite(value.get<double>()))
      stop("'" + what + "' (number)", value);
    return value.get<double>();
  }
  double energy(const char* key) const {
    return number(all_[key], key) * factor("energy", energy_units);
  }
  int integer(const char* key) const {
    const Json& value = member(key);
    if (!value.is_number_integer() || value < 0 || value > 1000000) {
      stop("'" + std::string(key) + "' (integer)", value);
    }
    return value.get<int>();
  }
  std::vector<double> vector(const Json& values, const std::string& what, std::size_t size) const {
    if (!values.is_array() || values.size() != size) {
      stop("'" + what + "' with " + std::to_string(size) + " numbers", values);
    }
    std::vector<double> result;
    for (const Json& value : values) result.push_back(number(value, what));
    return result;
  }
  std::vector<double> vector_if_any(const char* key, std::size_t size) const {
    return all_.contains(key) ? vector(all_[key], key, size) : std::vector<double>();
  }
  Eigen::Matrix3Xd rows(const char* key, std::size_t atoms) const {
    const Json& values = member(key);
    if (!values.is_array() || values.size() != atoms) {
      stop("'" + std::string(key) + "' with a row for each of " + std::to_string(atoms) + " atoms",
           values);
    }
    Eigen::Matrix3Xd result(3, static_cast<Eigen::Index>(atoms));
    for (std::size_t a = 0; a < atoms; ++a) {
      result.col(static_cast<Eigen::Index>(a)) =
          Eigen::Map<const Eigen::Vector3d>(vector(values[a], key, 3).data());
    }
    return result;
  }
  // Units have to be spelt out.
  template <std::size_t size>
  double factor(const char* kind, const std::array<Unit, size>& units) const {
    const Json& all = member("units");
    const Json found = all.is_object() && all.contains(kind) ? all[kind] : Json();
    std::string known;
    for (const Unit& unit : units) {
      if (found == unit.name) return unit.factor;
      known += std::string(known.empty() ? "" : " or ") + unit.name;
    }
    stop("behind 'units' as '" + std::string(kind) + "' " + known, found);
  }
  void read_symbols(const Request& request, JobOutput& output) const {
    const Json& symbols = member("symbols");
    need_atoms(file_, request, symbols.is_array() ? symbols.size() : 0, "'symbols'");
    for (const Json& symbol : symbols) {
      const std::string name = symbol.is_string() ? symbol.get<std::string>() : "";
      output.numbers.push_back(analysis::element_number(name));
      if (output.numbers.back() == 0) stop("'symbols' to hold symbols of elements", symbol);
    }
  }
  void read_transition(JobOutput& output) const {
    Transition transition;
    transition.dipole = vector(member("transition_dipole"), "transition_dipole", 3);
    for (double& value : transition.dipole) value *= factor("dipole", dipole_units);
    if (all_.contains("energy")) transition.energy = energy("energy");
    if (all_.contains("ground_energy")) transition.ground_energy = energy("ground_energy");
    if (all_.contains("oscillator_strength")) {
      transition.oscillator_strength = number(all_["oscillator_strength"], "oscillator_strength");
    }
    transition.quadrupole = vector_if_any("transition_quadrupole", 6);
    transition.velocity = vector_if_any("transition_velocity", 3);
    transition.magnetic = vector_if_any("transition_angular_momentum", 3);
    fill_transition(transition, output);
  }

  std::string file_;
  Json all_;
};

}  // namespace

void read_neutral_json(const std::string& file, const Request& request, JobOutput& output) {
  std::string text;
  {
    OutputLines lines(file);
    while (lines.next()) {
      text.append(lines.text()).append("\n");
      if (text.size() > longest_text)
        lines.stop("expected a JSON document of at most 64 MiB, found a longer one");
    }
  }
  // Messages show what they found, with a call for each bracket within another.
  const auto shallow = [&](int depth, Json::parse_event_t, const Json&) {
    if (depth > deepest) {
      io::fatal_stop({file}, "expected at most 16 brackets within each other, found more");
    }
    return true;
  };
  Json document = Json::parse(text, shallow, false);
  if (!document.is_object()) {
    io::fatal_stop({file}, "expected a JSON object, found a text that is none (cut, or malformed)");
  }
  JobDocument(file, std::move(document)).read(request, output);
}

}  // namespace collect

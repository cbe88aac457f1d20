// Formatted checkpoint files: geometry, gradient, and the transition dipole of the state that the
// calculation followed.
#include <algorithm>

#include "analysis/checkpoint.hpp"
#include "collect/readers/readers.hpp"
#include "flib/units_of_measure.hpp"
#include "io/units.hpp"

namespace collect {

namespace {

constexpr int unit = 14;
// More values of an array are not believed: by repeat counts a short file could ask for any memory.
constexpr int most_values = 1'000'000;

// Reads the arrays whose names are keys, all of which must be there.
void read_arrays(const std::string& file, analysis::CheckpointArrays& arrays) {
  io::open_existing(unit, file);
  analysis::read_checkpoint(unit, arrays, [](const std::string& name, int size) {
    if (size >= 1 && size <= most_values) return;
    io::fatal_stop(io::place(unit), "expected a number of values of '", name, "' from 1 to ",
                   most_values, ", found ", size);
  });
  io::close(unit);
  for (const auto& [name, values] : arrays) need(!values.empty(), file, "'" + name + "'");
}

Eigen::Matrix3Xd by_atom(const std::vector<double>& values) {
  return Eigen::Map<const Eigen::Matrix3Xd>(values.data(), 3,
                                            static_cast<Eigen::Index>(values.size() / 3));
}

}  // namespace

void read_fchk(const std::string& file, const Request& request, JobOutput& output) {
  analysis::CheckpointArrays arrays = {{"Atomic numbers", {}},
                                       {"Current cartesian coordinates", {}},
                                       {"Cartesian Gradient", {}},
                                       {"ETran scalars", {}},
                                       {"ETran state values", {}}};
  read_arrays(file, arrays);
  const auto& scalars = arrays["ETran scalars"];
  const auto& states = arrays["ETran state values"];
  const auto atoms = [&](const char* name, std::size_t each) {
    need_atoms(file, request, arrays[name].size() / each, "'" + std::string(name) + "'");
  };
  atoms("Atomic numbers", 1);
  atoms("Current cartesian coordinates", 3);
  atoms("Cartesian Gradient", 3);
  // The first item is the number of states, the fifth the one that was followed; 16 values a state.
  constexpr std::size_t target_at = 4, per_state = 16;
  if (scalars.size() <= target_at) need(false, file, "'ETran scalars' with 5 values");
  const double target = scalars[target_at];
  if (!(target >= 1.0 && target <= scalars[0] &&
        target * per_state <= static_cast<double>(states.size()))) {
    io::fatal_stop({file},
                   "expected in 'ETran scalars' the state that was followed as item 5, and "
                   "its 16 'ETran state values', found state " +
                       io::shown(target) + " and " + std::to_string(states.size()) + " values");
  }
  output.program = "formatted checkpoint";
  output.root = static_cast<int>(target);
  need_root(file, request, output.root);
  const double* const state = states.data() + per_state * static_cast<std::size_t>(output.root - 1);
  for (const double number : arrays["Atomic numbers"]) {
    output.numbers.push_back(static_cast<int>(std::clamp(number, 0.0, 1000.0)));
  }
  output.places = flib::angstrom_per_bohr * by_atom(arrays["Current cartesian coordinates"]);
  output.forces = -by_atom(arrays["Cartesian Gradient"]);
  output.force_decimals = output.dipole_decimals = 9;
  // Dipole in the velocity form and magnetic dipole: zeros where a writer has none.
  Transition transition;
  transition.energy = state[0];
  transition.dipole.assign(state + 1, state + 4);
  transition.velocity.assign(state + 4, state + 7);
  transition.magnetic.assign(state + 7, state + 10);
  fill_transition(transition, output);
}

}  // namespace collect

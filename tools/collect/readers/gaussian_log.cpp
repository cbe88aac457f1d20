// Gaussian logs: forces, and the transition dipole of the state that the calculation followed. With
// symmetry the program prints the dipole in its standard orientation and the forces in the axes of
// its input; each is taken with the geometry in its own axes.
#include <cmath>
#include <map>

#include "collect/output_lines.hpp"
#include "collect/readers/readers.hpp"
#include "io/values.hpp"
#include "zandor/sign_file.hpp"

namespace collect {

namespace {

class GaussianLog {
 public:
  GaussianLog(const std::string& file, const Request& request) : file_(file), request_(request) {}

  static constexpr const char* first_line = "Entering Gaussian System";

  void take(OutputLines& lines) {
    if (lines.begins_with(" Gaussian ") && lines.word(2).ends_with(':')) {
      program_ = "Gaussian " + std::string(lines.word(2).substr(0, lines.word(2).size() - 1));
    } else if (lines.holds("Input orientation:") || lines.holds("Z-Matrix orientation:")) {
      take_geometry(lines, input_);
    } else if (lines.holds("Standard orientation:")) {
      take_geometry(lines, standard_);
    } else if (lines.begins_with(" Excited State ")) {
      take_state(lines);
    } else if (lines.begins_with(" This state for optimization")) {
      root_ = state_;
    } else if (lines.begins_with(" Total Energy, E(")) {
      energy_ = lines.number(lines.behind("="), "the energy of the state");
    } else if (lines.word(2) == "->") {
      take_coefficient(lines);
    } else if (lines.holds("Ground to excited state transition electric dipole moments")) {
      take_moments(lines, &Transition::dipole);
    } else if (lines.holds("Ground to excited state transition velocity dipole moments")) {
      take_moments(lines, &Transition::velocity);
    } else if (lines.holds("Ground to excited state transition magnetic dipole moments")) {
      take_moments(lines, &Transition::magnetic);
    } else if (lines.holds("Forces (Hartrees/Bohr)")) {
      take_forces(lines);
    } else if (lines.holds("Axes restored to original set")) {
      restored_ = true;
    } else if (lines.holds("Normal termination of Gaussian")) {
      ended_ = true;
    }
  }

  void check() const {
    need(ended_, file_, "'Normal termination of Gaussian': the calculation did not end well");
    need(!forces_.empty(), file_, "'" + std::string(zandor::forces_header) + "'");
    need(root_ > 0, file_, "'This state for optimization'");
    need_root(file_, request_, root_);
    const auto state = states_.find(root_);
    need(state != states_.end() && !state->second.dipole.empty(), file_,
         "'" + std::string(zandor::dipole_header) + "' with state " + std::to_string(root_));
    need_atoms(file_, request_, forces_.size(), "forces");
    need(!input_.empty() || !standard_.empty(), file_, "'Input orientation:'");
    if (restored_ && input_.empty()) {
      io::fatal_stop({file_},
                     "expected 'Input orientation:' with the axes of the forces, found "
                     "'Standard orientation:' only (run it with nosymm)");
    }
    for (const Rows* places : {&input_, &standard_}) {
      if (!places->empty()) need_atoms(file_, request_, places->size(), "an orientation");
    }
  }

  void fill(JobOutput& output) {
    output.program = program_.empty() ? "Gaussian" : program_;
    output.numbers = numbers_;
    output.root = root_;
    output.places = (input_.empty() ? standard_ : input_).matrix();
    if (!standard_.empty()) output.places_of_dipole = standard_.matrix();
    output.forces = forces_.matrix();
    output.force_decimals = force_decimals_;
    output.dipole_decimals = dipole_decimals_;
    states_[root_].energy = energy_;
    fill_transition(states_[root_], output);
  }

 private:
  void take_geometry(OutputLines& lines, Rows& places) {
    places.clear();
    numbers_.clear();
    for (int i = 0; i < 4; ++i) lines.need_next("the table of an orientation");
    while (lines.next() && !lines.is_ruler()) {
      numbers_.push_back(lines.integer(std::size_t{2}, "an atomic number"));
      places.take(lines, 4, "the place of an atom");
    }
  }

  // " Excited State   1:      Singlet-A      3.9 eV  312 nm  f=0.0170  <S**2>=0.000"
  void take_state(const OutputLines& lines) {
    state_ =
        lines.integer(lines.word(3).substr(0, lines.word(3).find(':')), "the number of a state");
    states_[state_].leading = {};
    const std::string_view strength = lines.behind("f=");
    if (!strength.empty()) {
      states_[state_].oscillator_strength = lines.number(strength, "an oscillator strength");
    }
  }

  // "8 -> 9   0.70710", below the line of its state; 8A -> 9A in an open shell.
  void take_coefficient(const OutputLines& lines) {
    const auto orbital = [&](std::size_t place) {
      const std::string_view word = lines.word(place);
      return lines.integer(word.substr(0, word.find_first_not_of("0123456789")), "an orbital");
    };
    LeadingElement& leading = states_[state_].leading;
    const double value = lines.number(lines.word_count(), "a coefficient");
    if (std::fabs(value) > std::fabs(leading.value)) leading = {orbital(1), orbital(3), value};
  }

  void take_moments(OutputLines& lines, std::vector<double> Transition::*kind) {
    for (auto& [number, state] : states_) (state.*kind).clear();
    lines.need_next("the captions of the transition moments");
    int state = 0;
    while (lines.next() && lines.word_count() >= 4 && io::parse_integer(lines.word(1), state)) {
      std::vector<double>& moment = states_[state].*kind;
      moment.clear();
      for (std::size_t k = 2; k <= 4; ++k) moment.push_back(lines.number(k, "a transition moment"));
      if (kind == &Transition::dipole) dipole_decimals_ = decimals_of(lines.word(2));
    }
    lines.again();
  }

  void take_forces(OutputLines& lines) {
    forces_.clear();
    for (int i = 0; i < 2; ++i) lines.need_next("the table of the forces");
    while (lines.next() && !lines.is_ruler()) {
      forces_.take(lines, 3, "the force on an atom");
      force_decimals_ = decimals_of(lines.word(3));
    }
  }

  std::string file_;
  Request request_;
  std::string program_;
  std::vector<int> numbers_;
  Rows input_, standard_, forces_;
  int state_ = 0, root_ = 0;
  std::optional<double> energy_;
  std::map<int, Transition> states_;
  int force_decimals_ = 0, dipole_decimals_ = 0;
  bool restored_ = false, ended_ = false;
};

}  // namespace

void read_gaussian_log(const std::string& file, const Request& request, JobOutput& output) {
  read_log<GaussianLog>(file, request, output);
}

}  // namespace collect

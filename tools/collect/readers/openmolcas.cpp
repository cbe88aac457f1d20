// OpenMolcas: the gradient of a root by ALASKA, the matrix elements of the transition by RASSI, and
// the transition density of the active orbitals where its file (TRD1) was printed into the output.
#include <algorithm>
#include <cmath>
#include <map>

#include "collect/output_lines.hpp"
#include "collect/readers/readers.hpp"
#include "io/text.hpp"

namespace collect {

namespace {

class OpenMolcasOutput {
 public:
  OpenMolcasOutput(const std::string& file, const Request& request)
      : file_(file), request_(request) {}

  static constexpr const char* first_line = "   This run of MOLCAS is using";

  void take(OutputLines& lines) {
    if (lines.holds("version: v") && version_.empty()) {
      version_ = lines.behind("version: v");
    } else if (lines.begins_with("--- Start Module: rassi")) {
      elements_.clear();
      state_roots_.clear();
      transitions_.clear();
    } else if (lines.begins_with("--- Start Module: alaska")) {
      gradient_.clear();
    } else if (lines.holds("Cartesian coordinates in Angstrom:")) {
      take_geometry(lines);
    } else if (lines.begins_with("::    RASSCF root number")) {
      energies_[lines.integer(5, "the number of a root")] =
          lines.number(lines.word_count(), "the energy of a root");
    } else if (lines.holds("Root passed to geometry opt.") ||
               lines.holds("Lagrangian multipliers are calculated for state no.")) {
      root_ = lines.integer(lines.word_count(), "the root of the gradient");
    } else if (lines.word(1) == "Root" && lines.word(2) == "nr:") {
      for (std::size_t i = 3; i <= lines.word_count(); ++i) {
        state_roots_.push_back(lines.integer(i, "the root of a state"));
      }
    } else if (lines.begins_with(" PROPERTY: ")) {
      take_property(lines);
    } else if (lines.begins_with(" #  ")) {
      take_transition_density(lines);
    } else if (lines.begins_with(" *              Molecular gradients               *")) {
      take_gradient(lines);
    } else if (lines.holds("No convergence after") || lines.holds("/rc=_RC_NOT_CONVERGED_")) {
      note_failure(lines, failure_);
    } else if (lines.holds("Happy landing!")) {
      ended_ = true;
    }
  }

  void check() const {
    stop_at(failure_);
    need(ended_, file_, "'Happy landing!': the calculation did not end well");
    need(!gradient_.empty(), file_, "'Molecular gradients'");
    need(root_ > 0, file_, "'Root passed to geometry opt.'");
    need_root(file_, request_, root_);
    need(!places_.empty(), file_, "'Cartesian coordinates in Angstrom:'");
    need_atoms(file_, request_, places_.size(), "a geometry");
    need_atoms(file_, request_, gradient_.size(), "a gradient");
  }

  void fill(JobOutput& output) {
    const int state = state_of_root();
    Transition& transition = transitions_[state];
    transition.dipole = components("MLTPL 1", state, 3);
    need(!transition.dipole.empty(), file_,
         "'PROPERTY: MLTPL  1   COMPONENT:' with the state " + std::to_string(state));
    transition.quadrupole = components("MLTPL 2", state, 6);
    transition.magnetic = components("ANGMOM ", state, 3);
    if (energies_.count(1) > 0) transition.ground_energy = energies_[1];
    if (energies_.count(root_) > 0) transition.energy = energies_[root_];
    output.program = "OpenMolcas " + version_;
    output.numbers = numbers_;
    output.places = places_.matrix();
    output.forces = -gradient_.matrix();
    output.dipole_decimals = 10;
    output.root = root_;
    fill_transition(transition, output);
  }

 private:
  void take_geometry(OutputLines& lines) {
    places_.clear();
    numbers_.clear();
    for (int i = 0; i < 3; ++i) lines.need_next("the table of the geometry");
    while (lines.next() && lines.word_count() == 5) {
      numbers_.push_back(element_of_label(lines.word(2)));
      places_.take(lines, 3, "the place of an atom");
    }
  }

  // A matrix of a one-electron operator over the states, in blocks of a few columns. Of the first
  // row the columns are kept: the elements between the ground state and the others.
  void take_property(OutputLines& lines) {
    const std::string name(lines.word(2));
    const std::string key =
        name + " " +
        std::string(
            lines.word(3) == "COMPONENT:" || lines.word(3) == "COMPONENT:*" ? "" : lines.word(3)) +
        "/" + std::string(lines.word(lines.word_count()));
    while (lines.next() && lines.word(1) != "STATE") {
      if (lines.word_count() > 0 && !lines.word(1).starts_with("ORIGIN")) return lines.again();
    }
    std::vector<int> columns;
    for (std::size_t i = 2; i <= lines.word_count(); ++i) {
      if (lines.word(i) != ":") columns.push_back(lines.integer(i, "the number of a state"));
    }
    do lines.need_next("the first row of a matrix over the states");
    while (lines.word_count() == 0);
    if (lines.word(1) != "1") return;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      elements_[key][columns[i]] = lines.number(i + 2, "an element between two states");
    }
  }

  // RASSI's file of a transition, which the template has printed: orbitals, of either state the
  // same, and the transition density of the active ones, the last.
  void take_transition_density(OutputLines& lines) {
    if (lines.holds("Nr of irreps:")) {
      lines.need_next("the number of irreps");
      irreps_ = lines.integer(1, "the number of irreps");
    } else if (lines.holds("CMO coefficients:")) {
      orbitals_.clear();
    } else if (lines.word(2) == "Symm" && lines.word(4) == "Orbital") {
      orbitals_.push_back(packed_numbers(lines));
    } else if (lines.holds("Active TRD1:")) {
      const int to = lines.integer(3, "a state"), from = lines.integer(4, "a state");
      lines.need_next("the symmetries of the transition density");
      if (std::min(to, from) == 1)
        set_density(packed_numbers(lines), transitions_[std::max(to, from)]);
    }
  }

  // The numbers up to a line without: fields of 19 columns without blanks between them.
  static std::vector<double> packed_numbers(OutputLines& lines) {
    std::vector<double> values;
    while (lines.next() && !lines.is_blank() && !lines.begins_with(" #")) {
      for (std::size_t at = 0; at < lines.text().size(); at += 19) {
        values.push_back(lines.number(io::without_leading_blanks(lines.text().substr(at, 19)),
                                      "an element of the transition density"));
      }
    }
    lines.again();
    return values;
  }

  void set_density(const std::vector<double>& active, Transition& transition) const {
    const auto size = static_cast<Eigen::Index>(std::sqrt(active.size()));
    if (size == 0 || static_cast<std::size_t>(size * size) != active.size()) return;
    const Eigen::Map<const Eigen::MatrixXd> density(active.data(), size, size);
    Eigen::Index row = 0, column = 0;
    density.cwiseAbs().maxCoeff(&row, &column);
    transition.leading = {static_cast<int>(row) + 1, static_cast<int>(column) + 1,
                          density(row, column)};
    if (irreps_ != 1 || orbitals_.size() < static_cast<std::size_t>(size)) return;
    const std::size_t functions = orbitals_.back().size();
    Eigen::MatrixXd orbitals(static_cast<Eigen::Index>(functions), size);
    for (Eigen::Index k = 0; k < size; ++k) {
      const std::vector<double>& orbital = orbitals_.end()[k - size];
      if (orbital.size() != functions) return;
      orbitals.col(k) = Eigen::Map<const Eigen::VectorXd>(orbital.data(), orbitals.rows());
    }
    const Eigen::MatrixXd over_functions = orbitals * density * orbitals.transpose();
    transition.density.assign(over_functions.data(), over_functions.data() + over_functions.size());
  }

  void take_gradient(OutputLines& lines) {
    gradient_.clear();
    for (int rulers = 0; rulers < 3;) {
      lines.need_next("the molecular gradient");
      if (lines.begins_with(" -----")) {
        ++rulers;
      } else if (rulers == 2) {
        gradient_.take(lines, 2, "the gradient on an atom");
      }
    }
  }

  // The state of RASSI that is a root of the only wave function file.
  int state_of_root() const {
    const auto found = std::find(state_roots_.begin(), state_roots_.end(), root_);
    const bool one_file = std::count(state_roots_.begin(), state_roots_.end(), root_) == 1 &&
                          !state_roots_.empty() && state_roots_.front() == 1;
    if (one_file) return static_cast<int>(found - state_roots_.begin()) + 1;
    io::fatal_stop({file_}, "expected behind 'Root nr:' the roots 1 and " + std::to_string(root_) +
                                " of one wave function, found " +
                                std::to_string(state_roots_.size()) + " states that are not");
  }

  // The elements of `count` components of an operator.
  std::vector<double> components(const std::string& name, int state, int count) const {
    std::vector<double> values;
    for (int k = 1; k <= count; ++k) {
      const auto found = elements_.find(name + "/" + std::to_string(k));
      if (found == elements_.end() || found->second.count(state) == 0) return {};
      values.push_back(found->second.at(state));
    }
    return values;
  }

  std::string file_;
  Request request_;
  std::string version_;
  std::vector<int> numbers_;
  Rows places_, gradient_;
  std::map<int, double> energies_;                         // of the roots, Hartree
  std::vector<int> state_roots_;                           // root of each state of RASSI
  std::map<std::string, std::map<int, double>> elements_;  // operator, state: element with state 1
  std::map<int, Transition> transitions_;                  // by state
  std::vector<std::vector<double>> orbitals_;
  int irreps_ = 0;
  int root_ = 0;
  bool ended_ = false;
  Failure failure_;
};

}  // namespace

void read_openmolcas(const std::string& file, const Request& request, JobOutput& output) {
  read_log<OpenMolcasOutput>(file, request, output);
}

}  // namespace collect

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

  void read(JobOutput& output) {
    OutputLines lines(file_);
    while (lines.next()) {
      if (lines.word_count() > 0) take(lines);
    }
    check();
    fill(output);
  }

 private:
  void take(OutputLines& lines) {
    if (lines.begins_with("   This run of MOLCAS is using")) {
      const std::string file = file_;
      const Request request = request_;
      *this = OpenMolcasOutput(file, request);
    } else if (lines.holds("version: v") && version_.empty()) {
      version_ = lines.behind("version: v");
    } else if (lines.begins_with("--- Start Module: rassi")) {
      elements_.clear();
      state_roots_.clear();
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
    } else if (lines.holds("Active TRD1:")) {
      take_transition_density(lines);
    } else if (lines.begins_with(" *              Molecular gradients               *")) {
      take_gradient(lines);
    } else if (lines.holds("No convergence after") || lines.holds("/rc=_RC_NOT_CONVERGED_")) {
      note_failure(lines, failure_);
    } else if (lines.holds("Happy landing!")) {
      ended_ = true;
    }
  }

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

  void take_transition_density(OutputLines& lines) {
    const int to = lines.integer(3, "a state"), from = lines.integer(4, "a state");
    lines.need_next("the symmetries of the transition density");
    if (std::min(to, from) != 1) return;
    LeadingElement& leading = leading_[std::max(to, from)];
    leading = {};
    std::vector<double> values;
    while (lines.next() && lines.word_count() > 0 && !lines.begins_with(" #")) {
      // Fields of 19 columns without blanks between them.
      for (std::size_t at = 0; at < lines.text().size(); at += 19) {
        const std::string_view field = lines.text().substr(at, 19);
        values.push_back(lines.number(io::without_leading_blanks(field),
                                      "an element of the transition density"));
      }
    }
    lines.again();
    const int size = static_cast<int>(std::lround(std::sqrt(static_cast<double>(values.size()))));
    if (size == 0 ||
        static_cast<std::size_t>(size) * static_cast<std::size_t>(size) != values.size()) {
      return;
    }
    const auto largest = std::max_element(values.begin(), values.end(), [](double a, double b) {
      return std::fabs(a) < std::fabs(b);
    });
    const int at = static_cast<int>(largest - values.begin());
    leading = {at % size + 1, at / size + 1, *largest};
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

  void check() {
    stop_at(failure_);
    if (!ended_) {
      io::fatal_stop({file_}, "no line holds 'Happy landing!': the calculation did not end well");
    }
    need(!gradient_.empty(), file_, "'Molecular gradients'");
    need(root_ > 0, file_, "'Root passed to geometry opt.'");
    need_root(file_, request_, root_);
    need(!places_.empty(), file_, "'Cartesian coordinates in Angstrom:'");
    need_atoms(file_, request_, static_cast<long long>(places_.size()), "a geometry");
    need_atoms(file_, request_, static_cast<long long>(gradient_.size()), "a gradient");
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

  void fill(JobOutput& output) {
    const int state = state_of_root();
    const std::vector<double> dipole = components("MLTPL 1", state, 3);
    need(dipole.size() == 3, file_,
         "'PROPERTY: MLTPL  1   COMPONENT:' with the state " + std::to_string(state));
    output.program = "OpenMolcas " + version_;
    output.numbers = numbers_;
    output.places = places_.matrix();
    output.forces = -gradient_.matrix();
    output.dipole = Eigen::Vector3d(dipole[0], dipole[1], dipole[2]);
    output.dipole_decimals = 10;
    output.root = root_;
    if (energies_.count(root_) > 0) output.energy = energies_[root_];
    const auto mark = [&](const char* name, SignMark::Kind kind, std::vector<double> values) {
      if (!values.empty()) output.marks.push_back({name, kind, std::move(values)});
    };
    mark("quadrupole", SignMark::Kind::tensor, components("MLTPL 2", state, 6));
    mark("angular momentum", SignMark::Kind::vector, components("ANGMOM ", state, 3));
    if (leading_[state].row > 0) {
      output.leading = leading_[state];
      mark("transition density", SignMark::Kind::coefficient, {leading_[state].value});
    }
  }

  std::string file_;
  Request request_;
  std::string version_;
  std::vector<int> numbers_;
  Rows places_, gradient_;
  std::map<int, double> energies_;                         // of the roots, Hartree
  std::vector<int> state_roots_;                           // root of each state of RASSI
  std::map<std::string, std::map<int, double>> elements_;  // operator, state: element with state 1
  std::map<int, LeadingElement> leading_;                  // by state
  int root_ = 0;
  bool ended_ = false;
  Failure failure_;
};

}  // namespace

void read_openmolcas(const std::string& file, const Request& request, JobOutput& output) {
  OpenMolcasOutput(file, request).read(output);
}

}  // namespace collect

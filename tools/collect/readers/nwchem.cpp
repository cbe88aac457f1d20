// NWChem: `task tddft gradient`. The gradient and the transition moments as they are printed, with
// six and five decimals, or with all digits from the lines " zandor ..." that the template has the
// program print.
#include <cmath>
#include <map>

#include "collect/output_lines.hpp"
#include "collect/readers/readers.hpp"
#include "flib/units_of_measure.hpp"

namespace collect {

namespace {

class NwchemOutput {
 public:
  NwchemOutput(const std::string& file, const Request& request) : file_(file), request_(request) {}

  static constexpr const char* first_line = "Northwest Computational Chemistry Package (NWChem)";

  void take(OutputLines& lines) {
    if (lines.holds(first_line)) {
      program_ = "NWChem " + std::string(lines.word(6));
    } else if (lines.begins_with(" zandor ")) {
      take_full_digits(lines);
    } else if (lines.begins_with(" Output coordinates in ")) {
      take_geometry(lines);
    } else if (lines.holds("NWChem TDDFT Module")) {
      roots_.clear();
      converged_ = false;
      gradients_.clear();
    } else if (lines.holds("Convergence criterion met")) {
      converged_ = true;
    } else if (lines.begins_with("  Ground state ")) {
      ground_ = lines.number(lines.word_count() - 1, "the energy of the ground state");
    } else if (lines.begins_with("  Root ") && lines.find_word("a.u.") > 0) {
      root_ = lines.integer(2, "the number of a root");
      roots_[root_] = {};
      roots_[root_].ground_energy = ground_;
      roots_[root_].energy =
          ground_ + lines.number(lines.find_word("a.u.") - 1, "an excitation energy");
    } else if (lines.holds("Calculation failed to converge") || lines.holds("exceeded maxiter")) {
      note_failure(lines, failure_);
    } else if (lines.begins_with("     ")) {
      take_inner(lines);
    } else if (lines.begins_with("    Number of AO functions :")) {
      sizes_.nmo = lines.integer(lines.word_count(), "the number of functions");
    } else if (lines.begins_with(" Total times  cpu:")) {
      ended_ = true;
    }
  }

  void take_inner(OutputLines& lines) {
    if (lines.begins_with("     Transition Moments ")) {
      take_moments(lines);
    } else if (lines.begins_with("     Dipole Oscillator Strength")) {
      roots_[root_].oscillator_strength =
          lines.number(lines.word_count(), "an oscillator strength");
    } else if (lines.begins_with("     Occ.")) {
      take_coefficient(lines);
    } else if (lines.holds("Alpha electrons :")) {
      sizes_.mi = lines.integer(lines.word_count(), "the number of electrons");
    } else if (lines.word(1) == "Root" && lines.word_count() == 2) {
      gradient_root_ = lines.integer(2, "the root of the gradient");
    } else if (lines.holds(" TDDFT ENERGY GRADIENTS")) {
      take_gradient(lines);
    }
  }

  void take_geometry(OutputLines& lines) {
    const double scale = lines.holds("angstroms") ? 1.0 : flib::angstrom_per_bohr;
    places_.clear();
    numbers_.clear();
    scale_ = scale;
    for (int i = 0; i < 3; ++i) lines.need_next("the table of the geometry");
    while (lines.next() && lines.word_count() == 6) {
      numbers_.push_back(
          static_cast<int>(std::lround(lines.number(std::size_t{3}, "the charge of an atom"))));
      places_.take(lines, 4, "the place of an atom");
    }
  }

  // "Transition Moments    X -0.00000   Y  0.00000   Z  0.00000", or that the spin forbids them.
  void take_moments(OutputLines& lines) {
    Transition& root = roots_[root_];
    if (lines.holds("forbidden")) {
      root.dipole.assign(3, 0.0);
      return;
    }
    const std::size_t letters = lines.word(3).size();
    if (letters > 2) return;  // octupoles
    std::vector<double>& moments = letters == 1 ? root.dipole : root.quadrupole;
    for (std::size_t i = 4; i <= lines.word_count(); i += 2) {
      moments.push_back(lines.number(i, "a transition moment"));
    }
  }

  // "Occ.    8  a   ---  Virt.    9  a    1.00279 X"; lines with a Y hold de-excitations.
  void take_coefficient(OutputLines& lines) {
    const std::size_t virt = lines.find_word("Virt.");
    std::string_view last = lines.word(lines.word_count());
    if (virt == 0 || last == "Y") return;
    if (last == "X") last = lines.word(lines.word_count() - 1);
    const double value = lines.number(last, "a coefficient");
    LeadingElement& leading = roots_[root_].leading;
    if (std::fabs(value) <= std::fabs(leading.value)) return;
    leading = {lines.integer(std::size_t{2}, "an occupied orbital"),
               lines.integer(virt + 1, "a virtual orbital"), value};
  }

  void take_gradient(OutputLines& lines) {
    for (int i = 0; i < 3; ++i) lines.need_next("the table of the gradient");
    Rows gradient;
    shown_numbers_.clear();
    shown_places_.clear();
    while (lines.next() && lines.word_count() == 8) {
      shown_numbers_.push_back(element_of_label(lines.word(2)));
      shown_places_.take(lines, 3, "the place of an atom");
      gradient.take(lines, 6, "the gradient on an atom");
    }
    gradients_[gradient_root_] = gradient;
  }

  void take_full_digits(OutputLines& lines) {
    const auto atoms = static_cast<std::size_t>(request_.natom);
    if (lines.word(2) == "root") {
      full_ = {};
      full_.root = lines.integer(3, "the root");
    } else if (lines.word(2) == "geometry") {
      full_.places =
          lines.numbers(3 * atoms, "the geometry of " + std::to_string(atoms) + " atoms");
    } else if (lines.word(2) == "gradient") {
      full_.gradient =
          lines.numbers(3 * atoms, "the gradient of " + std::to_string(atoms) + " atoms");
    } else if (lines.word(2) == "transition") {
      full_.moments = lines.numbers(moment_count, "20 transition moments");
    } else if (lines.word(2) == "end") {
      full_.complete = !full_.gradient.empty() && !full_.moments.empty();
    }
  }

  void check() {
    need(!program_.empty(), file_, "'Northwest Computational Chemistry Package (NWChem)'");
    stop_at(failure_);
    if (!ended_) {
      io::fatal_stop({file_},
                     "no line begins with ' Total times  cpu:': the calculation did not end");
    }
    need(!roots_.empty(), file_, "'Root N' with its energy below 'NWChem TDDFT Module'");
    if (!converged_) {
      io::fatal_stop({file_},
                     "no line holds 'Convergence criterion met': the roots did not converge");
    }
    need(!gradients_.empty(), file_, "'TDDFT ENERGY GRADIENTS'");
    choose_root();
    need(roots_.count(root_) > 0 && roots_[root_].dipole.size() == 3, file_,
         "'Transition Moments    X' below 'Root " + std::to_string(root_) + "'");
    need_atoms(file_, request_, gradients_[root_].size(), "a gradient");
    if (places_.empty()) {  // geometry ... noprint
      numbers_ = shown_numbers_;
      places_ = shown_places_;
      scale_ = flib::angstrom_per_bohr;
    }
    need_atoms(file_, request_, places_.size(), "a geometry");
  }

  // The root asked for, or else the only one that has a gradient.
  void choose_root() {
    if (request_.root == 0 && gradients_.size() > 1) {
      io::fatal_stop({file_}, "expected the gradient of one state, found those of " +
                                  std::to_string(gradients_.size()) + " (name one with --root)");
    }
    root_ = request_.root > 0 && gradients_.count(request_.root) > 0 ? request_.root
                                                                     : gradients_.begin()->first;
    need_root(file_, request_, root_);
    if (full_.complete && full_.root != root_) full_ = {};
  }

  void fill(JobOutput& output) {
    Transition& root = roots_[root_];
    output.program = program_;
    output.numbers = numbers_;
    output.root = root_;
    output.places = scale_ * places_.matrix();
    output.forces = -gradients_[root_].matrix();
    output.force_decimals = 6;
    output.dipole_decimals = 5;
    if (full_.complete) {
      check_full_digits(output);
      const Eigen::Index n = request_.natom;
      output.places =
          flib::angstrom_per_bohr * Eigen::Map<const Eigen::Matrix3Xd>(full_.places.data(), 3, n);
      output.forces = -Eigen::Map<const Eigen::Matrix3Xd>(full_.gradient.data(), 3, n);
      output.force_decimals = output.dipole_decimals = 16;
      // The first moment is the overlap of the states.
      root.dipole.assign(full_.moments.begin() + 1, full_.moments.begin() + 4);
      root.quadrupole.assign(full_.moments.begin() + 4, full_.moments.begin() + 10);
    }
    if (root.quadrupole.size() != 6) root.quadrupole.clear();
    fill_transition(root, output);
    output.sizes = sizes_;
    output.sizes.ma = sizes_.nmo - sizes_.mi;
    output.sizes.mci = static_cast<int>(roots_.size());
  }

  // Both have to tell of the same calculation.
  void check_full_digits(const JobOutput& output) const {
    const Eigen::Map<const Eigen::Matrix3Xd> full(full_.gradient.data(), 3, request_.natom);
    const double difference = (full + output.forces).cwiseAbs().maxCoeff();
    if (full_.places.size() == full_.gradient.size() && difference < 2e-6) return;
    io::fatal_stop(
        {file_},
        "expected behind ' zandor gradient' the gradient of 'TDDFT ENERGY GRADIENTS', found "
        "one that differs by " +
            io::shown(difference));
  }

  static constexpr std::size_t moment_count = 20;  // overlap, dipole, quadrupole, octupole

  struct FullDigits {
    int root = 0;
    std::vector<double> places, gradient;  // Bohr, Hartree/Bohr
    std::vector<double> moments;
    bool complete = false;
  };

  std::string file_;
  Request request_;
  std::string program_;
  std::vector<int> numbers_;
  Rows places_;
  std::vector<int> shown_numbers_;  // beside the gradient, and its geometry in Bohr
  Rows shown_places_;
  double scale_ = 1.0;
  double ground_ = 0.0;
  std::map<int, Transition> roots_;
  std::map<int, Rows> gradients_;
  int root_ = 0, gradient_root_ = 0;
  bool converged_ = false, ended_ = false;
  Sizes sizes_;
  FullDigits full_;
  Failure failure_;
};

}  // namespace

void read_nwchem(const std::string& file, const Request& request, JobOutput& output) {
  read_log<NwchemOutput>(file, request, output);
}

}  // namespace collect

#include "export/content.hpp"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>

#include "analysis/formula.hpp"
#include "analysis/herzberg_teller.hpp"
#include "analysis/job_directory.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "analysis/rigid_motions.hpp"
#include "analysis/vibrations.hpp"
#include "flib/units_of_measure.hpp"
#include "io/fatal.hpp"
#include "io/process.hpp"
#include "zandor/result_names.hpp"
#include "zandor/sign_file.hpp"

namespace exporting {

namespace {

using analysis::Eigenmodes;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using zandor::RunData;

// The force constants as they are; every vector points along the report's.
Eigenmodes unprojected_modes(const RunData& run) {
  Eigenmodes modes = analysis::eigenmodes(analysis::mass_weighted_force_constants(run));
  const Eigen::Map<const MatrixXd> report(run.c.data(), run.n3, run.n3);
  for (Eigen::Index k = 0; k < run.n3; ++k) {
    if (modes.vectors.col(k).dot(report.col(k)) < 0.0) modes.vectors.col(k) *= -1.0;
  }
  return modes;
}

// Vibrations at their numbers in the report, the rigid motions at those that are left.
Eigenmodes projected_modes(const RunData& run, const analysis::RigidMotions& rigid) {
  const analysis::Vibrations vibrations = analysis::exact_vibrations(run, rigid);
  const std::vector<int>& numbers = vibrations.report_mode;
  Eigenmodes modes{VectorXd::Zero(run.n3), MatrixXd(run.n3, run.n3)};
  Eigen::Index next = 0;
  for (int k = 0; k < run.n3; ++k) {
    const auto found = std::find(numbers.begin(), numbers.end(), k + 1);
    if (found == numbers.end()) {
      modes.vectors.col(k) = rigid.basis.col(next++);
      continue;
    }
    modes.frequency(k) = vibrations.frequency(found - numbers.begin());
    modes.vectors.col(k) = vibrations.modes.col(found - numbers.begin());
  }
  return modes;
}

// Marks the `count` largest values, of equal ones the first.
std::vector<bool> largest(const std::vector<double>& values, int count) {
  std::vector<std::size_t> order(values.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return values[a] > values[b]; });
  std::vector<bool> chosen(values.size());
  for (int i = 0; i < count; ++i) chosen[order[static_cast<std::size_t>(i)]] = true;
  return chosen;
}

// gradient: 3 x n3, dmu/dx; without columns where it is not known.
ModeList mode_list(const RunData& run, const Eigenmodes& modes, const analysis::RigidMotions& rigid,
                   const Eigen::Matrix3Xd& gradient) {
  if (!modes.frequency.allFinite() || !modes.vectors.allFinite()) {
    io::fatal_stop("expected finite frequencies and modes, found others");
  }
  ModeList list;
  list.displacements = {"displacements", {3, run.natom, run.n3}};
  Eigen::Map<MatrixXd> moves(list.displacements.data(), run.n3, run.n3);
  const Eigen::Map<const VectorXd> root_mass(run.sqtmass.data(), run.n3);
  moves = root_mass.cwiseInverse().asDiagonal() * modes.vectors;
  if (gradient.cols() > 0) {
    const auto terms = analysis::herzberg_teller(run, gradient, modes);
    list.dipole_derivatives.assign(terms.dmu_dQ.data(), terms.dmu_dQ.data() + terms.dmu_dQ.size());
    list.strengths.assign(terms.strength.data(), terms.strength.data() + terms.strength.size());
  }
  const VectorXd weights = analysis::rigid_weights(rigid, modes.vectors);
  for (Eigen::Index k = 0; k < run.n3; ++k) {
    list.frequencies.push_back(modes.frequency(k) * flib::wavenumbers_per_au);
    list.reduced_masses.push_back(1.0 / moves.col(k).squaredNorm() / flib::electron_masses_per_amu);
    list.rigid_weights.push_back(std::clamp(weights(k), 0.0, 1.0));
    moves.col(k).normalize();
  }
  list.rigid = largest(list.rigid_weights, rigid.rank);
  return list;
}

// dmu/dx, 3 x n3, or no columns where it is not known. What has to be said about it goes to the
// notes, and what is a warning to standard error, too.
Eigen::Matrix3Xd known_gradient(const RunData& run, analysis::DipoleChoices choices,
                                Content& content) {
  choices.density = [&run] { return analysis::density_elements(run); };
  const analysis::PreparedDipoles prepared = analysis::prepare_dipoles(run, choices);
  std::vector<std::string> warnings = prepared.warnings;
  if (!prepared.refusal.empty()) {
    warnings.push_back("transition dipole derivatives are left out: " + prepared.refusal);
  }
  for (const std::string& text : warnings) {
    io::warn({}, text);
    content.notes.push_back({text, true});
  }
  if (!prepared.refusal.empty()) return Eigen::Matrix3Xd(3, 0);
  if (prepared.characters) {
    content.notes.push_back(
        {"characters of the operations: " + analysis::shown(run, prepared.characters->characters)});
  }
  if (run.disp_sign != 1) {
    content.notes.push_back(
        {"dipole derivatives are along the true steps; those of the report, with this disp_sign, "
         "have the other sign"});
  }
  std::copy_n(prepared.dipoles.data(), 3, content.dipole.begin());
  return prepared.gradient;
}

// What only the report needs: as large as the force constants, each of them.
void release_results(RunData& run) {
  run.mhess = {};
  run.mhessp = {};
  run.disp = {};
  run.dispp = {};
}

// What its sign file tells of the reference besides what the phases have read. Nothing rests on it:
// forces that are malformed are passed over, as the phases do.
void describe_state(const RunData& run, Content& content) {
  zandor::SignFile file;
  std::array<double, 3> dipole{};
  std::vector<double> forces(static_cast<std::size_t>(run.n3));
  const io::SinkScope said_already({.warn = [](const io::Place&, std::string_view) {}});
  const auto stop = io::collect([&] {
    zandor::read_sign_file(run.jobs[0].sgn_name.content(), 0, run.natom, dipole.data(),
                           forces.data(), &file);
  });
  content.ground_energy = file.states.ground_energy;
  content.energy = file.states.energy;
  content.oscillator_strength = file.states.oscillator_strength;
  if (file.states.excitation_energy) {
    content.excitation_energy = *file.states.excitation_energy / flib::electronvolts_per_hartree;
    if (!content.energy && content.ground_energy) {
      content.energy = *content.ground_energy + *content.excitation_energy;
    }
  }
  if (stop || file.forces_line == 0) return;
  for (const double force : forces) content.gradient.push_back(0.0 - force);
}

void describe_molecule(const RunData& run, Content& content) {
  content.symbols = analysis::symbols(run);
  content.atomic_numbers = run.nat;
  for (int a = 1; a <= run.natom; ++a) {
    content.masses.push_back(run.mass(a) / flib::electron_masses_per_amu);
  }
  content.geometry.assign(run.x.data(), run.x.data() + run.x.size());
  content.step = run.dx;
  content.symmetry_used = analysis::needs_characters(run);
  content.dipole = run.dipole0;
}

}  // namespace

Content load_content(const std::string& control_file,
                     const std::vector<analysis::MassChange>& mass_changes,
                     const analysis::DipoleChoices& dipoles, Lists lists) {
  RunData run = analysis::load_job_directory(control_file, mass_changes);
  release_results(run);
  Content content;
  std::error_code unknown;
  content.folder = std::filesystem::current_path(unknown).filename().string();
  content.control_file = control_file;
  content.input_files = zandor::input_names(run);
  describe_molecule(run, content);
  describe_state(run, content);
  content.changed_masses = analysis::describe(mass_changes, run);
  if (!content.changed_masses.empty()) content.notes.push_back({content.changed_masses});
  const std::string turned = analysis::turned_geometry(run);
  if (!turned.empty()) {
    io::warn({run.com_name.content()}, turned);
    content.notes.push_back({io::printable(run.com_name.content()) + ": " + turned, true});
  }
  const Eigen::Matrix3Xd gradient = known_gradient(run, dipoles, content);
  content.dipole_gradient.assign(gradient.data(), gradient.data() + gradient.size());
  run.force = {};
  const analysis::RigidMotions rigid = analysis::rigid_motions(run);
  if (lists != Lists::unprojected) {
    content.projected = mode_list(run, projected_modes(run, rigid), rigid, gradient);
  }
  run.cp = {};
  if (lists != Lists::projected) {
    content.unprojected = mode_list(run, unprojected_modes(run), rigid, gradient);
  }
  std::copy_n(analysis::principal_axes(run).axes.data(), 9, content.view.begin());
  content.hessian = std::move(run.hess);
  return content;
}

std::string title(const Content& content) {
  const std::string changed = content.changed_masses.empty() ? "" : "; " + content.changed_masses;
  return "zandor_export " ZANDOR_VERSION ": " + io::printable(content.folder) + changed;
}

std::vector<double> in_angstrom(std::vector<double> bohr) {
  for (double& x : bohr) x *= flib::angstrom_per_bohr;
  return bohr;
}

ModeList vibrations(const ModeList& list) {
  const std::size_t n3 = list.rigid.size();
  const auto count = std::count(list.rigid.begin(), list.rigid.end(), false);
  ModeList kept;
  kept.displacements = {"displacements", {3, static_cast<int>(n3 / 3), static_cast<int>(count)}};
  for (std::size_t k = 0; k < n3; ++k) {
    if (list.rigid[k]) continue;
    kept.frequencies.push_back(list.frequencies[k]);
    kept.reduced_masses.push_back(list.reduced_masses[k]);
    std::copy_n(list.displacements.column(1, k + 1), n3,
                kept.displacements.column(1, kept.frequencies.size()));
  }
  return kept;
}

}  // namespace exporting

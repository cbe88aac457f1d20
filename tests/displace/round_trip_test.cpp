// Molecules of all kinds of point groups, in any position, displaced with their symmetry: the
// forces of the computed jobs alone give the frequencies that all jobs give.
#include <cmath>
#include <cstdio>
#include <numbers>

#include "analysis/isotopes.hpp"
#include "analysis/job_directory.hpp"
#include "check/checks.hpp"
#include "check/model_molecule.hpp"
#include "displace/folder.hpp"
#include "displace/plan.hpp"
#include "support/support.hpp"

namespace {

using displace::Axes;
using displace::Molecule;

void add(Molecule& molecule, const char* symbol, int number, double x, double y, double z) {
  molecule.symbols.emplace_back(symbol);
  molecule.numbers.push_back(number);
  molecule.x.conservativeResize(3, molecule.x.cols() + 1);
  molecule.x.rightCols<1>() << x, y, z;
}

// Atoms about z, the first at an angle in degrees.
void add_ring(Molecule& molecule, const char* symbol, int number, int count, double radius,
              double z, double angle = 0.0) {
  for (int k = 0; k < count; ++k) {
    const double turned = (angle + 360.0 * k / count) * std::numbers::pi / 180.0;
    add(molecule, symbol, number, radius * std::cos(turned), radius * std::sin(turned), z);
  }
}

struct Case {
  const char* name;
  const char* symbol;
  int fewest;     // displaced jobs to run
  int principal;  // the same within principal axes
  Molecule molecule;
};

Molecule molecule_of(const std::string& name) {
  Molecule m;
  const auto atoms = [&](std::initializer_list<std::array<double, 4>> rows) {
    for (const auto& [number, x, y, z] : rows) {
      add(m,
          number > 8   ? "F"
          : number > 7 ? "O"
          : number > 6 ? "N"
          : number > 5 ? "C"
                       : "H",
          static_cast<int>(number), x, y, z);
    }
  };
  if (name == "CHFO2")
    atoms({{6, 0, 0, 0}, {1, .1, .2, 1.07}, {9, 1.3, 0, -.4}, {8, -.6, 1.1, -.5}});
  if (name == "HNO") atoms({{7, 0, 0, 0}, {8, 1.22, 0, 0}, {1, -.35, 1, 0}});
  if (name == "H2O2")
    atoms({{8, 0, .73, 0}, {8, 0, -.73, 0}, {1, .8, .88, .5}, {1, -.8, -.88, .5}});
  if (name == "water") atoms({{8, 0, 0, .12}, {1, 0, .757, -.47}, {1, 0, -.757, -.47}});
  if (name == "HCN") atoms({{1, 0, 0, -1.06}, {6, 0, 0, 0}, {7, 0, 0, 1.15}});
  if (name == "CO2") atoms({{6, 0, 0, 0}, {8, 0, 0, 1.16}, {8, 0, 0, -1.16}});
  if (name == "C2H2F2O2") {  // two halves, each without symmetry, about a centre
    for (const double s : {1.0, -1.0}) {
      atoms({{6, .7 * s, .1 * s, 0},
             {1, 1.1 * s, 1.1 * s, .3 * s},
             {9, 1.4 * s, -.8 * s, .7 * s},
             {8, .9 * s, -.4 * s, -1.3 * s}});
    }
  }
  if (name == "ammonia") {
    atoms({{7, 0, 0, .1}});
    add_ring(m, "H", 1, 3, .94, -.28);
  }
  if (name == "CH3F") {
    atoms({{6, 0, 0, 0}, {9, 0, 0, 1.38}});
    add_ring(m, "H", 1, 3, 1.03, -.35);
  }
  if (name == "ethene") {
    atoms({{6, 0, 0, .66},
           {6, 0, 0, -.66},
           {1, 0, .92, 1.23},
           {1, 0, -.92, 1.23},
           {1, 0, .92, -1.23},
           {1, 0, -.92, -1.23}});
  }
  if (name == "BF3-like") {
    atoms({{7, 0, 0, 0}});
    add_ring(m, "F", 9, 3, 1.31, 0);
  }
  if (name == "benzene") {
    add_ring(m, "C", 6, 6, 1.39, 0);
    add_ring(m, "H", 1, 6, 2.48, 0);
  }
  if (name == "allene") {
    atoms({{6, 0, 0, 0}, {6, 0, 0, 1.31}, {6, 0, 0, -1.31}});
    add_ring(m, "H", 1, 2, .93, 1.87);
    add_ring(m, "H", 1, 2, .93, -1.87, 90);
  }
  if (name == "C5H5-C5H5") {
    add_ring(m, "C", 6, 5, 1.21, 1.65);
    add_ring(m, "C", 6, 5, 1.21, -1.65, 36);
  }
  if (name == "S6 ring") {
    add_ring(m, "C", 6, 6, 1.4, 0);
    add_ring(m, "O", 8, 3, 2.2, .9, 20);
    add_ring(m, "O", 8, 3, 2.2, -.9, 80);
    add_ring(m, "H", 1, 3, 3.0, .2, 35);
    add_ring(m, "H", 1, 3, 3.0, -.2, 95);
  }
  if (name == "methane") {
    atoms({{6, 0, 0, 0},
           {1, .63, .63, .63},
           {1, -.63, -.63, .63},
           {1, -.63, .63, -.63},
           {1, .63, -.63, -.63}});
  }
  if (name == "SF6-like") {
    atoms({{8, 0, 0, 0}, {9, 0, 0, 1.56}, {9, 0, 0, -1.56}});
    add_ring(m, "F", 9, 4, 1.56, 0);
  }
  return m;
}

// Turned and shifted, and printed with six decimals: as geometries come.
Molecule put_anywhere(Molecule molecule) {
  const Eigen::Matrix3d turn =
      Eigen::AngleAxisd(1.234, Eigen::Vector3d(0.3, -0.5, 0.8).normalized()).toRotationMatrix();
  molecule.x = ((turn * molecule.x).colwise() + Eigen::Vector3d(0.4, -1.3, 2.1)) * 1e6;
  molecule.x = molecule.x.array().round() / 1e6;
  return molecule;
}

displace::Request request_of(const Molecule& molecule, Axes axes) {
  displace::Request request;
  request.axes = axes;
  request.masses.resize(molecule.x.cols());
  for (Eigen::Index a = 0; a < molecule.x.cols(); ++a) {
    request.masses(a) = analysis::usual_mass(molecule.numbers[static_cast<std::size_t>(a)]);
  }
  return request;
}

model_molecule::Model model_of(const Molecule& molecule, const displace::Plan& plan,
                               const Eigen::VectorXd& masses) {
  const int natom = plan.run.natom;
  model_molecule::Model model{Eigen::Map<const Eigen::Matrix3Xd>(plan.run.xa.data(), 3, natom),
                              Eigen::MatrixXd::Zero(natom, natom),
                              {}};
  for (int a = 0; a < natom; ++a) {
    const auto place = static_cast<std::size_t>(a);
    model.labels.push_back(std::string(plan.run.symbol[place].content()) + " " +
                           std::to_string(plan.run.nat[place]) + " " + std::to_string(masses(a)));
    for (std::size_t b = 0; b < place; ++b) {
      model.charges(a, static_cast<int>(b)) =
          0.02 * (molecule.numbers[place] - molecule.numbers[b]);
    }
  }
  return model;
}

// The projected frequencies of a directory that is written, gathered and checked.
std::vector<double> frequencies(const displace::Plan& plan, const Molecule& molecule,
                                const Eigen::VectorXd& masses) {
  const support::TempFolder folder;
  displace::write_folder("jobs", displace::contents_of(plan, {".inp", "{{geometry}}\n", false}),
                         false);
  std::filesystem::current_path("jobs");
  const model_molecule::Model model = model_of(molecule, plan, masses);
  for (const int job : displace::jobs_to_run(plan.run)) {
    support::write_file("coord-" + plan.names[static_cast<std::size_t>(job)] + ".sgn",
                        model_molecule::sign_file(model, {plan.step, 14, 8}, job));
  }
  support::write_file("coord-" + plan.names[0] + ".log", " Entering Gaussian System, Link 0=g16\n");
  const zandor::RunData run = analysis::load_job_directory("control.inp");
  check::JobData jobs;
  check::read_job_data("control.inp", jobs);
  for (const check::Finding& finding : check::run_checks(jobs, {}, {}).list) {
    EXPECT_EQ(finding.severity, check::Severity::note) << check::line_of(finding);
  }
  return {run.freqp.data(), run.freqp.data() + run.n3};
}

TEST(displace, gives_the_frequencies_of_all_jobs_with_the_fewest) {
  const Case cases[] = {
      {"CHFO2", "C1", 24, 24, {}},   {"HNO", "Cs", 12, 15, {}},   {"C2H2F2O2", "Ci", 24, 24, {}},
      {"H2O2", "C2", 12, 12, {}},    {"water", "C2v", 7, 9, {}},  {"ammonia", "C3v", 6, 14, {}},
      {"CH3F", "C3v", 8, 18, {}},    {"ethene", "D2h", 7, 9, {}}, {"BF3-like", "D3h", 4, 11, {}},
      {"benzene", "D6h", 6, 16, {}}, {"allene", "D2d", 9, 9, {}}, {"C5H5-C5H5", "D5d", 16, 16, {}},
      {"S6 ring", "S6", 18, 54, {}}, {"methane", "Td", 3, 3, {}}, {"SF6-like", "Oh", 4, 4, {}},
      {"HCN", "Cinfv", 6, 9, {}},    {"CO2", "Dinfh", 3, 5, {}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Molecule molecule = put_anywhere(molecule_of(c.name));
    const displace::Request request = request_of(molecule, Axes::fewest);
    const displace::Orientation found = displace::orient(molecule, request);
    EXPECT_EQ(found.symbol, c.symbol);
    EXPECT_EQ(found.to_run, c.fewest);
    const displace::Orientation principal =
        displace::orient(molecule, request_of(molecule, Axes::principal));
    EXPECT_EQ(principal.to_run, c.principal);
    EXPECT_TRUE(principal.principal);
    const displace::Plan plan = displace::make_plan(molecule, found, "m", 0.005);
    EXPECT_EQ(displace::jobs_to_run(plan.run).size(), static_cast<std::size_t>(c.fewest) + 1);
    displace::Orientation alone = found;
    alone.group.resize(1);
    alone.to_run = plan.run.n6;
    const auto derived = frequencies(plan, molecule, request.masses);
    const auto all =
        frequencies(displace::make_plan(molecule, alone, "m", 0.005), molecule, request.masses);
    ASSERT_EQ(derived.size(), all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
      // What is left of rigid motions is the root of rounding.
      EXPECT_NEAR(derived[i], all[i], std::abs(all[i]) > 5.0 ? 1e-5 : 1.0) << i;
    }
  }
}

TEST(displace, keeps_places_within_the_tolerance_and_says_how_far_atoms_moved) {
  Molecule molecule = put_anywhere(molecule_of("benzene"));
  molecule.x(0, 3) += 6e-4;
  displace::Request request = request_of(molecule, Axes::fewest);
  const displace::Orientation found = displace::orient(molecule, request);
  EXPECT_EQ(found.symbol, "D6h");
  EXPECT_EQ(found.to_run, 6);
  EXPECT_NEAR(found.moved, 5.5e-4, 1e-4);
  request.tolerance = 1e-5;
  EXPECT_LT(displace::orient(molecule, request).moved, 1e-5);
  EXPECT_GT(displace::orient(molecule, request).to_run, 30);
  // Where the axes are kept, only operations that turn them into each other serve.
  request.tolerance = 1e-3;
  request.axes = Axes::keep;
  EXPECT_EQ(displace::orient(molecule, request).to_run, 72 / 2);  // the inversion alone
  request.symmetry = false;
  const displace::Orientation kept = displace::orient(molecule, request);
  EXPECT_EQ(kept.to_run, 72);
  EXPECT_LT((kept.x - molecule.x).cwiseAbs().maxCoeff(), 1e-12);
}

}  // namespace

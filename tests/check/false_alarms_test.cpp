// What is consistent must pass, however coarsely it is printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <set>
#include <tuple>

#include "job_folder.hpp"
#include "model_molecule.hpp"

namespace {

using namespace job_folder;

// What a finding says, without its figures.
std::tuple<std::string, std::string, std::string> kind_of(const check::Finding& finding) {
  return {finding.check, finding.file,
          finding.text.substr(0, finding.text.find_first_of("0123456789"))};
}

TEST(FalseAlarms, none_on_real_directories_with_rounded_forces) {
  for (const char* const folder : {"/examples/formaldehyde-s1", "/examples/formaldehyde-s1-c2v",
                                   "/examples/ammonia-s1-c3v", "/tests/check/cases/water-s1"}) {
    const support::TempFolder temp;
    copy_here(PROJECT_FOLDER + std::string(folder));
    check::JobData jobs;
    std::set<std::tuple<std::string, std::string, std::string>> known;
    for (const check::Finding& finding : look(jobs).list) known.insert(kind_of(finding));
    for (const int decimals : {6, 5}) {
      for (int i = 0; i <= jobs.run.n6; ++i) {
        const std::string name(jobs.job(i).sgn_name.content());
        if (i > 0 && !jobs.job(i).is_calc) continue;
        set_forces(name, forces_of(name), decimals);
      }
      for (const check::Finding& finding : look().list) {
        EXPECT_TRUE(finding.severity == check::Severity::note || known.contains(kind_of(finding)))
            << folder << ", " << decimals << " decimals: " << check::line_of(finding);
      }
    }
  }
}

TEST(FalseAlarms, none_on_consistent_molecules) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const support::TempFolder temp;
    const auto model = model_molecule::random_model(seed);
    for (const int decimals : {10, 6, 5}) {
      const model_molecule::Printing printing{.force_decimals = decimals,
                                              .dipole_decimals = decimals == 10 ? 6 : 5,
                                              .disp_sign = seed % 2 == 0 ? 1 : -1};
      model_molecule::write_jobs(model, printing);
      for (const check::Finding& finding : look().list) {
        // Off the principal axes the projection turns coarse forces into rigid motions, and soft
        // vibrations move: that is so.
        const bool is_so = finding.check == "frame" || finding.check == "precision";
        EXPECT_TRUE(finding.severity == check::Severity::note || (is_so && decimals == 5))
            << "seed " << seed << ", " << decimals << " decimals: " << check::line_of(finding);
      }
    }
  }
}

// Changes the forces of all sign files.
void change_forces(const std::function<void(std::vector<double>& forces)>& change) {
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    const std::string name = entry.path().filename();
    if (!name.ends_with(".sgn")) continue;
    std::vector<double> forces = forces_of(name);
    change(forces);
    set_forces(name, forces);
  }
}

void add_noise(unsigned seed, double size) {
  std::mt19937 random(seed);
  change_forces([&](std::vector<double>& forces) {
    for (double& f : forces) f += size * (static_cast<double>(random()) / 2147483647.5 - 1.0);
  });
}

void turn_forces() {
  change_forces([](std::vector<double>& forces) {
    for (std::size_t k = 0; k < forces.size(); k += 3) {
      std::rotate(forces.begin() + static_cast<long>(k), forces.begin() + static_cast<long>(k) + 1,
                  forces.begin() + static_cast<long>(k) + 3);
    }
  });
}

void lengthen_step() {
  const std::vector<double> reference = forces_of("coord-c2h2-ref.sgn");
  std::vector<double> forces = forces_of("coord-c2h2-03mz.sgn");
  for (std::size_t k = 0; k < forces.size(); ++k) forces[k] += 0.1 * (forces[k] - reference[k]);
  set_forces("coord-c2h2-03mz.sgn", forces);
}

void empty_two() {
  support::write_file("coord-h2o-02pz.sgn", "");
  support::write_file("coord-h2o-03my.sgn", "");
}

// What is said of forces, once, and which jobs are to be run again.
struct Cause {
  const char* folder;
  std::function<void()> change;
  const char* says;
  std::vector<std::string> rerun;
};

TEST(FalseAlarms, what_most_jobs_have_in_common_is_said_once) {
  const char* const loose = "converge tighter";
  std::vector<Cause> causes = {
      {"/tests/check/cases/ammonia-e-state", [] {}, "the state is degenerate", {}},
      {"/tests/check/cases/co-pi-state", [] {}, "the state is degenerate", {}},
      {"/tests/check/cases/water-loose", [] {}, loose, {}},
      {"/tests/check/cases/h2o2-loose", [] {}, loose, {}},
      {"/examples/formaldehyde-s1", turn_forces, "the forces belong to another frame", {}},
      {"/tests/check/cases/acetylene-linear", lengthen_step, "do not fit", {"c2h2-03mz"}},
      {"/tests/check/cases/water-s1", empty_two, "", {"h2o-02pz", "h2o-03my"}},
  };
  for (unsigned seed = 1; seed <= 20; ++seed) {
    causes.push_back({"/examples/formaldehyde-s1", [seed] { add_noise(seed, 1e-6); }, loose, {}});
  }
  for (const Cause& cause : causes) {
    const support::TempFolder temp;
    copy_here(PROJECT_FOLDER + std::string(cause.folder));
    cause.change();
    check::JobData jobs;
    std::string said;
    std::set<std::string> rerun;
    int findings = 0;
    for (const check::Finding& finding : look(jobs).list) {
      if (finding.severity == check::Severity::note) continue;
      for (const int i : finding.rerun) rerun.insert(check::base_name(jobs.job(i)));
      const std::set<std::string> others = {"files", "header", "stationary", "frame", "dipole-sum"};
      if (others.contains(finding.check)) continue;
      ++findings;
      said += check::line_of(finding) + "\n";
    }
    EXPECT_NE(said.find(cause.says), said.npos) << cause.folder << ": " << said;
    EXPECT_EQ(findings, *cause.says == '\0' ? 0 : 1) << cause.folder << ": " << said;
    EXPECT_EQ(std::vector(rerun.begin(), rerun.end()), cause.rerun) << cause.folder;
  }
}

TEST(FalseAlarms, none_on_atoms_and_linear_molecules) {
  for (const int natom : {1, 2, 3}) {
    const support::TempFolder temp;
    model_molecule::Model model{
        Eigen::Matrix3Xd::Zero(3, natom), Eigen::MatrixXd::Zero(natom, natom), {}};
    for (int a = 0; a < natom; ++a) {
      model.x(2, a) = 1.1 * a + 0.1 * a * a;
      for (int b = 0; b < a; ++b) model.charges(a, b) = 0.1 * (a + b);
    }
    model_molecule::write_jobs(model, {.disp_sign = -1});
    EXPECT_EQ(lines_of(look()), "") << natom;
    if (natom < 3) continue;
    set_forces("coord-d5.sgn", forces_of("coord-d6.sgn"));
    EXPECT_NE(lines_of(look({"asymmetry"})).find("coord-d5.sgn:"), std::string::npos);
  }
}

}  // namespace

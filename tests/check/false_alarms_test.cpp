// What is consistent must pass, however coarsely it is printed.
#include <gtest/gtest.h>

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
    for (const check::Finding& finding : look(jobs).findings) known.insert(kind_of(finding));
    for (const int decimals : {6, 5}) {
      for (int i = 0; i <= jobs.run.n6; ++i) {
        const std::string name(jobs.job(i).sgn_name.content());
        if (i > 0 && !jobs.job(i).is_calc) continue;
        set_forces(name, forces_of(name, jobs.run.natom), decimals);
      }
      for (const check::Finding& finding : look().findings) {
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
      for (const check::Finding& finding : look().findings) {
        // Off the principal axes the projection turns coarse forces into rigid motions: that is so.
        EXPECT_TRUE(finding.severity == check::Severity::note ||
                    (finding.check == "frame" && decimals == 5))
            << "seed " << seed << ", " << decimals << " decimals: " << check::line_of(finding);
      }
    }
  }
}

TEST(FalseAlarms, none_on_atoms_and_linear_molecules) {
  for (const int natom : {1, 2, 3}) {
    const support::TempFolder temp;
    model_molecule::Model model{Eigen::Matrix3Xd::Zero(3, natom),
                                Eigen::MatrixXd::Zero(natom, natom)};
    for (int a = 0; a < natom; ++a) {
      model.x(2, a) = 1.1 * a + 0.1 * a * a;
      for (int b = 0; b < a; ++b) model.charges(a, b) = 0.1 * (a + b);
    }
    model_molecule::write_jobs(model, {.disp_sign = -1});
    EXPECT_EQ(lines_of(look()), "") << natom;
    if (natom < 3) continue;
    set_forces("coord-d5.sgn", forces_of("coord-d6.sgn", natom));
    EXPECT_NE(lines_of(look({"asymmetry"})).find("coord-d5.sgn:"), std::string::npos);
  }
}

}  // namespace

// What is consistent must pass, however coarsely it is printed.
#include <gtest/gtest.h>

#include <set>

#include "job_folder.hpp"
#include "model_molecule.hpp"

namespace {

using namespace job_folder;

TEST(FalseAlarms, none_on_real_directories_with_rounded_forces) {
  for (const char* const folder : {"/examples/formaldehyde-s1", "/examples/formaldehyde-s1-c2v",
                                   "/examples/ammonia-s1-c3v", "/tests/check/cases/water-s1"}) {
    const support::TempFolder temp;
    copy_here(PROJECT_FOLDER + std::string(folder));
    check::JobData jobs;
    std::set<std::pair<std::string, std::string>> known;
    for (const check::Finding& finding : look(jobs).findings) {
      known.emplace(finding.check, finding.file);
    }
    for (const int decimals : {6, 5}) {
      for (int i = 0; i <= jobs.run.n6; ++i) {
        const std::string name(jobs.job(i).sgn_name.content());
        if (i > 0 && !jobs.job(i).is_calc) continue;
        set_forces(name, forces_of(name, jobs.run.natom), decimals);
      }
      for (const check::Finding& finding : look().findings) {
        EXPECT_TRUE(finding.severity == check::Severity::note ||
                    known.contains({finding.check, finding.file}))
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

}  // namespace

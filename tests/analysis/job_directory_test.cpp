#include "analysis/job_directory.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "flib/units_of_measure.hpp"
#include "support/support.hpp"

namespace {

TEST(job_directory, is_read_with_other_masses) {
  const support::TempFolder folder;
  std::filesystem::copy(PROJECT_FOLDER "/examples/formaldehyde-s1", ".");
  const zandor::RunData as_is = analysis::load_job_directory("control.inp");
  const std::vector<analysis::MassChange> changes = {analysis::parse_isotope("h=2.5"),
                                                     analysis::parse_mass("3=4e1")};
  const zandor::RunData run = analysis::load_job_directory("control.inp", changes);
  EXPECT_EQ(run.mass(4), 2.5 * flib::electron_masses_per_amu);
  EXPECT_EQ(run.mass(3), 40.0 * flib::electron_masses_per_amu);
  EXPECT_EQ(run.sqtmass(9), std::sqrt(run.mass(3)));
  EXPECT_LT(run.freqp(12), as_is.freqp(12)) << "before the analysis";
  EXPECT_EQ(analysis::describe(changes, run), "masses changed: all h 2.5, atom 3 (H) 40");
  EXPECT_TRUE(
      support::stops(2, "expected an element of the molecule behind --isotope, found 'Hg'", [] {
        analysis::load_job_directory("control.inp", {{0, "Hg", 1.0}});
      }));
}

TEST(masses, of_another_form_are_refused) {
  for (const char* text : {"", "3", "=2", "3=", "x=2", "0=2", "3=0", "3=nan", "3=inf", "3=2x"}) {
    EXPECT_TRUE(support::stops(2, "expected --mass ATOM=MASS", [&] { analysis::parse_mass(text); }))
        << text;
  }
  EXPECT_TRUE(support::stops(2, "found 'D=0'", [] { analysis::parse_isotope("D=0"); }));
}

}  // namespace

// Transition dipoles spoilt on purpose: found, the job named, and on the list? And what must stay
// quiet. The counts stand in docs/checks.md.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>

#include "analysis/dipoles.hpp"
#include "job_folder.hpp"

namespace dipole_faults {

namespace {

using namespace job_folder;

constexpr const char* formaldehyde = PROJECT_FOLDER "/examples/formaldehyde-s1";
constexpr const char* derived = PROJECT_FOLDER "/examples/formaldehyde-s1-c2v";
constexpr const char* ammonia = PROJECT_FOLDER "/examples/ammonia-s1-c3v";
constexpr const char* water = PROJECT_FOLDER "/tests/check/cases/water-s1";

// A working folder with a copy of a real directory, and what it holds.
struct Directory {
  explicit Directory(const std::string& folder) {
    copy_here(folder);
    look(jobs, {"names"});
    for (int i = 0; i <= jobs.run.n6; ++i) {
      if (i == 0 || jobs.job(i).is_calc) computed.push_back(i);
    }
  }
  std::string name(int i) const { return std::string(jobs.job(i).sgn_name.content()); }
  Dipole dipole(int i) const {  // as it was
    const auto dipoles = analysis::job_dipoles(jobs.run);
    return {dipoles(0, i), dipoles(1, i), dipoles(2, i)};
  }
  std::vector<int> with_dipoles() const {
    std::vector<int> found;
    for (const int i : computed) {
      if (i > 0 && dipole(i) != Dipole{}) found.push_back(i);
    }
    return found;
  }
  support::TempFolder temp;
  check::JobData jobs;
  std::vector<int> computed;  // the reference included
};

struct Count {
  int cases = 0, found = 0, named = 0, listed = 0;
};

// Of the findings above a note; named: by the file; listed: this job and no other.
void count(const Directory& at, int i, Count& counts) {
  const check::Findings findings = look({"dipole-sum"});
  ++counts.cases;
  const std::string lines = lines_of(findings);
  if (lines.empty()) return;
  ++counts.found;
  counts.named += lines.find(at.name(i)) != std::string::npos ? 1 : 0;
  counts.listed += findings.list.back().rerun == std::vector<int>{i} ? 1 : 0;
}

std::function<Dipole(const Dipole&)> times(double f) {
  return [f](const Dipole& m) { return Dipole{m[0] * f, m[1] * f, m[2] * f}; };
}
const std::map<std::string, std::function<Dipole(const Dipole&)>> faults = {
    {"Debye", times(2.5417)},
    {"zero", times(0.0)},
    {"permuted",
     [](const Dipole& m) {
       return Dipole{m[2], m[0], m[1]};
     }},
    {"another root's",
     [](const Dipole&) {
       return Dipole{0.21, -0.34, 0.15};
     }},
    {"1 % off", times(1.01)},
    {"turned", times(-1.0)},
};

struct Expected {
  const char* folder;
  const char* fault;
  Count least;
};
const Expected expected[] = {
    {formaldehyde, "Debye", {20, 16, 16, 16}},
    {water, "Debye", {18, 18, 18, 18}},
    {formaldehyde, "zero", {20, 16, 16, 16}},
    {water, "zero", {18, 18, 18, 18}},
    {formaldehyde, "permuted", {20, 16, 16, 16}},
    {water, "permuted", {18, 18, 18, 18}},
    {formaldehyde, "another root's", {20, 20, 20, 20}},
    {water, "1 % off", {18, 18, 18, 18}},
    {formaldehyde, "turned", {20, 20, 20, 0}},
    {water, "turned", {18, 18, 18, 0}},
    {derived, "Debye", {9, 9, 9, 9}},
    {ammonia, "1 % off", {6, 6, 6, 6}},
};

TEST(DipoleFaults, are_found_and_the_job_is_named) {
  for (const auto& [folder, fault, least] : expected) {
    const Directory at(folder);
    Count counts;
    for (const int i : at.with_dipoles()) {
      set_dipole(at.name(i), faults.at(fault)(at.dipole(i)));
      count(at, i, counts);
      set_dipole(at.name(i), at.dipole(i));
    }
    const std::string place = std::string(fault) + ", " + folder;
    std::cout << place << ": " << counts.cases << " " << counts.found << " " << counts.named << " "
              << counts.listed << "\n";
    EXPECT_EQ(counts.cases, least.cases) << place;
    EXPECT_GE(counts.found, least.found) << place;
    EXPECT_GE(counts.named, least.named) << place;
    EXPECT_GE(counts.listed, least.listed) << place;
  }
}

// Three pairs of water cancel in the sum rules.
TEST(DipoleFaults, pairs_of_turned_signs_are_found) {
  const Directory at(water);
  for (const int a : at.with_dipoles()) {
    turn_dipole(at.name(a));
    for (const int b : at.with_dipoles()) {
      if (b <= a) continue;
      turn_dipole(at.name(b));
      const std::string lines = lines_of(look({"dipole-sum"}));
      for (const int i : {a, b}) EXPECT_NE(lines.find(at.name(i)), std::string::npos) << lines;
      turn_dipole(at.name(b));
    }
    turn_dipole(at.name(a));
  }
}

TEST(DipoleFaults, noise_blames_no_job) {
  for (const char* const folder : {formaldehyde, derived, ammonia, water}) {
    const Directory at(folder);
    for (unsigned seed = 1; seed <= 20; ++seed) {
      std::mt19937 random(seed);
      std::normal_distribution<double> noise(0.0, 1e-4);
      for (const int i : at.computed) {
        Dipole dipole = at.dipole(i);
        for (double& x : dipole) x += noise(random);
        set_dipole(at.name(i), dipole);
      }
      EXPECT_EQ(lines_of(look({"dipole-sum"})), "") << folder << ", seed " << seed;
    }
  }
}

// What the largest element of the transition density says, beside the dipoles.
TEST(DipoleFaults, headers_are_believed_where_dipoles_do_not_fit) {
  const auto said = [](const std::function<void(const Directory&)>& change) {
    const Directory at(formaldehyde);
    change(at);
    return lines_of(look({"dipole-sum", "header", "net-force"}), true);
  };
  const auto turn_header = [](const std::string& name) {
    support::edit_file(name, "tden_maxval    =     ", "tden_maxval    =  -  ");
    support::edit_file(name, "-  0", "-0");
  };
  const std::string moved = said([](const Directory& at) {
    for (const int i : {3, 8, 20}) support::edit_file(at.name(i), "18      7", "17 8");
  });
  EXPECT_EQ(std::count(moved.begin(), moved.end(), '\n'), 1) << moved;
  EXPECT_NE(moved.find("note: tden_maxloc is not the reference's in 3 jobs"), std::string::npos);
  const std::string blamed = said([](const Directory& at) {
    support::edit_file(at.name(3), "18      7", "17 8");
    std::vector<double> forces = forces_of(at.name(3));
    forces[0] += 1e-3;
    set_forces(at.name(3), forces);
  });
  EXPECT_NE(blamed.find("warning: tden_maxloc is 17 8"), std::string::npos) << blamed;
  const std::string fits = said([&](const Directory& at) { turn_header(at.name(3)); });
  EXPECT_NE(fits.find("note: tden_maxval has not the sign"), std::string::npos) << fits;
  const std::string misfit = said([&](const Directory& at) {
    turn_header(at.name(3));
    turn_dipole(at.name(3));
  });
  EXPECT_NE(misfit.find("warning: tden_maxval is -0.3"), std::string::npos) << misfit;
  EXPECT_NE(misfit.find("so turn that of this job"), std::string::npos) << misfit;
}

// A turned sign of a job whose forces are wrong, too, is no cure.
TEST(DipoleFaults, no_sign_is_suggested_of_a_job_that_is_blamed) {
  const Directory at(formaldehyde);
  turn_dipole(at.name(3));
  EXPECT_NE(lines_of(look()).find("turn the sign of"), std::string::npos);
  set_forces(at.name(3), forces_of(at.name(7)));
  const std::string lines = lines_of(look());
  EXPECT_EQ(lines.find("turn the sign of"), std::string::npos) << lines;
  EXPECT_NE(lines.find("first see to what else is said of " + at.name(3)), std::string::npos)
      << lines;
}

}  // namespace

}  // namespace dipole_faults

#include "analysis/characters.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <set>

#include "analysis/dipoles.hpp"
#include "analysis/job_directory.hpp"
#include "analysis/model.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "support/support.hpp"

namespace {

// Operations with these diagonals, every one used by a derived job.
void set_operations(zandor::RunData& run, const std::vector<Eigen::Vector3d>& diagonals) {
  run.nop = static_cast<int>(diagonals.size());
  run.op = {"op", {3, 3, run.nop}};
  for (int k = 1; k <= run.nop; ++k) {
    for (int i = 1; i <= 3; ++i)
      run.op(i, i, k) = diagonals[static_cast<std::size_t>(k - 1)](i - 1);
    zandor::Job& job = run.jobs[static_cast<std::size_t>(2 * k)];
    job.is_calc = false;
    job.calc_m = 2 * k - 1;
    job.iops = k;
  }
}

TEST(characters, follow_the_products_of_the_group) {
  const Eigen::Vector3d e(1, 1, 1), c2(-1, -1, 1), xz(1, -1, 1), yz(-1, 1, 1);
  const struct {
    std::vector<Eigen::Vector3d> operations;
    std::set<std::string> patterns;
  } cases[] = {
      {{e, c2, xz, yz}, {"+,+,+", "+,-,-", "-,+,-", "-,-,+"}},
      {{xz, e}, {"+", "-"}},
      {{e}, {""}},
      {{c2, xz}, {"+,+", "+,-", "-,+", "-,-"}},  // no product is in the list
      {{xz, c2, e, xz}, {"+,+,+", "+,-,+", "-,+,-", "-,-,-"}},
  };
  for (const auto& [operations, patterns] : cases) {
    zandor::RunData run = model::run_of(model::general());
    set_operations(run, operations);
    std::set<std::string> found;
    for (const auto& characters : analysis::allowed_characters(run)) {
      EXPECT_TRUE(analysis::are_allowed(run, characters));
      found.insert(analysis::shown(run, characters));
    }
    EXPECT_EQ(found, patterns);
  }
}

// Turns about z by these angles, printed with three decimals.
std::size_t patterns_of_turns(int count, const std::function<double(int)>& angle) {
  zandor::RunData run = model::run_of(model::line());
  run.nop = count;
  run.op = {"op", {3, 3, count}};
  for (int k = 1; k <= count; ++k) {
    const Eigen::Matrix3d turn =
        Eigen::AngleAxisd(angle(k), Eigen::Vector3d::UnitZ()).matrix() * 1e3;
    Eigen::Map<Eigen::Matrix3d>(run.op.column(1, k)) = turn.array().round() / 1e3;
  }
  return analysis::allowed_characters(run).size();
}

TEST(characters, are_looked_for_among_so_many_operations) {
  EXPECT_EQ(patterns_of_turns(7, [](int k) { return 2.0 * std::numbers::pi * k / 7; }), 1U);
  // No two of these make a third.
  const auto unrelated = [](int different) {
    return [=](int k) { return std::pow(3, k % different); };
  };
  EXPECT_EQ(patterns_of_turns(360, unrelated(12)), 4096U);
  EXPECT_TRUE(
      support::stops(2, "more than 4096 patterns", [&] { patterns_of_turns(13, unrelated(13)); }));
  EXPECT_TRUE(support::stops(2, "at most 256 different",
                             [] { patterns_of_turns(300, [](int k) { return 0.01 * k; }); }));
  zandor::RunData run = model::run_of(model::general());
  set_operations(run, {{1, 1, 1}, {1, 1, 1.003}});
  EXPECT_TRUE(support::stops(2, "expected orthogonal operations, found operation 2",
                             [&] { analysis::allowed_characters(run); }));
}

// Formaldehyde with dipoles so small that their four decimals cannot tell one state from another.
TEST(characters, are_not_told_by_print_rounding) {
  const support::TempFolder folder;
  std::filesystem::copy(PROJECT_FOLDER "/examples/formaldehyde-s1-c2v", ".");
  zandor::RunData run = analysis::load_job_directory("control.inp");
  EXPECT_EQ(analysis::prepare_dipoles(run, {}).refusal, "");
  const auto scale = [&](double factor) {
    std::for_each_n(run.tdip.data(), run.tdip.size(),
                    [=](double& d) { d = std::round(d * factor * 1e4) / 1e4; });
    return analysis::prepare_dipoles(run, {});
  };
  const std::string refusal = scale(0.0495).refusal;
  EXPECT_TRUE(refusal.starts_with("the dipoles do not tell the characters")) << refusal;
  const analysis::PreparedDipoles dark = scale(0.0);
  EXPECT_FALSE(dark.characters->next_best || dark.characters->others_fall_out);
  EXPECT_TRUE(dark.characters->same_derivatives);
  EXPECT_TRUE(dark.warnings.at(0).starts_with("all transition dipoles are zero"));
}

TEST(characters, are_given_by_hand) {
  zandor::RunData run = model::run_of(model::general());
  set_operations(run, {{1, 1, 1}, {-1, -1, 1}, {1, -1, 1}, {-1, 1, 1}});
  EXPECT_EQ(analysis::parse_characters(run, "-,+,-"), (analysis::Characters{1, -1, 1, -1}));
  EXPECT_EQ(analysis::parse_characters(run, "+,+,-,-"), (analysis::Characters{1, 1, -1, -1}));
  const std::pair<const char*, std::vector<const char*>> cases[] = {
      {"for each of the 3 operations other than the identity",
       {"", "+,-", "+,-,-,", "+ - -", "1,-1,-1", "+,-,-,+,+"}},
      {"signs that multiply as the operations do", {"-,-,-", "-,+,+,-"}}};
  for (const auto& [message, texts] : cases) {
    for (const char* text : texts) {
      EXPECT_TRUE(support::stops(2, message, [&] { analysis::parse_characters(run, text); }));
    }
  }
}

TEST(derived_dipoles, follow_their_chain_of_sources) {
  zandor::RunData run = model::run_of(model::general());
  set_operations(run, {{1, -1, 1}, {-1, -1, 1}});
  run.jobs[4].calc_m = 2;  // a derived job before it
  EXPECT_EQ(analysis::computed_source(run, 4), 1);
  Eigen::Matrix3Xd dipoles = analysis::job_dipoles(run);
  const Eigen::Vector3d source = dipoles.col(1);
  analysis::derive_dipoles(run, {-1, 1}, dipoles);
  EXPECT_EQ(dipoles.col(2), Eigen::Vector3d(-source(0), source(1), -source(2)));
  EXPECT_EQ(dipoles.col(4), Eigen::Vector3d(source(0), -source(1), -source(2)));
  run.jobs[2].calc_m = 4;  // a derived job behind it
  EXPECT_EQ(analysis::computed_source(run, 2), 0);
  run.jobs[2].calc_m = 0;
  EXPECT_EQ(analysis::computed_source(run, 4), 0);
}

}  // namespace

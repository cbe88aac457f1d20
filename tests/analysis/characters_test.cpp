#include "characters.hpp"

#include <gtest/gtest.h>

#include <set>

#include "analysis/model.hpp"
#include "dipoles.hpp"
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

TEST(characters, are_given_by_hand) {
  zandor::RunData run = model::run_of(model::general());
  set_operations(run, {{1, 1, 1}, {-1, -1, 1}, {1, -1, 1}, {-1, 1, 1}});
  EXPECT_EQ(analysis::parse_characters(run, "-,+,-"), (analysis::Characters{1, -1, 1, -1}));
  EXPECT_EQ(analysis::parse_characters(run, "+,+,-,-"), (analysis::Characters{1, 1, -1, -1}));
  const char* const form = "for each of the 3 operations other than the identity";
  const char* const product = "signs that multiply as the operations do";
  for (const auto& [text, message] :
       std::vector<std::pair<const char*, const char*>>{{"", form},
                                                        {"+,-", form},
                                                        {"+,-,-,", form},
                                                        {"+ - -", form},
                                                        {"1,-1,-1", form},
                                                        {"+,-,-,+,+", form},
                                                        {"-,-,-", product},
                                                        {"-,+,+,-", product}}) {
    EXPECT_TRUE(support::stops(2, message, [&, t = text] { analysis::parse_characters(run, t); }))
        << text;
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

// Search for the signs of vectors whose sum has to vanish.
#pragma once

#include <Eigen/Dense>
#include <vector>

#include "analysis/sum_rules.hpp"

namespace analysis {

struct SignChoices {
  std::vector<Eigen::VectorXd> signs;  // +1 or -1 per vector
  bool complete = true;                // false: there were too many to try, or too many fit
};

// More is refused.
inline constexpr long long most_tries = 20'000'000;
inline constexpr std::size_t most_choices = 1024;

// Every choice of signs s with |fixed + vectors s| <= within (vectors: 18 x n). Signs are tried one
// after the other and a branch is left when the vectors to come cannot make up for what it misses.
// Rows with few vectors left go first, so that parts that have no row in common do not multiply.
SignChoices find_sign_choices(const SumRuleVectors& vectors, const Eigen::VectorXd& fixed,
                              double within, long long tries = most_tries);

}  // namespace analysis

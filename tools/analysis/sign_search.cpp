#include "analysis/sign_search.hpp"

#include <algorithm>

namespace analysis {

namespace {

using Sums = Eigen::Matrix<double, sum_rule_count, 1>;

// The columns in the order in which they are tried: those of the row with the fewest columns left,
// the longest first, and so on with the next row. Elements below `small` do not count.
std::vector<Eigen::Index> order_of(const SumRuleVectors& vectors, double small) {
  std::vector<Eigen::Index> order;
  std::vector<char> taken(static_cast<std::size_t>(vectors.cols()), 0);
  const auto left_in = [&](Eigen::Index row) {
    std::vector<Eigen::Index> columns;
    for (Eigen::Index k = 0; k < vectors.cols(); ++k) {
      const bool counts = row == sum_rule_count || std::abs(vectors(row, k)) > small;
      if (counts && taken[static_cast<std::size_t>(k)] == 0) columns.push_back(k);
    }
    std::sort(columns.begin(), columns.end(), [&](Eigen::Index a, Eigen::Index b) {
      return vectors.col(a).squaredNorm() > vectors.col(b).squaredNorm();
    });
    return columns;
  };
  while (order.size() < taken.size()) {
    std::vector<Eigen::Index> next = left_in(sum_rule_count);
    for (Eigen::Index row = 0; row < sum_rule_count; ++row) {
      std::vector<Eigen::Index> columns = left_in(row);
      if (!columns.empty() && columns.size() < next.size()) next = std::move(columns);
    }
    for (const Eigen::Index k : next) {
      order.push_back(k);
      taken[static_cast<std::size_t>(k)] = 1;
    }
  }
  return order;
}

struct Search {
  SumRuleVectors vectors;  // in the order of the search
  SumRuleVectors to_come;  // column k: the sums of the |elements| of the vectors k and behind
  double within = 0.0;
  long long tries = 0;
  Eigen::VectorXd signs;
  SignChoices found;

  void descend(Eigen::Index k, const Sums& sums) {
    if (--tries < 0 || found.signs.size() > most_choices) found.complete = false;
    if (!found.complete) return;
    if ((sums.cwiseAbs() - to_come.col(k)).cwiseMax(0.0).norm() > within) return;
    if (k == vectors.cols()) {
      found.signs.push_back(signs);
      return;
    }
    for (const double sign : {1.0, -1.0}) {
      signs(k) = sign;
      descend(k + 1, sums + sign * vectors.col(k));
    }
  }
};

}  // namespace

SignChoices find_sign_choices(const SumRuleVectors& vectors, const Eigen::VectorXd& fixed,
                              double within, long long tries) {
  const std::vector<Eigen::Index> order = order_of(vectors, within / 10.0);
  const Eigen::Index n = vectors.cols();
  Search search{
      vectors, SumRuleVectors::Zero(sum_rule_count, n + 1), within, tries, Eigen::VectorXd::Ones(n),
      {}};
  for (Eigen::Index k = n; k-- > 0;) {
    search.vectors.col(k) = vectors.col(order[static_cast<std::size_t>(k)]);
    search.to_come.col(k) = search.to_come.col(k + 1) + search.vectors.col(k).cwiseAbs();
  }
  search.descend(0, fixed);
  for (Eigen::VectorXd& signs : search.found.signs) {
    const Eigen::VectorXd ordered = signs;
    for (Eigen::Index k = 0; k < n; ++k) signs(order[static_cast<std::size_t>(k)]) = ordered(k);
  }
  return std::move(search.found);
}

}  // namespace analysis

#include "analysis/sign_demands.hpp"

#include <algorithm>
#include <cmath>

#include "analysis/dipoles.hpp"
#include "analysis/median.hpp"

namespace analysis {

namespace {

// A component of what has to vanish scatters by root 3/2 sigma for errors sigma of the dipoles, and
// the length of three has its median at 1.54 times that.
constexpr double median_over_noise = 1.88;

// Signs whose length is no more than this times the noise, or what the best pair leaves, count as
// possible. Of 4752 draws with noise of 1e-5 to 1e-4 au in 14 directories 2 refuses 943, 4 refuses
// 931, 8 refuses 1036: smaller ones rule out what holds, larger ones leave open what is told.
constexpr double possible_within = 4.0;

// The median of those that print rounding does not explain; a single one is no scatter.
double scatter_of(const SignDemands& demands) {
  std::vector<double> lengths;
  for (const SignDemand& demand : demands.all) {
    if (demand.smallest() > 2.0 * demands.rounding) lengths.push_back(demand.smallest());
  }
  return lengths.size() < 2 ? 0.0 : median(std::move(lengths));
}

// Ties what one demand leaves no choice about. False where nothing meets it.
bool tie(const SignDemand& demand, double allowed, TiedSigns& signs) {
  int met = 0, sum_a = 0, sum_b = 0, sum_product = 0;
  for (const int a : {1, -1}) {
    for (const int b : {1, -1}) {
      const double length = demand.length[a < 0 ? 1 : 0][b < 0 ? 1 : 0];
      const bool possible =
          (demand.a != demand.b || a == b) && (demand.a != 0 || a > 0) && (demand.b != 0 || b > 0);
      if (!possible || length > allowed) continue;
      ++met;
      sum_a += a;
      sum_b += b;
      sum_product += a * b;
    }
  }
  if (met == 0) return false;
  if (std::abs(sum_a) == met && !signs.tie(demand.a, 0, sum_a / met)) return false;
  if (std::abs(sum_b) == met && !signs.tie(demand.b, 0, sum_b / met)) return false;
  return std::abs(sum_product) != met || signs.tie(demand.a, demand.b, sum_product / met);
}

}  // namespace

double SignDemand::smallest() const {
  return std::min({length[0][0], length[0][1], length[1][0], length[1][1]});
}

SignDemands sign_demands(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                         const std::vector<ImageRelation>& images) {
  SignDemands demands;
  const auto add = [&](int i, const Eigen::Vector3d& u, int j, const Eigen::Vector3d& v,
                       const Eigen::Vector3d& sum) {
    demands.all.push_back({computed_source(run, i),
                           computed_source(run, j),
                           {{{(u + v - sum).norm(), (u - v - sum).norm()},
                             {(-u + v - sum).norm(), (-u - v - sum).norm()}}}});
  };
  for (int ih = 1; ih <= run.n3; ++ih) {
    add(2 * ih, dipoles.col(2 * ih) / 2.0, 2 * ih - 1, dipoles.col(2 * ih - 1) / 2.0,
        dipoles.col(0));
  }
  for (const auto& [from, to, image] : images) {
    add(to, dipoles.col(to) / 2.0, from, -image * dipoles.col(from) / 2.0, Eigen::Vector3d::Zero());
  }
  demands.rounding = print_rounding(run).maxCoeff();
  const double scatter = scatter_of(demands);
  demands.noise = std::max(scatter / median_over_noise, demands.rounding / std::sqrt(3.0));
  demands.floor = std::max(scatter, 2.0 * std::sqrt(3.0) * demands.rounding);
  return demands;
}

TiedSigns::TiedSigns(int n6)
    : root(Eigen::VectorXi::LinSpaced(n6 + 1, 0, n6)), sign(Eigen::VectorXi::Ones(n6 + 1)) {}

bool TiedSigns::tie(int a, int b, int product) {
  product *= sign(a) * sign(b);
  const auto [kept, given_up] = std::minmax({root(a), root(b)});
  if (kept == given_up) return product == 1;
  for (Eigen::Index i = 0; i < root.size(); ++i) {
    if (root(i) != given_up) continue;
    root(i) = kept;
    sign(i) *= product;
  }
  return true;
}

const SignDemand* tie_demands(const SignDemands& demands, TiedSigns& signs) {
  for (const SignDemand& demand : demands.all) {
    const double allowed = possible_within * std::max(demands.floor, demand.smallest());
    if (!tie(demand, allowed, signs)) return &demand;
  }
  return nullptr;
}

}  // namespace analysis

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <set>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/median.hpp"
#include "check/support/dipoles.hpp"
#include "check/support/findings.hpp"

namespace check {

namespace {

// mu(+) + mu(-) - 2 mu0 may be off by four half units of the last digit, its half by two.
constexpr double roundings = 2.0;

// A second job explains nearly as much when it leaves no more than this times as much. Where one
// dipole is 1 % off, the next best leaves 6 times as much and more.
constexpr double as_good = 3.0;

bool is_looked_at(const Dipoles& at, int ih) {
  return at.looked[static_cast<std::size_t>(ih - 1)] != 0;
}

// 3 x n3, zero where not looked at.
Eigen::Matrix3Xd even_parts(const JobData& jobs, const Dipoles& at,
                            const Eigen::Matrix3Xd& dipoles) {
  Eigen::Matrix3Xd parts = analysis::dipole_midpoints(jobs.run, dipoles) * jobs.run.dx;
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    if (!is_looked_at(at, ih)) parts.col(ih - 1).setZero();
  }
  return parts;
}

// The median of the sizes above rounding, or of half of all where these are fewer: one turned sign
// among coordinates that symmetry keeps at zero has nothing else above rounding beside it.
double typical_size(std::vector<double> sizes, double rounding) {
  if (sizes.empty()) return rounding;
  std::ranges::sort(sizes, std::greater<>());
  const auto above = static_cast<std::size_t>(
      std::ranges::count_if(sizes, [&](double size) { return size > rounding; }));
  return std::max(rounding, sizes[std::max(above, (sizes.size() + 1) / 2) / 2]);
}

// Whether what the means have in common stands `ratio` times above their scatter and rounding.
bool has_offset(const Eigen::Matrix3Xd& parts, double ratio, double rounding) {
  Eigen::Vector3d offset;
  for (Eigen::Index k = 0; k < 3; ++k) {
    const auto row = parts.row(k);
    offset(k) = analysis::median({row.begin(), row.end()});
  }
  const double scatter =
      (parts.colwise() - offset).norm() / std::sqrt(static_cast<double>(parts.cols()));
  return offset.norm() > ratio * std::max(rounding, scatter);
}

// Every condition over what one error in the dipoles makes of it (`errors`, of the sum rules):
// linear in the dipoles.
using SumRuleErrors = Eigen::Matrix<double, analysis::sum_rule_count, 1>;
Eigen::VectorXd conditions(const JobData& jobs, const Dipoles& at, const SumRuleErrors& errors,
                           const Eigen::Matrix3Xd& dipoles) {
  Eigen::VectorXd all = Eigen::VectorXd::Zero(analysis::sum_rule_count + 3 * jobs.run.n3);
  if (at.all) {
    all.head<analysis::sum_rule_count>() =
        analysis::sum_rule_terms(jobs.run, dipoles).rowwise().sum().cwiseQuotient(errors);
  }
  all.tail(3 * jobs.run.n3) = even_parts(jobs, at, dipoles).reshaped();
  return all;
}

struct Fitted {
  int job = 0;
  double left = 0.0;
  Eigen::Vector3d change;
};

// What 1 au more in a component of the dipole of every computed job makes of the conditions, formed
// once: the sum rules take each job by itself.
using Effects = std::array<std::pair<Eigen::Matrix3Xd, analysis::SumRuleVectors>, 3>;

Effects unit_effects(const JobData& jobs, const Dipoles& at, const SumRuleErrors& errors) {
  Effects effects;
  for (Eigen::Index k = 0; k < 3; ++k) {
    auto& [dipoles, rules] = effects[static_cast<std::size_t>(k)];
    dipoles = Eigen::Vector3d::Unit(k).replicate(1, jobs.run.n6 + 1);
    if (!at.characters.empty()) analysis::derive_dipoles(jobs.run, at.characters, dipoles);
    const analysis::SumRuleVectors terms = analysis::sum_rule_terms(jobs.run, dipoles);
    rules = analysis::SumRuleVectors::Zero(terms.rows(), terms.cols());
    for (int i = 0; at.all && i <= jobs.run.n6; ++i) {
      rules.col(jobs.source(i)) += terms.col(i).cwiseQuotient(errors);
    }
  }
  return effects;
}

Fitted fit_job(const JobData& jobs, const Dipoles& at, const Effects& effects, int job,
               const Eigen::VectorXd& as_read) {
  Eigen::MatrixX3d effect = Eigen::MatrixX3d::Zero(as_read.size(), 3);
  for (Eigen::Index k = 0; k < 3; ++k) {
    const auto& [dipoles, rules] = effects[static_cast<std::size_t>(k)];
    effect.col(k).head<analysis::sum_rule_count>() = rules.col(job);
    for (int i = 1; i <= jobs.run.n6; ++i) {
      const int ih = (i + 1) / 2;
      if (!is_looked_at(at, ih)) continue;
      auto mean = effect.col(k).segment<3>(analysis::sum_rule_count + 3 * (ih - 1));
      if (job == 0 && i % 2 == 0) mean -= dipoles.col(0);
      if (job > 0 && jobs.source(i) == job) mean += dipoles.col(i) / 2.0;
    }
  }
  const Eigen::Vector3d change = -effect.colPivHouseholderQr().solve(as_read);
  return {job, (as_read + effect * change).norm(), change};
}

std::set<int> candidates(const JobData& jobs, const DipoleMeans& means) {
  std::set<int> found = {0};
  const auto add = [&](int i) {
    if (jobs.usable(i)) found.insert(jobs.source(i));
  };
  for (const int ih : means.off) {
    add(2 * ih - 1);
    add(2 * ih);
  }
  if (means.off.empty()) {
    for (int i = 1; i <= jobs.run.n6; ++i) add(i);
  }
  return found;
}

Dipoles put_right(const JobData& jobs, Dipoles at, const Fitted& fitted) {
  at.of_job.col(fitted.job) += fitted.change;
  if (!at.characters.empty()) analysis::derive_dipoles(jobs.run, at.characters, at.of_job);
  return at;
}

}  // namespace

DipoleMeans dipole_means(const JobData& jobs, const Dipoles& at) {
  const Eigen::Matrix3Xd parts = even_parts(jobs, at, at.of_job);
  const double rounding = roundings * analysis::print_rounding(jobs.run).maxCoeff();
  DipoleMeans means;
  means.sizes = parts.colwise().norm();
  std::vector<double> sizes;
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    double& size = means.sizes(ih - 1);
    if (!is_looked_at(at, ih)) {
      size = not_known;
    } else {
      sizes.push_back(size);
    }
  }
  means.limit = at.limits.dipole_mean * typical_size(sizes, rounding);
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    if (means.sizes(ih - 1) > means.limit) means.off.push_back(ih);
  }
  means.reference_off = has_offset(parts, at.limits.dipole_mean, rounding);
  return means;
}

bool dipoles_fit(const JobData& jobs, const Dipoles& at, double limit) {
  const DipoleMeans means = dipole_means(jobs, at);
  return !(largest_known(means.sizes) > std::min(limit, means.limit)) && !means.reference_off &&
         (!at.all || at.explain(analysis::sum_rule_residual(jobs.run, at.of_job)));
}

std::optional<WrongDipole> find_wrong_dipole(const JobData& jobs, const Dipoles& at,
                                             const DipoleMeans& means) {
  const SumRuleErrors errors = analysis::sum_rule_errors(jobs.run);
  const Eigen::VectorXd as_read = conditions(jobs, at, errors, at.of_job);
  const Effects effects = unit_effects(jobs, at, errors);
  std::vector<Fitted> fits;
  for (const int job : candidates(jobs, means))
    fits.push_back(fit_job(jobs, at, effects, job, as_read));
  std::ranges::sort(fits, [](const Fitted& a, const Fitted& b) { return a.left < b.left; });
  fits.resize(std::min<std::size_t>(fits.size(), 2));
  std::erase_if(fits, [&](const Fitted& fitted) {
    return !dipoles_fit(jobs, put_right(jobs, at, fitted), means.limit);
  });
  if (fits.empty()) return std::nullopt;
  const auto expected = [&](const Fitted& fitted) -> Eigen::Vector3d {
    return at.of_job.col(fitted.job) + fitted.change;
  };
  if (fits.size() == 1 || fits[1].left > as_good * fits[0].left) {
    return WrongDipole{fits[0].job, expected(fits[0])};
  }
  // Of two that do, the one whose dipole then comes nearer to the reference's.
  const auto distance = [&](const Fitted& fitted) {
    return (expected(fitted) - at.of_job.col(0)).norm();
  };
  if (fits[0].job > 0 && distance(fits[1]) < distance(fits[0])) std::swap(fits[0], fits[1]);
  return WrongDipole{fits[0].job, expected(fits[0]), fits[1].job};
}

}  // namespace check

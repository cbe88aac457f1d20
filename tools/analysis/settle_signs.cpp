#include "analysis/settle_signs.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/sign_search.hpp"

namespace analysis {

namespace {

// Figures below: wrong answers and refusals among 4752 draws of noise (1e-5 to 1e-4 au), turned
// signs and headers in 14 directories; "spoilt": 3168 with the dipole of one job permuted.

// Headers are believed where no condition is left with more than this times its noise. 6 is wrong
// in 6 draws whose dipoles were turned without their headers; 1.5 refuses 24 more.
constexpr double most_left_by_headers = 3.0;

// They are believed, too, where they leave no more than this times what the best signs leave. 2 is
// wrong in 2 of those draws; 1 refuses 72 more.
constexpr double nearly_best = 1.1;

// |dmu/dQ| is the same within so many standard deviations of its noise. 1 refuses 190 more; 9 is
// wrong in 34 draws.
constexpr double same_length_within = 3.0;

// But no more than this part of the longest: where all of it drowns in the noise nothing is the
// same, and the characters of a state whose digits do not tell them would be taken for told. 0.03
// refuses 205 more.
constexpr double same_part_within = 0.1;

// The means of two steps lie so near the reference's dipole, as part of what the steps change. 0.08
// refuses 135 more; larger ones change nothing.
constexpr double passes_within = 0.25;

// Whether the dipoles of two steps lie on either side of the reference's, with the signs that suit
// best, as goes_through_reference says for given signs. Those of a degenerate state do not. The
// coordinate that is furthest off does not count: one dipole may be wrong.
bool may_go_through(const SignFreeSteps& steps, double rounding) {
  const Eigen::RowVectorXd off = steps.even.colwise().norm();
  const double largest = off.maxCoeff();
  const double others = std::sqrt(std::max(0.0, off.squaredNorm() - largest * largest));
  // Print rounding makes 2 root 3 = 3.46 of it at most, and forming the difference adds to that.
  constexpr double roundings = 3.5;
  return largest <= roundings * rounding || others <= passes_within * steps.change.norm();
}

// One directory while its signs are settled.
struct Settling {
  const zandor::RunData& run;
  const Eigen::Matrix3Xd& dipoles;
  const SignEvidence& evidence;
  SignDemands demands = sign_demands(run, dipoles, evidence.images);
  SumRuleVectors terms = sum_rule_terms(run, dipoles);
  double noise_residual = demands.noise * sum_rule_errors(run).norm();

  bool is_computed(int i) const { return i == 0 || run.jobs[static_cast<std::size_t>(i)].is_calc; }
  Eigen::Matrix3Xd turned_dipoles(const std::vector<int>& jobs) const {
    Eigen::Matrix3Xd turned = dipoles;
    turn_signs(run, jobs, turned);
    return turned;
  }
};

// Sets of jobs tied together, each with one sign that is free, and what they add to the sum rules.
struct FreeSets {
  std::vector<int> roots;
  SumRuleVectors vectors;
  Eigen::VectorXd fixed;
};

FreeSets free_sets(const Settling& all, const TiedSigns& signs) {
  FreeSets sets;
  std::vector<Eigen::Index> place(static_cast<std::size_t>(all.run.n6) + 1, -1);
  const auto place_of = [&](int i) -> Eigen::Index& {
    return place[static_cast<std::size_t>(signs.root(computed_source(all.run, i)))];
  };
  // A set whose dipoles all drown in the noise stays as it is.
  for (int i = 1; i <= all.run.n6; ++i) {
    const int root = signs.root(computed_source(all.run, i));
    if (root == 0 || place_of(i) >= 0 || all.dipoles.col(i).norm() <= all.demands.floor) continue;
    place_of(i) = static_cast<Eigen::Index>(sets.roots.size());
    sets.roots.push_back(root);
  }
  sets.fixed = all.terms.col(0);
  sets.vectors = SumRuleVectors::Zero(sum_rule_count, static_cast<Eigen::Index>(sets.roots.size()));
  for (int i = 1; i <= all.run.n6; ++i) {
    const auto term = signs.sign(computed_source(all.run, i)) * all.terms.col(i);
    if (place_of(i) >= 0) {
      sets.vectors.col(place_of(i)) += term;
    } else {
      sets.fixed += term;
    }
  }
  return sets;
}

double residual_of(const FreeSets& sets, const Eigen::VectorXd& choice) {
  return (sets.fixed + sets.vectors * choice).norm();
}

const Eigen::VectorXd& best_of(const FreeSets& sets, const std::vector<Eigen::VectorXd>& choices) {
  return *std::min_element(choices.begin(), choices.end(), [&](const auto& a, const auto& b) {
    return residual_of(sets, a) < residual_of(sets, b);
  });
}

// All choices that are in doubt beside the best one.
SignChoices fitting_choices(const Settling& all, const FreeSets& sets) {
  const double of_noise = in_doubt * all.noise_residual;
  const ResidualLimits& limits = all.evidence.limits;
  const double most =
      std::max({of_noise, limits.bounds * sum_rule_residual(all.run, all.dipoles).bound,
                limits.relative * std::hypot(sets.fixed.norm(), sets.vectors.norm())});
  for (double within = of_noise;; within *= 3.0) {
    SignChoices choices = find_sign_choices(sets.vectors, sets.fixed, std::min(within, most));
    if (!choices.complete || (choices.signs.empty() && within >= most)) return choices;
    if (choices.signs.empty()) continue;
    const double doubtful = in_doubt * residual_of(sets, best_of(sets, choices.signs));
    if (doubtful <= within) return choices;
    return find_sign_choices(sets.vectors, sets.fixed, doubtful);
  }
}

// The jobs that a choice turns, or all others where these are fewer.
std::vector<int> jobs_turned(const Settling& all, const TiedSigns& signs, const FreeSets& sets,
                             const Eigen::VectorXd& choice) {
  std::vector<int> turned, others;
  for (int i = 0; i <= all.run.n6; ++i) {
    if (!all.is_computed(i)) continue;
    const auto found = std::find(sets.roots.begin(), sets.roots.end(), signs.root(i));
    const double free_sign = found == sets.roots.end() ? 1.0 : choice(found - sets.roots.begin());
    (signs.sign(i) * free_sign < 0.0 ? turned : others).push_back(i);
  }
  return others.size() < turned.size() ? others : turned;
}

std::string named(const Settling& all, const SignDemand& demand) {
  const auto name = [&](int i) {
    return io::printable(all.run.jobs[static_cast<std::size_t>(i)].sgn_name.content());
  };
  return demand.a == demand.b ? name(demand.a) : name(demand.a) + " and " + name(demand.b);
}

SettledSigns refused(std::string why) {
  SettledSigns result;
  result.refusal = std::move(why);
  return result;
}

SettledSigns nothing_fits(std::string why) {
  SettledSigns result = refused(std::move(why));
  result.nothing_fits = true;
  return result;
}

// Ties what leaves no choice. The result is why no signs suit; empty where some may.
std::string tie_or_refuse(const Settling& all, TiedSigns& signs) {
  if (!may_go_through(sign_free_steps(all.run, all.dipoles), all.demands.rounding)) {
    return "whatever the signs, the dipoles of the two steps do not lie on either side of the "
           "reference's: the state may be degenerate";
  }
  const SignDemand* const demand = tie_demands(all.demands, signs);
  if (demand == nullptr) return {};
  return "no signs of " + named(all, *demand) +
         " suit the reference or the images of the jobs: a state may have changed";
}

// Whether all candidates, sets of jobs that are turned, give the same |dmu/dQ|**2.
bool all_same_strengths(const Settling& all, const std::vector<std::vector<int>>& candidates) {
  if (candidates.size() == 1) return true;
  const Eigen::MatrixXd directions = all.evidence.directions();
  const auto gradient = [&](const std::vector<int>& jobs) {
    return dipole_gradient(all.run, all.turned_dipoles(jobs));
  };
  const Eigen::Matrix3Xd first = gradient(candidates.front());
  return std::all_of(candidates.begin() + 1, candidates.end(), [&](const auto& jobs) {
    return same_strengths(all.run, first, gradient(jobs), directions, all.demands.noise);
  });
}

// Settles the signs that are not tied yet.
SettledSigns settle(const Settling& all, TiedSigns signs) {
  if (std::string why = tie_or_refuse(all, signs); !why.empty()) {
    return nothing_fits(std::move(why));
  }
  const FreeSets sets = free_sets(all, signs);
  const SignChoices choices = fitting_choices(all, sets);
  const std::size_t count = choices.signs.size();
  if (!choices.complete) {
    return refused(io::joined("the signs of ", sets.roots.size(),
                              " sets of jobs are too many to try; of those tried ", count,
                              " choices fit the sum rules, and only tden_maxval can tell"));
  }
  std::vector<std::vector<int>> candidates;
  for (const auto& choice : choices.signs) {
    candidates.push_back(jobs_turned(all, signs, sets, choice));
  }
  std::sort(candidates.begin(), candidates.end(), [](const auto& a, const auto& b) {
    return std::make_tuple(a.size(), std::cref(a)) < std::make_tuple(b.size(), std::cref(b));
  });
  SettledSigns result;
  const std::string none = "no choice of signs meets the sum rules: a state may have changed";
  if (candidates.empty()) return nothing_fits(none);
  result.settled = sum_rule_residual(
      all.run, all.turned_dipoles(jobs_turned(all, signs, sets, best_of(sets, choices.signs))));
  const Eigen::Matrix3Xd settled = all.turned_dipoles(candidates.front());
  // Where most of what has to vanish does not, it is no noise.
  if (!all.evidence.limits.explain(result.settled) || !goes_through_reference(all.run, settled)) {
    return nothing_fits(none);
  }
  if (!all_same_strengths(all, candidates)) {
    result.refusal = io::joined(count,
                                " choices of signs fit the sum rules and give different strengths: "
                                "only tden_maxval can tell");
    return result;
  }
  result.jobs = candidates.front();
  result.settled = sum_rule_residual(all.run, settled);
  return result;
}

SettledSigns fit_as_read(const Settling& all) {
  TiedSigns signs(all.run.n6);
  signs.root.setZero();
  SettledSigns result = settle(all, signs);
  result.as_read = result.settled = sum_rule_residual(all.run, all.dipoles);
  result.fits_as_read = result.found();
  return result;
}

bool leaves_noise(const Settling& all, const std::vector<int>& jobs) {
  const Eigen::VectorXd left = sum_rule_terms(all.run, all.turned_dipoles(jobs)).rowwise().sum();
  return left.cwiseQuotient(sum_rule_errors(all.run)).cwiseAbs().maxCoeff() <=
         most_left_by_headers * all.demands.noise;
}

// What the headers tell, if it can be believed: somebody may have turned dipoles and left them.
SettledSigns settle_by_headers(const Settling& all, const TiedSigns& signs, bool fits_as_read) {
  SettledSigns result = settle(all, signs);
  if (result.nothing_fits || (result.found() && !leaves_noise(all, result.jobs))) {
    SettledSigns others = settle(all, TiedSigns(all.run.n6));
    const bool is_best =
        others.nothing_fits || result.settled.absolute <= nearly_best * others.settled.absolute;
    if (result.nothing_fits || !is_best) {
      if (!others.found() && !others.nothing_fits) {
        others.refusal += ", and what it says leaves more than the noise makes";
      }
      return others;
    }
  }
  if (result.found() && fits_as_read &&
      !same_strengths(all.run, dipole_gradient(all.run, all.dipoles),
                      dipole_gradient(all.run, all.turned_dipoles(result.jobs)),
                      all.evidence.directions(), all.demands.noise)) {
    return refused(
        "the signs of tden_maxval and those of the dipoles as read both fit the sum rules, "
        "and give different strengths");
  }
  return result;
}

}  // namespace

std::vector<int> density_signs(const std::vector<DensityElement>& elements) {
  constexpr double same_state_within = 0.02;
  std::vector<int> signs;
  for (const DensityElement& element : elements) {
    const DensityElement& reference = elements.front();
    signs.push_back(0);
    if (!element.value || !reference.value || element.place != reference.place) continue;
    const double ratio = *element.value / *reference.value;
    if (std::abs(std::abs(ratio) - 1.0) <= same_state_within) signs.back() = ratio < 0.0 ? -1 : 1;
  }
  return signs;
}

SettledSigns signs_as_read(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                           const SignEvidence& evidence) {
  return fit_as_read({run, dipoles, evidence});
}

SettledSigns settle_signs(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                          const SignEvidence& evidence) {
  const Settling all{run, dipoles, evidence};
  const SettledSigns as_read = fit_as_read(all);
  TiedSigns signs(run.n6);
  bool headers_tell = false;
  for (int i = 1; i <= run.n6 && !evidence.density.empty(); ++i) {
    const int sign = evidence.density[static_cast<std::size_t>(i)];
    if (sign == 0) continue;
    headers_tell = true;
    signs.tie(i, 0, sign);
  }
  SettledSigns result =
      headers_tell ? settle_by_headers(all, signs, as_read.fits_as_read) : settle(all, signs);
  result.as_read = as_read.as_read;
  result.fits_as_read = as_read.fits_as_read;
  if (!result.found()) result.settled = as_read.as_read;
  return result;
}

void turn_signs(const zandor::RunData& run, const std::vector<int>& jobs,
                Eigen::Matrix3Xd& dipoles) {
  const auto is_turned = [&](int job) {
    return std::find(jobs.begin(), jobs.end(), job) != jobs.end();
  };
  if (is_turned(0)) dipoles.col(0) *= -1.0;
  for (int i = 1; i <= run.n6; ++i) {
    const int source = computed_source(run, i);
    if (source > 0 && is_turned(source)) dipoles.col(i) *= -1.0;
  }
}

bool same_strengths(const zandor::RunData& run, const Eigen::Matrix3Xd& a,
                    const Eigen::Matrix3Xd& b, const Eigen::MatrixXd& directions, double noise) {
  const Eigen::RowVectorXd along_a = (a * directions).colwise().norm();
  const Eigen::RowVectorXd along_b = (b * directions).colwise().norm();
  const double of_gradient = noise / (std::sqrt(2.0) * std::abs(run.dx));
  const Eigen::RowVectorXd allowed =
      (same_length_within * std::sqrt(3.0) * of_gradient * directions.colwise().norm())
          .cwiseMin(along_a.size() > 0 ? same_part_within * along_a.maxCoeff() : 0.0);
  return ((along_a - along_b).cwiseAbs().array() <= allowed.array()).all();
}

}  // namespace analysis

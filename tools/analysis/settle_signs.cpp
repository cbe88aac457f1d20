#include "analysis/settle_signs.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "analysis/dipoles.hpp"
#include "analysis/median.hpp"
#include "analysis/sign_search.hpp"

namespace analysis {

namespace {

// A component of what has to vanish scatters by root 3/2 sigma for errors sigma of the dipoles, and
// the length of three has its median at 1.54 times that.
constexpr double median_over_noise = 1.88;

// What has to vanish for the right signs of two jobs, for each pair of signs against the
// reference's: its length at [sign of a is -][sign of b is -].
struct Demand {
  int a = 0, b = 0;  // computed jobs, perhaps the same
  std::array<std::array<double, 2>, 2> length{};

  double smallest() const {
    return std::min({length[0][0], length[0][1], length[1][0], length[1][1]});
  }
};

std::vector<Demand> demands_of(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                               const std::vector<ImageRelation>& images) {
  std::vector<Demand> demands;
  const auto add = [&](int i, const Eigen::Vector3d& u, int j, const Eigen::Vector3d& v,
                       const Eigen::Vector3d& sum) {
    Demand& demand =
        demands.emplace_back(Demand{computed_source(run, i), computed_source(run, j), {}});
    for (const std::size_t a : {0, 1}) {
      for (const std::size_t b : {0, 1}) {
        const Eigen::Vector3d first = a == 0 ? u : -u, second = b == 0 ? v : -v;
        demand.length[a][b] = (first + second - sum).norm();
      }
    }
  };
  for (int ih = 1; ih <= run.n3; ++ih) {
    add(2 * ih, dipoles.col(2 * ih) / 2.0, 2 * ih - 1, dipoles.col(2 * ih - 1) / 2.0,
        dipoles.col(0));
  }
  for (const ImageRelation& relation : images) {
    add(relation.to, dipoles.col(relation.to) / 2.0, relation.from,
        -relation.image * dipoles.col(relation.from) / 2.0, Eigen::Vector3d::Zero());
  }
  return demands;
}

double largest_rounding(const zandor::RunData& run) { return print_rounding(run).maxCoeff(); }

// The median of those that print rounding does not explain; a single one is no scatter.
double scatter_of(const std::vector<Demand>& demands, double rounding) {
  std::vector<double> lengths;
  for (const Demand& demand : demands) {
    if (demand.smallest() > 2.0 * rounding) lengths.push_back(demand.smallest());
  }
  if (lengths.size() < 2) return 0.0;
  return median(std::move(lengths));
}

// Jobs whose signs are known against each other. The reference is among them.
class TiedSigns {
 public:
  explicit TiedSigns(int n6) : next_(static_cast<std::size_t>(n6) + 1), sign_(next_.size(), 1) {
    std::iota(next_.begin(), next_.end(), 0);
  }
  struct Place {
    int root = 0;
    int sign = 1;
  };
  Place of(int job) const {
    Place place{job, 1};
    while (next_[static_cast<std::size_t>(place.root)] != place.root) {
      place.sign *= sign_[static_cast<std::size_t>(place.root)];
      place.root = next_[static_cast<std::size_t>(place.root)];
    }
    return place;
  }
  // False where it contradicts what is known.
  bool tie(int a, int b, int sign) {
    Place from = of(a), to = of(b);
    if (from.root == to.root) return from.sign * to.sign == sign;
    if (from.root == 0) std::swap(from, to);
    next_[static_cast<std::size_t>(from.root)] = to.root;
    sign_[static_cast<std::size_t>(from.root)] = from.sign * to.sign * sign;
    return true;
  }

 private:
  std::vector<int> next_;
  std::vector<int> sign_;  // against the next
};

// Ties what a demand leaves no choice about. False where nothing meets it.
bool tie(const Demand& demand, double allowed, TiedSigns& signs) {
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

// Whether the dipoles of two steps lie on either side of the reference's, with the signs that suit
// best, as goes_through_reference says for given signs. Those of a degenerate state do not. The
// coordinate that is furthest off does not count: one dipole may be wrong.
bool may_go_through(const SignFreeSteps& steps, double rounding) {
  const Eigen::RowVectorXd off = steps.even.colwise().norm();
  const double largest = off.maxCoeff();
  const double others = std::sqrt(std::max(0.0, off.squaredNorm() - largest * largest));
  return largest <= 3.0 * rounding || others <= 0.25 * steps.change.norm();
}

// One directory while its signs are settled.
struct Settling {
  const zandor::RunData& run;
  const Eigen::Matrix3Xd& dipoles;
  const SignEvidence& evidence;
  SumRuleVectors terms;
  std::vector<Demand> demands;
  double rounding = 0.0;
  double floor = 0.0;  // of the length of what has to vanish
  double noise = 0.0;  // of a component of a dipole
  double noise_residual = 0.0;

  Settling(const zandor::RunData& r, const Eigen::Matrix3Xd& d, const SignEvidence& e)
      : run(r),
        dipoles(d),
        evidence(e),
        terms(sum_rule_terms(r, d)),
        demands(demands_of(r, d, e.images)),
        rounding(largest_rounding(r)) {
    const double scatter = scatter_of(demands, rounding);
    floor = std::max(scatter, 2.0 * std::sqrt(3.0) * rounding);
    noise = std::max(scatter / median_over_noise, rounding / std::sqrt(3.0));
    noise_residual = noise * sum_rule_errors(run).norm();
  }

  // Ties what the demands leave no choice about; the result is one that nothing meets, if any.
  const Demand* tie_demands(TiedSigns& signs) const {
    for (const Demand& demand : demands) {
      // Second derivatives stand above the noise in sound jobs (most_dipole_noise).
      const double smallest = demand.smallest();
      const double allowed = 4.0 * std::max(floor, smallest);
      const bool of_steps = &demand < &demands[static_cast<std::size_t>(run.n3)];
      const double most = std::max(10.0 * floor, of_steps ? most_dipole_noise : 0.0);
      if (smallest > most || !tie(demand, allowed, signs)) return &demand;
    }
    return nullptr;
  }

  bool tie_density(TiedSigns& signs) const {
    for (int i = 1; i <= run.n6; ++i) {
      const int sign = evidence.density.empty() ? 0 : evidence.density[static_cast<std::size_t>(i)];
      if (sign != 0 && !signs.tie(i, 0, sign)) return false;
    }
    return true;
  }

  std::vector<int> fewest(std::vector<int> turned) const {
    std::vector<int> others;
    for (int i = 0; i <= run.n6; ++i) {
      if (i > 0 && !run.jobs[static_cast<std::size_t>(i)].is_calc) continue;
      if (std::find(turned.begin(), turned.end(), i) == turned.end()) others.push_back(i);
    }
    return others.size() < turned.size() ? others : turned;
  }

  Eigen::Matrix3Xd turned_dipoles(const std::vector<int>& jobs) const {
    Eigen::Matrix3Xd turned = dipoles;
    turn_signs(run, jobs, turned);
    return turned;
  }

  bool explained(const SumRuleResidual& residual) const {
    return evidence.limits.explain(residual) || residual.absolute <= 3.0 * noise_residual;
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
  sets.fixed = all.terms.col(0);
  std::vector<int> place(static_cast<std::size_t>(all.run.n6) + 1, -1);
  // A set whose dipoles all drown in the noise stays as it is.
  for (int i = 1; i <= all.run.n6; ++i) {
    const int source = computed_source(all.run, i);
    if (source == 0 || all.dipoles.col(i).norm() <= all.floor) continue;
    const int root = signs.of(source).root;
    if (root == 0 || place[static_cast<std::size_t>(root)] >= 0) continue;
    place[static_cast<std::size_t>(root)] = static_cast<int>(sets.roots.size());
    sets.roots.push_back(root);
  }
  sets.vectors = SumRuleVectors::Zero(sum_rule_count, static_cast<Eigen::Index>(sets.roots.size()));
  for (int i = 1; i <= all.run.n6; ++i) {
    const TiedSigns::Place at = signs.of(computed_source(all.run, i));
    const int column = place[static_cast<std::size_t>(at.root)];
    if (column >= 0) {
      sets.vectors.col(column) += at.sign * all.terms.col(i);
    } else {
      sets.fixed += at.sign * all.terms.col(i);
    }
  }
  return sets;
}

// All choices that leave no more than 3 times the residual of the best one, or than noise makes.
SignChoices fitting_choices(const Settling& all, const FreeSets& sets) {
  const auto residual = [&](const Eigen::VectorXd& s) {
    return (sets.fixed + sets.vectors * s).norm();
  };
  const double bound = sum_rule_residual(all.run, all.dipoles).bound;
  const double most =
      std::max({3.0 * all.noise_residual, all.evidence.limits.bounds * bound,
                all.evidence.limits.relative * std::hypot(sets.fixed.norm(), sets.vectors.norm())});
  for (double within = 3.0 * all.noise_residual;; within *= 3.0) {
    SignChoices choices = find_sign_choices(sets.vectors, sets.fixed, std::min(within, most));
    if (!choices.complete || (choices.signs.empty() && within >= most)) return choices;
    if (choices.signs.empty()) continue;
    double best = std::numeric_limits<double>::infinity();
    for (const auto& s : choices.signs) best = std::min(best, residual(s));
    if (3.0 * best <= within) return choices;
    return find_sign_choices(sets.vectors, sets.fixed, 3.0 * best);
  }
}

std::vector<int> jobs_turned(const Settling& all, const TiedSigns& signs, const FreeSets& sets,
                             const Eigen::VectorXd& choice) {
  std::vector<int> turned;
  for (int i = 1; i <= all.run.n6; ++i) {
    if (!all.run.jobs[static_cast<std::size_t>(i)].is_calc) continue;
    const TiedSigns::Place at = signs.of(i);
    const auto found = std::find(sets.roots.begin(), sets.roots.end(), at.root);
    const double free_sign = found == sets.roots.end() ? 1.0 : choice(found - sets.roots.begin());
    if (at.sign * free_sign < 0.0) turned.push_back(i);
  }
  return all.fewest(std::move(turned));
}

std::string named(const Settling& all, const Demand& demand) {
  const auto name = [&](int i) {
    return io::printable(all.run.jobs[static_cast<std::size_t>(i)].sgn_name.content());
  };
  return demand.a == demand.b ? name(demand.a) : name(demand.a) + " and " + name(demand.b);
}

SettledSigns refused(std::string why, bool nothing_fits = false) {
  SettledSigns result;
  result.refusal = std::move(why);
  result.nothing_fits = nothing_fits;
  return result;
}

// Settles the signs that are not tied yet.
SettledSigns settle(const Settling& all, TiedSigns signs) {
  if (!may_go_through(sign_free_steps(all.run, all.dipoles), all.rounding)) {
    return refused(
        "whatever the signs, the dipoles of the two steps do not lie on either side of "
        "the reference's: the state may be degenerate",
        true);
  }
  if (const Demand* demand = all.tie_demands(signs)) {
    return refused("no signs of " + named(all, *demand) +
                       " suit the reference or the images of the jobs: a state may have changed",
                   true);
  }
  const FreeSets sets = free_sets(all, signs);
  const SignChoices choices = fitting_choices(all, sets);
  if (choices.signs.empty() && choices.complete) {
    return refused("no choice of signs meets the sum rules: a state may have changed", true);
  }
  std::vector<std::vector<int>> candidates;
  SettledSigns result;
  result.settled.absolute = std::numeric_limits<double>::infinity();
  for (const auto& choice : choices.signs) {
    candidates.push_back(jobs_turned(all, signs, sets, choice));
    const auto residual = sum_rule_residual(all.run, all.turned_dipoles(candidates.back()));
    if (residual.absolute < result.settled.absolute) result.settled = residual;
  }
  const std::string count = std::to_string(choices.signs.size());
  if (!choices.complete) {
    result.refusal = "the signs of " + std::to_string(sets.roots.size()) +
                     " sets of jobs are too many to try; of those tried " + count +
                     " choices fit the sum rules, and only tden_maxval can tell";
    result.settled = {};
    return result;
  }
  const auto fewest =
      std::min_element(candidates.begin(), candidates.end(), [](const auto& a, const auto& b) {
        return std::make_pair(a.size(), std::cref(a)) < std::make_pair(b.size(), std::cref(b));
      });
  const Eigen::Matrix3Xd best = all.turned_dipoles(*fewest);
  // Where most of what has to vanish does not, it is no noise.
  if (!all.explained(result.settled) || !goes_through_reference(all.run, best)) {
    return refused("no choice of signs meets the sum rules: a state may have changed", true);
  }
  const Eigen::MatrixXd directions =
      candidates.size() > 1 ? all.evidence.directions() : Eigen::MatrixXd();
  const Eigen::Matrix3Xd gradient = dipole_gradient(all.run, best);
  for (const auto& jobs : candidates) {
    if (jobs == *fewest ||
        same_strengths(all.run, gradient, dipole_gradient(all.run, all.turned_dipoles(jobs)),
                       directions, all.noise)) {
      continue;
    }
    result.refusal = count +
                     " choices of signs fit the sum rules and give different strengths: only "
                     "tden_maxval can tell";
    return result;
  }
  result.jobs = *fewest;
  result.settled = sum_rule_residual(all.run, best);
  return result;
}

// Whether noise makes what is left of each condition. In formaldehyde with noise of 1e-5 and 1e-4
// au headers that had turned with the dipoles leave 2 to 3 times the noise in the median, those
// that gave wrong strengths left 4.4 and more, and twice what the best signs leave.
bool is_noise(const Settling& all, const std::vector<int>& jobs) {
  constexpr double times_noise = 3.0;
  const Eigen::VectorXd left = sum_rule_terms(all.run, all.turned_dipoles(jobs)).rowwise().sum();
  return left.cwiseQuotient(sum_rule_errors(all.run)).cwiseAbs().maxCoeff() <=
         times_noise * all.noise;
}

TiedSigns tied_as_read(const zandor::RunData& run) {
  TiedSigns signs(run.n6);
  for (int i = 1; i <= run.n6; ++i) signs.tie(i, 0, 1);
  return signs;
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
  SettledSigns result = settle({run, dipoles, evidence}, tied_as_read(run));
  result.as_read = sum_rule_residual(run, dipoles);
  result.settled = result.as_read;
  result.fits_as_read = result.found();
  return result;
}

SettledSigns settle_signs(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                          const SignEvidence& evidence) {
  const Settling all(run, dipoles, evidence);
  const SettledSigns as_read = signs_as_read(run, dipoles, evidence);
  const auto with_as_read = [&](SettledSigns result) {
    result.as_read = as_read.as_read;
    result.fits_as_read = as_read.fits_as_read;
    if (!result.found()) result.settled = as_read.as_read;
    return result;
  };
  TiedSigns signs(run.n6);
  const bool tells = evidence.density.size() > 1 &&
                     std::any_of(evidence.density.begin() + 1, evidence.density.end(),
                                 [](int s) { return s != 0; });
  if (!tells || !all.tie_density(signs)) return with_as_read(settle(all, TiedSigns(run.n6)));
  SettledSigns result = settle(all, signs);
  result.by_density = true;
  const auto rivals = [&](double residual) {
    return residual <= std::max(3.0 * result.settled.absolute, 3.0 * all.noise_residual);
  };
  // Somebody may have turned dipoles and left their headers.
  if (result.nothing_fits || (result.found() && !is_noise(all, result.jobs))) {
    SettledSigns others = settle(all, TiedSigns(run.n6));
    const bool nearly_best = result.settled.absolute <= 1.1 * others.settled.absolute;
    if (result.nothing_fits || !(others.nothing_fits || nearly_best)) {
      if (!others.found() && !others.nothing_fits) {
        others.refusal += ", and what it says leaves more than the noise makes";
      }
      return with_as_read(std::move(others));
    }
  }
  if (result.found() && as_read.fits_as_read && rivals(as_read.as_read.absolute) &&
      !same_strengths(run, dipole_gradient(run, dipoles),
                      dipole_gradient(run, all.turned_dipoles(result.jobs)), evidence.directions(),
                      all.noise)) {
    return with_as_read(
        refused("the signs of tden_maxval and those of the dipoles as read both fit the sum rules, "
                "and give different strengths"));
  }
  return with_as_read(std::move(result));
}

void turn_signs(const zandor::RunData& run, const std::vector<int>& jobs,
                Eigen::Matrix3Xd& dipoles) {
  const auto turned = [&](int job) {
    return std::find(jobs.begin(), jobs.end(), job) != jobs.end();
  };
  if (turned(0)) dipoles.col(0) *= -1.0;
  for (int i = 1; i <= run.n6; ++i) {
    const int source = computed_source(run, i);
    if (source > 0 && turned(source)) dipoles.col(i) *= -1.0;
  }
}

double dipole_error(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles,
                    const std::vector<ImageRelation>& images) {
  const double rounding = largest_rounding(run);
  return std::max(scatter_of(demands_of(run, dipoles, images), rounding) / median_over_noise,
                  rounding / std::sqrt(3.0));
}

bool same_strengths(const zandor::RunData& run, const Eigen::Matrix3Xd& a,
                    const Eigen::Matrix3Xd& b, const Eigen::MatrixXd& directions, double noise) {
  const Eigen::RowVectorXd along_a = (a * directions).colwise().norm();
  const Eigen::RowVectorXd along_b = (b * directions).colwise().norm();
  const double of_gradient = noise / (std::sqrt(2.0) * std::abs(run.dx));
  // Where all of it drowns in the noise nothing is the same.
  const Eigen::RowVectorXd allowed =
      (3.0 * std::sqrt(3.0) * of_gradient * directions.colwise().norm())
          .cwiseMin(along_a.size() > 0 ? 0.1 * along_a.maxCoeff() : 0.0);
  return ((along_a - along_b).cwiseAbs().array() <= allowed.array()).all();
}

}  // namespace analysis

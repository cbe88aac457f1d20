// Force constants of one energy surface are symmetric: h(i,j) from the jobs of coordinate j against
// h(j,i) from those of coordinate i.
//
// A bad job spoils a column, and with it one element of every other column. The jobs are therefore
// taken together with all columns that rest on them (a symmetry job rests on its source), and that
// group is blamed without which least asymmetry is left. Without it the search goes on.
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>

#include "check/checks.hpp"
#include "check/support/force_constants.hpp"
#include "check/support/net_force.hpp"

namespace check {

namespace {

// Computed jobs on which the same columns rest.
struct Group {
  std::vector<int> jobs;
  std::vector<int> columns;
};

std::vector<Group> group_jobs(const JobData& jobs, const RawForceConstants& raw) {
  std::map<int, std::vector<int>> columns_of;
  for (const int ih : raw.columns) {
    for (const int job : {2 * ih - 1, 2 * ih}) {
      std::vector<int>& columns = columns_of[jobs.source(job)];
      if (columns.empty() || columns.back() != ih) columns.push_back(ih);
    }
  }
  std::map<std::vector<int>, std::vector<int>> jobs_of;
  for (const auto& [job, columns] : columns_of) jobs_of[columns].push_back(job);
  std::vector<Group> groups;
  groups.reserve(jobs_of.size());
  for (const auto& [columns, sources] : jobs_of) groups.push_back({sources, columns});
  return groups;
}

// The columns still in the game, and the asymmetry among them.
class Columns {
 public:
  explicit Columns(const RawForceConstants& raw)
      : raw_(raw), active_(raw.columns), order_(raw.rounding.size()) {
    asymmetry_.resize(order_ * order_);
    for (const int i : active_) {
      for (const int j : active_) {
        if (j <= i) place(i, j) = place(j, i) = std::fabs(raw.h(i, j) - raw.h(j, i));
      }
    }
  }

  double asymmetry(int i, int j) const {
    return asymmetry_[static_cast<std::size_t>(i - 1) * order_ + static_cast<std::size_t>(j - 1)];
  }
  // What print rounding allows.
  double allowed(int i, int j) const {
    return raw_.rounding[static_cast<std::size_t>(i - 1)] +
           raw_.rounding[static_cast<std::size_t>(j - 1)];
  }
  const std::vector<int>& active() const { return active_; }
  bool is_active(int ih) const { return std::binary_search(active_.begin(), active_.end(), ih); }
  void remove(const std::vector<int>& columns) { active_ = without(columns); }

  std::vector<int> without(const std::vector<int>& columns) const {
    std::vector<int> rest;
    std::set_difference(active_.begin(), active_.end(), columns.begin(), columns.end(),
                        std::back_inserter(rest));
    return rest;
  }

  // Sum of the squares in each active column, at [ih - 1].
  std::vector<double> squares() const {
    std::vector<double> sums(raw_.rounding.size(), 0.0);
    for (const int i : active_) {
      for (const int j : active_) sums[static_cast<std::size_t>(i - 1)] += square(i, j);
    }
    return sums;
  }
  double square(int i, int j) const { return asymmetry(i, j) * asymmetry(i, j); }

  // The largest element in each of the columns, among themselves; ascending.
  std::vector<double> largest_by_column(const std::vector<int>& columns) const {
    std::vector<double> largest;
    for (const int i : columns) {
      double value = 0.0;
      for (const int j : columns) value = std::max(value, asymmetry(i, j));
      largest.push_back(value);
    }
    std::sort(largest.begin(), largest.end());
    return largest;
  }

 private:
  double& place(int i, int j) {
    return asymmetry_[static_cast<std::size_t>(i - 1) * order_ + static_cast<std::size_t>(j - 1)];
  }

  const RawForceConstants& raw_;
  std::vector<int> active_;
  std::size_t order_;
  std::vector<double> asymmetry_;
};

struct Element {
  int i = 0, j = 0;
  double asymmetry = 0.0;
  double excess = 0.0;  // above what print rounding allows
};

// The largest element, above rounding, of the given columns with any active one.
Element worst_element(const Columns& columns, const std::vector<int>& of) {
  Element worst;
  for (const int i : of) {
    if (!columns.is_active(i)) continue;
    for (const int j : columns.active()) {
      const double asymmetry = columns.asymmetry(i, j);
      const double excess = asymmetry - columns.allowed(i, j);
      if (worst.i == 0 || excess > worst.excess) worst = {i, j, asymmetry, excess};
    }
  }
  return worst;
}

// What is taken out of the sum of the squares with a group.
double share_of(const Group& group, const Columns& columns, const std::vector<double>& squares) {
  double share = 0.0;
  for (const int i : group.columns) {
    if (!columns.is_active(i)) continue;
    share += 2.0 * squares[static_cast<std::size_t>(i - 1)];
    for (const int j : group.columns) {
      if (columns.is_active(j)) share -= columns.square(i, j);
    }
  }
  return share;
}

std::vector<int> common_jobs(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<int> common;
  std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(common));
  return common;
}

// The largest even part among the columns of a group.
double even_part(const JobData& jobs, const Group& group) {
  double largest = -1.0;
  for (const int ih : group.columns) largest = std::max(largest, even_deviation(jobs, ih));
  return largest;
}

// What is left without each group that is still in the game: the sum of the squares among the
// others.
std::vector<double> rests_without(const std::vector<Group>& groups, const Columns& columns) {
  const std::vector<double> squares = columns.squares();
  const double total = std::accumulate(squares.begin(), squares.end(), 0.0);
  std::vector<double> rests;
  rests.reserve(groups.size());
  for (const Group& group : groups) {
    if (columns.without(group.columns).size() == columns.active().size()) {
      rests.push_back(std::numeric_limits<double>::infinity());
      continue;
    }
    rests.push_back(std::max(total - share_of(group, columns, squares), 0.0));
  }
  return rests;
}

// Those of the groups whose jobs have a net force of their own; all where none has.
std::vector<std::size_t> with_net_force(const std::vector<Group>& groups,
                                        const std::vector<std::size_t>& places,
                                        const std::vector<int>& marked) {
  std::vector<std::size_t> found;
  for (const std::size_t k : places) {
    if (!common_jobs(groups[k].jobs, marked).empty()) found.push_back(k);
  }
  return found.empty() ? places : found;
}

// The group without which least is left. Of those that leave nearly as little, one with a net force
// (marked: the jobs that have one); then one whose two jobs differ much more from the reference
// than steps in opposite directions do, else the smallest.
const Group& suspect(const JobData& jobs, const std::vector<Group>& groups, const Columns& columns,
                     const std::vector<int>& marked, const Thresholds& limits) {
  constexpr double nearly = 1.5;
  constexpr double much_more = 4.0;
  const std::vector<double> rests = rests_without(groups, columns);
  const double least = *std::min_element(rests.begin(), rests.end());
  std::vector<std::size_t> alike;
  for (std::size_t k = 0; k < groups.size(); ++k) {
    if (rests[k] <= nearly * least + limits.asymmetry * limits.asymmetry) alike.push_back(k);
  }
  alike = with_net_force(groups, alike, marked);
  std::size_t best = alike.front();
  double best_even = std::max(even_part(jobs, groups[best]), 0.0);
  for (const std::size_t k : alike) {
    const double even = even_part(jobs, groups[k]);
    const bool smaller = groups[k].columns.size() < groups[best].columns.size();
    if (even > much_more * best_even || (smaller && best_even <= much_more * even)) {
      best = k;
      best_even = std::max(even, 0.0);
    }
  }
  return groups[best];
}

double median(const std::vector<double>& ascending) {
  return ascending.empty() ? 0.0 : ascending[ascending.size() / 2];
}

std::string names_of_columns(const JobData& jobs, const std::vector<int>& columns) {
  std::string names;
  for (std::size_t k = 0; k < columns.size() && k < 4; ++k) {
    names += (k > 0 ? ", " : "") + coordinate_text(jobs, columns[k]);
  }
  return names + (columns.size() > 4 ? ", ..." : "");
}

void blame(const JobData& jobs, const RawForceConstants& raw, const Group& group,
           const Columns& columns, const std::vector<int>& marked, const Element& worst,
           double typical, Report& report) {
  std::vector<int> blamed = common_jobs(group.jobs, marked);
  if (blamed.empty()) blamed = group.jobs;
  if (blamed.size() > 1) blamed = single_out(jobs, raw, blamed, columns.without(group.columns));
  std::string others;
  for (std::size_t k = 1; k < blamed.size(); ++k) {
    others +=
        (k == 1 ? "; this job or " : ", ") + std::string(jobs.job(blamed[k]).sgn_name.content());
  }
  report.add(Severity::warning, forces_place(jobs, blamed.front()),
             "the forces do not fit those of the other jobs: h(i,j) - h(j,i) is " +
                 rounded(worst.asymmetry) + " Hartree/Bohr**2 for " +
                 coordinate_text(jobs, worst.i) + " and " + coordinate_text(jobs, worst.j) + ", " +
                 rounded(typical) + " in the median of the other columns; columns of " +
                 names_of_columns(jobs, group.columns) + others,
             blamed.front(), blamed);
}

// `typical` measures nothing where it is zero, which symmetry makes it.
bool is_trouble(const Element& worst, double typical, double allowed, const Thresholds& limits) {
  const bool stands_out = typical > 0.0 && worst.asymmetry > limits.asymmetry_ratio * typical &&
                          worst.asymmetry > limits.asymmetry_ratio * allowed;
  return worst.excess > limits.asymmetry || stands_out;
}

void add_figures(const Columns& columns, const Element& worst, int n3, Report& report) {
  report.figure("largest |h(i,j) - h(j,i)| (Hartree/Bohr**2)", worst.asymmetry);
  report.figure("what print rounding allows there (Hartree/Bohr**2)",
                columns.allowed(worst.i, worst.j));
  std::vector<double> largest(static_cast<std::size_t>(n3), not_known);
  for (const int i : columns.active()) {
    for (const int j : columns.active()) {
      double& value = largest[static_cast<std::size_t>(i - 1)];
      value = std::fmax(value, columns.asymmetry(i, j));
    }
  }
  std::vector<double> ranked(columns.active().begin(), columns.active().end());
  std::stable_sort(ranked.begin(), ranked.end(), [&](double i, double j) {
    return largest[static_cast<std::size_t>(i) - 1] > largest[static_cast<std::size_t>(j) - 1];
  });
  report.figure("largest of each coordinate (Hartree/Bohr**2)", std::move(largest));
  report.figure("coordinates by it, the largest first", std::move(ranked));
}

}  // namespace

void check_asymmetry(const JobData& jobs, const Thresholds& limits, Report& report) {
  const RawForceConstants& raw = jobs.context.raw;
  Columns columns(raw);
  const int missing = jobs.run.n3 - static_cast<int>(raw.columns.size());
  if (missing > 0) report.note({zandor::job_list_name}, missing_columns(missing));
  if (raw.columns.size() < 2) return;
  const std::vector<Group> groups = group_jobs(jobs, raw);
  const std::vector<int> marked = jobs_with_net_force(jobs, limits);
  add_figures(columns, worst_element(columns, raw.columns), jobs.run.n3, report);
  while (columns.active().size() >= 2) {
    const Group& group = suspect(jobs, groups, columns, marked, limits);
    const Element worst = worst_element(columns, group.columns);
    const double typical = median(columns.largest_by_column(columns.without(group.columns)));
    if (worst.i == 0 || !is_trouble(worst, typical, columns.allowed(worst.i, worst.j), limits)) {
      return;
    }
    blame(jobs, raw, group, columns, marked, worst, typical, report);
    columns.remove(group.columns);
  }
}

}  // namespace check

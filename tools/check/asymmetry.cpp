// Force constants of one energy surface are symmetric: h(i,j) from the jobs of coordinate j against
// h(j,i) from those of coordinate i.
//
// A bad job spoils a column, and with it one element of every other column. The jobs are therefore
// taken together with all columns that rest on them (a symmetry job rests on its source), and that
// group is blamed without which least asymmetry is left. Without it the search goes on.
#include <algorithm>
#include <cmath>
#include <initializer_list>
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

// The groups that may be to blame, the likeliest first.
using Suspects = std::vector<std::size_t>;

// The group without which least is left. Of those that leave nearly as little, one with a net force
// (marked: the jobs that have one); then one whose two jobs differ much more from the reference
// than steps in opposite directions do, else the smallest. Where nothing but size decides, the
// others without which hardly anything is left are suspects, too.
Suspects find_suspects(const JobData& jobs, const std::vector<Group>& groups,
                       const Columns& columns, const std::vector<int>& marked,
                       const Thresholds& limits) {
  constexpr double nearly = 1.5;
  constexpr double much_more = 4.0;
  constexpr double hardly = 0.02;  // of the sum of all squares
  const std::vector<double> rests = rests_without(groups, columns);
  const double least = *std::min_element(rests.begin(), rests.end());
  Suspects alike;
  for (std::size_t k = 0; k < groups.size(); ++k) {
    if (rests[k] <= nearly * least + limits.asymmetry * limits.asymmetry) alike.push_back(k);
  }
  const std::size_t before = alike.size();
  alike = with_net_force(groups, alike, marked);
  Suspects found = {alike.front()};
  double best_even = std::max(even_part(jobs, groups[found[0]]), 0.0);
  bool by_size = alike.size() == before;
  for (const std::size_t k : alike) {
    const double even = even_part(jobs, groups[k]);
    const bool smaller = groups[k].columns.size() < groups[found[0]].columns.size();
    if (even > much_more * best_even || (smaller && best_even <= much_more * even)) {
      by_size = by_size && even <= much_more * best_even;
      found[0] = k;
      best_even = std::max(even, 0.0);
    }
  }
  const std::vector<double> squares = columns.squares();
  const double total = std::accumulate(squares.begin(), squares.end(), 0.0);
  for (const std::size_t k : alike) {
    if (by_size && k != found[0] && rests[k] < hardly * total) found.push_back(k);
  }
  return found;
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

// The jobs of a group that are to blame: those with a net force, or the one that stands out.
std::vector<int> jobs_to_blame(const JobData& jobs, const Group& group,
                               const std::vector<int>& marked, const std::vector<int>& others) {
  std::vector<int> blamed = common_jobs(group.jobs, marked);
  if (blamed.empty()) blamed = group.jobs;
  return blamed.size() > 1 ? single_out(jobs, jobs.context.raw, blamed, others) : blamed;
}

// Of several suspects the only one of which one job stands out: in the columns of none of them, or
// else in those of the others. All, the likeliest first, where it is not the only one.
Suspects narrow_down(const JobData& jobs, const std::vector<Group>& groups,
                     const Suspects& suspects, const Columns& columns) {
  if (suspects.size() < 2) return suspects;
  Columns rest = columns;
  for (const std::size_t k : suspects) rest.remove(groups[k].columns);
  for (const Columns* const compared : std::initializer_list<const Columns*>{&rest, &columns}) {
    Suspects standing;
    for (const std::size_t k : suspects) {
      const Group& group = groups[k];
      const std::vector<int> others = compared->without(group.columns);
      if (group.jobs.size() > 1 && jobs_to_blame(jobs, group, {}, others).size() == 1) {
        standing.push_back(k);
      }
    }
    if (standing.size() == 1) return standing;
  }
  return suspects;
}

std::string joined_names(const JobData& jobs, const std::vector<int>& of, std::size_t first) {
  std::string names;
  for (std::size_t k = first; k < of.size(); ++k) {
    names += (k > first ? ", " : "") + std::string(jobs.job(of[k]).sgn_name.content());
  }
  return names;
}

void blame(const JobData& jobs, const std::vector<Group>& groups, const Suspects& suspects,
           const Columns& columns, const std::vector<int>& marked, const Element& worst,
           double typical, Report& report) {
  const Group& group = groups[suspects.front()];
  std::vector<int> blamed = jobs_to_blame(jobs, group, marked, columns.without(group.columns));
  const int first = blamed.front();
  std::string text = "the forces do not fit those of the other jobs: h(i,j) - h(j,i) is " +
                     rounded(worst.asymmetry) + " Hartree/Bohr**2 for " +
                     coordinate_text(jobs, worst.i) + " and " + coordinate_text(jobs, worst.j) +
                     ", " + rounded(typical) + " in the median of the other columns; columns of " +
                     names_of_columns(jobs, group.columns);
  if (blamed.size() > 1) text += "; this job or " + joined_names(jobs, blamed, 1);
  for (std::size_t k = 1; k < suspects.size(); ++k) {
    const Group& other = groups[suspects[k]];
    const std::vector<int> more =
        jobs_to_blame(jobs, other, marked, columns.without(other.columns));
    text += "; nearly as much is explained by " + joined_names(jobs, more, 0);
    blamed.insert(blamed.end(), more.begin(), more.end());
  }
  report.add(Severity::warning, forces_place(jobs, first), std::move(text), first,
             std::move(blamed), worst.asymmetry);
}

// `typical` measures nothing where it is zero, which symmetry makes it, or where columns are
// missing that may be the ones with which the worst is to be compared.
bool is_trouble(const Element& worst, double typical, double allowed, const Thresholds& limits) {
  const bool stands_out = typical > 0.0 && worst.asymmetry > limits.asymmetry_ratio * typical &&
                          worst.asymmetry > limits.asymmetry_ratio * allowed;
  return worst.excess > limits.asymmetry || stands_out;
}

// Jobs that are all a little off differ much in how far: the furthest of 21 columns by 75 times the
// median net force.
Thresholds limits_for(const JobData& jobs, bool all_columns, Thresholds limits) {
  constexpr double spread = 100.0;
  const CommonCause& cause = jobs.context.common_cause;
  const bool loose = cause.is(CommonCause::Kind::loose);
  if (loose) limits.asymmetry = std::max(limits.asymmetry, spread * cause.net_force);
  if (loose || !all_columns) limits.asymmetry_ratio = std::numeric_limits<double>::infinity();
  return limits;
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

void check_asymmetry(const JobData& jobs, const Thresholds& all_limits, Report& report) {
  const RawForceConstants& raw = jobs.context.raw;
  Columns columns(raw);
  const int missing = jobs.run.n3 - static_cast<int>(raw.columns.size());
  if (missing > 0) {
    report.note({zandor::job_list_name},
                missing_columns(missing) + "; the others are not held against their median");
  }
  if (raw.columns.size() < 2) return;
  add_figures(columns, worst_element(columns, raw.columns), jobs.run.n3, report);
  if (jobs.context.common_cause.forbids_comparison()) return;
  const Thresholds limits = limits_for(jobs, missing == 0, all_limits);
  const std::vector<Group> groups = group_jobs(jobs, raw);
  const std::vector<int> marked = jobs_with_net_force(jobs, limits);
  while (columns.active().size() >= 2) {
    const Suspects suspects =
        narrow_down(jobs, groups, find_suspects(jobs, groups, columns, marked, limits), columns);
    const Group& group = groups[suspects.front()];
    const Element worst = worst_element(columns, group.columns);
    const double typical = median(columns.largest_by_column(columns.without(group.columns)));
    if (worst.i == 0 || !is_trouble(worst, typical, columns.allowed(worst.i, worst.j), limits)) {
      return;
    }
    blame(jobs, groups, suspects, columns, marked, worst, typical, report);
    for (const std::size_t k : suspects) columns.remove(groups[k].columns);
  }
}

}  // namespace check

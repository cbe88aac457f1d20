// Force constants of one energy surface are symmetric: h(i,j) from the jobs of coordinate j against
// h(j,i) from those of coordinate i.
//
// A bad job spoils a column, and with it one element of every other column. The jobs are therefore
// taken together with all columns that rest on them (a symmetry job rests on its source), and that
// group is blamed without which least asymmetry is left. Without it the search goes on. Columns
// count from 0.
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>

#include "analysis/median.hpp"
#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

using Columns = std::vector<int>;  // ascending

// Computed jobs on which the same columns rest.
struct Group {
  std::vector<int> jobs;
  Columns columns;
};

std::vector<Group> group_jobs(const JobData& jobs) {
  std::map<int, Columns> columns_of;
  for (const int k : jobs.context.raw.columns) {
    for (const int job : {2 * k + 1, 2 * k + 2}) {
      Columns& columns = columns_of[jobs.source(job)];
      if (columns.empty() || columns.back() != k) columns.push_back(k);
    }
  }
  std::map<Columns, std::vector<int>> jobs_of;
  for (const auto& [job, columns] : columns_of) jobs_of[columns].push_back(job);
  std::vector<Group> groups;
  for (const auto& [columns, sources] : jobs_of) groups.push_back({sources, columns});
  return groups;
}

Columns difference(const Columns& all, const Columns& columns) {
  Columns rest;
  std::set_difference(all.begin(), all.end(), columns.begin(), columns.end(),
                      std::back_inserter(rest));
  return rest;
}

std::vector<int> common(const std::vector<int>& a, const std::vector<int>& b) {
  std::vector<int> both;
  std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
  return both;
}

// What the search has to look at.
struct Search {
  const JobData& jobs;
  std::vector<Group> groups;
  std::vector<int> marked;  // jobs with a net force of their own
  Thresholds limits;
  Columns columns;            // those still in the game
  Eigen::MatrixXd asymmetry;  // n3 x n3: |h(i,j) - h(j,i)| among them, else 0

  Columns without(const Group& group) const { return difference(columns, group.columns); }
  void remove(const Group& group) {
    columns = without(group);
    for (const int k : group.columns) {
      asymmetry.row(k).setZero();
      asymmetry.col(k).setZero();
    }
    std::erase_if(groups, [&](const Group& g) { return common(g.columns, columns).empty(); });
  }
  // What print rounding allows.
  double allowed(int i, int j) const {
    return jobs.context.raw.rounding(i) + jobs.context.raw.rounding(j);
  }
};

struct Element {
  int i = -1, j = -1;
  double asymmetry = 0.0;
  double excess = 0.0;  // above what print rounding allows
};

// The largest element, above rounding, of the given columns with any that is in the game.
Element worst_element(const Search& search, const Columns& of) {
  Element worst;
  for (const int i : common(of, search.columns)) {
    for (const int j : search.columns) {
      const double excess = search.asymmetry(i, j) - search.allowed(i, j);
      if (worst.i < 0 || excess > worst.excess) worst = {i, j, search.asymmetry(i, j), excess};
    }
  }
  return worst;
}

// A group that may be to blame.
struct Suspect {
  Group group;
  double rest = 0.0;  // the sum of the squares of all asymmetries that is left without it
};
using Suspects = std::vector<Suspect>;

Suspects suspects_among(const Search& search) {
  const Eigen::MatrixXd squares = search.asymmetry.cwiseAbs2();
  const Eigen::VectorXd sums = squares.colwise().sum();
  Suspects all;
  for (const Group& group : search.groups) {
    const Columns& columns = group.columns;
    const double share = 2.0 * sums(columns).sum() - squares(columns, columns).sum();
    all.push_back({group, std::max(sums.sum() - share, 0.0)});
  }
  return all;
}

// The likeliest first: the group without which least is left. Of those that leave nearly as little,
// one with a net force; else the smallest, and where nothing but size decides, the others are
// suspects, too.
Suspects find_suspects(const Search& search) {
  // With 1, noise of a second bad job makes a sound one look worst; with 4, a sound one leaves as
  // little beside a second bad one.
  constexpr double nearly = 1.5;
  Suspects alike = suspects_among(search);
  const auto least = std::ranges::min_element(
      alike, [](const Suspect& a, const Suspect& b) { return a.rest < b.rest; });
  const double most = nearly * least->rest + search.limits.asymmetry * search.limits.asymmetry;
  std::erase_if(alike, [&](const Suspect& suspect) { return suspect.rest > most; });
  const auto has_net_force = [&](const Suspect& suspect) {
    return !common(suspect.group.jobs, search.marked).empty();
  };
  const auto marked = std::ranges::count_if(alike, has_net_force);
  const bool by_size = marked == 0 || marked == std::ssize(alike);
  if (marked > 0) std::erase_if(alike, std::not_fn(has_net_force));
  std::ranges::stable_sort(alike, [](const Suspect& a, const Suspect& b) {
    return a.group.columns.size() < b.group.columns.size();
  });
  if (!by_size) alike.erase(alike.begin() + 1, alike.end());
  return alike;
}

// The jobs of a group that are to blame: those with a net force, or the one that stands out.
std::vector<int> jobs_to_blame(const Search& search, const Group& group, const Columns& others) {
  const std::vector<int> blamed = common(group.jobs, search.marked);
  return single_out(search.jobs, blamed.empty() ? group.jobs : blamed, others);
}

// Keeps the suspect of which one job stands out, if it is the only one: in the columns of no
// suspect, or else in those of the other suspects, too.
Suspects narrow_down(const Search& search, const Suspects& suspects) {
  if (suspects.size() < 2) return suspects;
  Columns rest = search.columns;
  for (const Suspect& suspect : suspects) rest = difference(rest, suspect.group.columns);
  for (const Columns& compared : {rest, search.columns}) {
    Suspects standing = suspects;
    std::erase_if(standing, [&](const Suspect& suspect) {
      const auto& [jobs, columns] = suspect.group;
      return jobs.size() < 2 ||
             single_out(search.jobs, jobs, difference(compared, columns)).size() > 1;
    });
    if (standing.size() == 1) return standing;
  }
  return suspects;
}

std::string names_of_columns(const JobData& jobs, const Columns& columns) {
  constexpr std::size_t most = 4;  // in one line
  std::string names;
  for (std::size_t k = 0; k < std::min(columns.size(), most); ++k) {
    names += (k > 0 ? ", " : "") + coordinate_text(jobs, columns[k] + 1);
  }
  return names + (columns.size() > most ? ", ..." : "");
}

void blame(const Search& search, const Suspects& suspects, const Element& worst, double typical,
           Findings& findings) {
  const JobData& jobs = search.jobs;
  const Group& group = suspects.front().group;
  std::vector<int> blamed = jobs_to_blame(search, group, search.without(group));
  const int first = blamed.front();
  std::string text = io::joined(
      "the forces do not fit those of the other jobs: h(i,j) - h(j,i) is ",
      rounded(worst.asymmetry), " Hartree/Bohr**2 for ", coordinate_text(jobs, worst.i + 1),
      " and ", coordinate_text(jobs, worst.j + 1), ", ", rounded(typical),
      " in the median of the other columns; columns of ", names_of_columns(jobs, group.columns));
  if (blamed.size() > 1) {
    text += "; this job or " + analysis::job_names(jobs.run, {blamed.begin() + 1, blamed.end()});
  }
  for (std::size_t k = 1; k < suspects.size(); ++k) {
    const Group& other = suspects[k].group;
    const std::vector<int> more = jobs_to_blame(search, other, search.without(other));
    text += "; nearly as much is explained by " + analysis::job_names(jobs.run, more);
    blamed.insert(blamed.end(), more.begin(), more.end());
  }
  findings.warn(forces_place(jobs, first), {first, std::move(blamed), worst.asymmetry}, text);
}

// `typical` measures nothing where it is zero, which symmetry makes it, or where columns are
// missing that may be the ones with which the worst is to be compared.
bool is_trouble(const Search& search, const Element& worst, double typical) {
  const double times = search.limits.asymmetry_ratio;
  return worst.excess > search.limits.asymmetry ||
         (typical > 0.0 && worst.asymmetry > times * typical &&
          worst.asymmetry > times * search.allowed(worst.i, worst.j));
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

void add_figures(const Search& search, Findings& findings) {
  const Element worst = worst_element(search, search.columns);
  findings.figure("largest |h(i,j) - h(j,i)| (Hartree/Bohr**2)", worst.asymmetry);
  findings.figure("what print rounding allows there (Hartree/Bohr**2)",
                  search.allowed(worst.i, worst.j));
  Eigen::VectorXd largest = Eigen::VectorXd::Constant(search.jobs.run.n3, not_known);
  for (const int k : search.columns) largest(k) = search.asymmetry.col(k).maxCoeff();
  Columns ranked = search.columns;
  std::ranges::stable_sort(ranked, [&](int i, int j) { return largest(i) > largest(j); });
  findings.figure("largest of each coordinate (Hartree/Bohr**2)", largest);
  findings.figure(
      "coordinates by it, the largest first",
      Eigen::Map<Eigen::VectorXi>(ranked.data(), std::ssize(ranked)).array().cast<double>() + 1.0);
}

}  // namespace

void check_asymmetry(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const RawForceConstants& raw = jobs.context.raw;
  const bool all_columns = std::ssize(raw.columns) == jobs.run.n3;
  if (!all_columns) {
    findings.note(whole_list, missing_columns(jobs),
                  "; the others are not held against their median");
  }
  if (raw.columns.size() < 2) return;
  Search search{.jobs = jobs,
                .groups = group_jobs(jobs),
                .marked = jobs_with_net_force(jobs, limits),
                .limits = limits_for(jobs, all_columns, limits),
                .columns = raw.columns,
                .asymmetry = raw.asymmetry()};
  add_figures(search, findings);
  if (jobs.context.common_cause.forbids_comparison()) return;
  while (search.columns.size() >= 2) {
    const Suspects suspects = narrow_down(search, find_suspects(search));
    const Element worst = worst_element(search, suspects.front().group.columns);
    std::vector<double> others;
    const Columns rest = search.without(suspects.front().group);
    for (const int k : rest) others.push_back(search.asymmetry(rest, k).maxCoeff());
    const double typical = analysis::median(std::move(others));
    if (worst.i < 0 || !is_trouble(search, worst, typical)) return;
    blame(search, suspects, worst, typical, findings);
    for (const Suspect& suspect : suspects) search.remove(suspect.group);
  }
}

}  // namespace check

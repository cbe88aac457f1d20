// The keyword headers of the displaced jobs against that of the reference.
#include <algorithm>
#include <cmath>

#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

constexpr std::size_t maxloc = SignHeader::size_count;
constexpr std::size_t maxval = maxloc + 1;

// A value of the header, in the spelling of messages; empty where it is not there.
std::string value_text(const SignHeader& header, std::size_t k) {
  if (k < maxloc) return header.sizes[k] ? std::to_string(*header.sizes[k]) : "";
  if (k == maxval) return header.tden_maxval ? io::shown(*header.tden_maxval) : "";
  if (!header.tden_maxloc) return {};
  return std::to_string((*header.tden_maxloc)[0]) + " " + std::to_string((*header.tden_maxloc)[1]);
}

// Largest elements within this part of each other belong to the same state: so in 42 of 42 jobs
// whose element had gone over to an equivalent orbital; those of two states agree in 3 % of cases.
constexpr double same_state = 0.02;

// A value that differs from the reference's.
struct Difference {
  int job = 0;
  std::string found;
  std::string meaning;
};

// One value in all jobs that have it.
struct Comparison {
  std::size_t place = 0;  // in SignHeader::names
  int compared = 0;
  std::vector<Difference> different;
  std::vector<int> harmless;  // jobs whose difference means nothing

  // All jobs differ from the reference, and in the same way.
  bool all_alike() const {
    return compared > 1 && static_cast<int>(different.size()) == compared &&
           std::all_of(different.begin(), different.end(), [&](const Difference& d) {
             return place == maxval ? d.meaning == different.front().meaning
                                    : d.found == different.front().found;
           });
  }
};

// By what part of it the largest element has changed its size against the reference's; not_known
// where that cannot be told.
double change_of_size(const SignHeader& header, const SignHeader& reference) {
  if (!header.tden_maxval || !reference.tden_maxval || *reference.tden_maxval == 0.0) {
    return not_known;
  }
  return std::fabs(std::fabs(*header.tden_maxval / *reference.tden_maxval) - 1.0);
}

// What the check of the dipoles has come to.
enum class Dipoles { not_looked_at, fit, misfit };
Dipoles dipoles_of(const Report& report) {
  constexpr std::string_view name = "dipole-sum";
  for (const Finding& finding : report.findings) {
    if (finding.check == name && finding.severity != Severity::note) return Dipoles::misfit;
  }
  for (const Figure& figure : report.figures) {
    if (figure.check == name) {
      return std::isnan(figure.values.front()) ? Dipoles::not_looked_at : Dipoles::fit;
    }
  }
  return Dipoles::not_looked_at;
}

// The largest element: its place, and at the same place its value.
void compare_element(const SignHeader& header, const SignHeader& reference, int job, double limit,
                     const Report& report, Comparison& comparison) {
  const double change = change_of_size(header, reference);
  const std::string found = value_text(header, comparison.place);
  const bool is_moved =
      header.tden_maxloc && reference.tden_maxloc && *header.tden_maxloc != *reference.tden_maxloc;
  if (comparison.place == maxloc) {
    if (!is_moved) return;
    if (change <= same_state && !report.blames(job)) {
      comparison.harmless.push_back(job);
    } else {
      comparison.different.push_back({job, found, "another state, or orbitals in another order"});
    }
  } else if (!is_moved && change > limit) {
    comparison.different.push_back({job, found, "the state has changed"});
  } else if (!is_moved && *header.tden_maxval * *reference.tden_maxval < 0.0) {
    const Dipoles dipoles = dipoles_of(report);
    if (dipoles == Dipoles::fit) {
      comparison.harmless.push_back(job);
      return;
    }
    comparison.different.push_back(
        {job, found,
         dipoles == Dipoles::misfit
             ? "the sign of the state has turned; the dipoles do not fit as they stand, so turn "
               "that of this job"
             : "the sign of the state has turned"});
  }
}

void compare(const SignHeader& header, const SignHeader& reference, int job, double limit,
             const Report& report, Comparison& comparison) {
  const std::string found = value_text(header, comparison.place);
  const std::string expected = value_text(reference, comparison.place);
  if (found.empty() || expected.empty()) return;
  ++comparison.compared;
  if (comparison.place >= maxloc) {
    compare_element(header, reference, job, limit, report, comparison);
  } else if (found != expected) {
    comparison.different.push_back({job, found, "the job ran with other settings"});
  }
}

void note_harmless(const JobData& jobs, const Comparison& comparison, Report& report) {
  if (comparison.harmless.empty()) return;
  const int first = comparison.harmless.front();
  const std::string which = counted(static_cast<long long>(comparison.harmless.size()), "job") +
                            " (" + analysis::job_names(jobs.run, comparison.harmless) + ")";
  report.note(
      {jobs.job(first).sgn_name.content(), jobs.sign_file(first).header.lines[comparison.place]},
      comparison.place == maxloc ? "tden_maxloc is not the reference's in " + which +
                                       ", but tden_maxval is: equivalent orbitals"
                                 : "tden_maxval has not the sign of the reference's in " + which +
                                       ", but the dipoles fit as they stand");
}

void report_value(const JobData& jobs, const Comparison& comparison, Report& report) {
  note_harmless(jobs, comparison, report);
  const std::size_t k = comparison.place;
  const std::string name = SignHeader::names[k];
  const SignHeader& reference = jobs.sign_file(0).header;
  const auto rerun = [&](int i) { return k < maxloc ? std::vector<int>{i} : std::vector<int>{}; };
  if (comparison.all_alike()) {
    const Difference& first = comparison.different.front();
    report.add(
        Severity::warning, {jobs.job(0).sgn_name.content(), reference.lines[k]},
        name + " is " + value_text(reference, k) + ", in all displaced sign files " +
            (k == maxval ? "other than that (" + first.found + " in the first)" : first.found) +
            ": in the reference " + first.meaning,
        0, rerun(0));
    return;
  }
  for (const Difference& d : comparison.different) {
    report.add(Severity::warning,
               {jobs.job(d.job).sgn_name.content(), jobs.sign_file(d.job).header.lines[k]},
               name + " is " + d.found + ", in the reference " + value_text(reference, k) + ": " +
                   d.meaning,
               d.job, rerun(d.job));
  }
}

bool has_any(const SignHeader& header) {
  return std::any_of(header.lines.begin(), header.lines.end(), [](long long l) { return l > 0; });
}

}  // namespace

void check_header(const JobData& jobs, const Thresholds& limits, Report& report) {
  const SignHeader& reference = jobs.sign_file(0).header;
  std::array<Comparison, SignHeader::names.size()> comparisons;
  for (std::size_t k = 0; k < comparisons.size(); ++k) comparisons[k].place = k;
  std::vector<int> without;
  double largest = not_known;
  for (const int i : jobs.computed) {
    if (jobs.reading(i).failed) continue;
    const SignHeader& header = jobs.sign_file(i).header;
    if (!has_any(header)) without.push_back(i);
    for (Comparison& comparison : comparisons) {
      compare(header, reference, i, limits.header_change, report, comparison);
    }
    if (header.tden_maxloc == reference.tden_maxloc) {
      largest = std::fmax(largest, change_of_size(header, reference));
    }
  }
  for (const Comparison& comparison : comparisons) report_value(jobs, comparison, report);
  report.figure("largest relative change of tden_maxval (1)", largest);
  if (!has_any(reference)) {
    report.note(place_of(jobs, 0), "not looked at: the reference's sign file holds no header");
  } else if (!without.empty()) {
    report.note(
        {zandor::job_list_name},
        "not looked at: " + counted(static_cast<long long>(without.size()), "displaced sign file") +
            " without a header (" + analysis::job_names(jobs.run, without) + ")");
  }
}

}  // namespace check

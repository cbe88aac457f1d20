// The keyword headers of the displaced jobs against that of the reference.
#include <algorithm>
#include <cmath>
#include <optional>

#include "analysis/prepared_dipoles.hpp"
#include "check/checks.hpp"

namespace check {

namespace {

constexpr std::size_t maxloc = SignHeader::size_count;
constexpr std::size_t maxval = maxloc + 1;

// Largest elements within this part of each other belong to the same state: so in 42 of 42 jobs
// whose element had gone over to an equivalent orbital; those of two states agree in 3 % of cases.
constexpr double same_state = 0.02;

// Value k of a header, in the spelling of messages; empty where it is not there.
std::string value_text(const SignHeader& header, std::size_t k) {
  if (k < maxloc) return header.sizes[k] ? io::joined(*header.sizes[k]) : "";
  if (k == maxval) return header.tden_maxval ? io::joined(*header.tden_maxval) : "";
  const auto& place = header.tden_maxloc;
  return place ? io::joined((*place)[0], " ", (*place)[1]) : "";
}

// By what part of it the largest element has changed its size against the reference's; not_known
// where that cannot be told.
double change_of_size(const SignHeader& header, const SignHeader& reference) {
  if (!header.tden_maxval || !reference.tden_maxval || *reference.tden_maxval == 0.0) {
    return not_known;
  }
  return std::fabs(std::fabs(*header.tden_maxval / *reference.tden_maxval) - 1.0);
}

// What a check before this one says of the dipoles with their signs as they are, if it has looked.
std::optional<bool> dipoles_fit(const Findings& findings) {
  constexpr std::string_view name = "dipole-sum";
  if (std::ranges::any_of(findings.list, [&](const Finding& finding) {
        return finding.check == name && finding.severity != Severity::note;
      })) {
    return false;
  }
  return std::isnan(findings.headline(name)) ? std::nullopt : std::optional(true);
}

// What it means that value k of a job is not the reference's.
struct Meaning {
  std::string text;  // empty where it is the same or belongs to another value's difference
  bool harmless = false;
};

Meaning meaning_of(const JobData& jobs, int job, std::size_t k, double limit,
                   const Findings& findings) {
  const SignHeader& header = jobs.sign_file(job).header;
  const SignHeader& reference = jobs.sign_file(0).header;
  if (k < maxloc)
    return {header.sizes[k] == reference.sizes[k] ? "" : "the job ran with other settings"};
  const bool is_moved =
      header.tden_maxloc && reference.tden_maxloc && *header.tden_maxloc != *reference.tden_maxloc;
  const double change = change_of_size(header, reference);
  if (k == maxloc) {
    if (!is_moved) return {};
    return {"another state, or orbitals in another order",
            change <= same_state && !findings.blames(job)};
  }
  if (is_moved) return {};
  if (change > limit) return {"the state has changed"};
  if (*header.tden_maxval * *reference.tden_maxval >= 0.0) return {};
  const std::string turned = "the sign of the state has turned";
  const std::optional<bool> fit = dipoles_fit(findings);
  if (fit.value_or(true)) return {turned, fit.has_value()};
  return {turned + "; the dipoles do not fit as they stand, so turn that of this job"};
}

io::Place header_line(const JobData& jobs, int i, std::size_t k) {
  return sign_line(jobs, i, jobs.sign_file(i).header.lines[k]);
}

void note_harmless(const JobData& jobs, const std::vector<int>& harmless, std::size_t k,
                   Findings& findings) {
  if (harmless.empty()) return;
  const bool is_place = k == maxloc;
  findings.note(header_line(jobs, harmless.front(), k),
                is_place ? "tden_maxloc is not the reference's in "
                         : "tden_maxval has not the sign of the reference's in ",
                counted(std::ssize(harmless), "job"), " (", analysis::job_names(jobs.run, harmless),
                is_place ? "), but tden_maxval is: equivalent orbitals"
                         : "), but the dipoles fit as they stand");
}

// Value k in all jobs that have it.
void compare_value(const JobData& jobs, std::size_t k, double limit, Findings& findings) {
  const auto text_of = [&](int i) { return value_text(jobs.sign_file(i).header, k); };
  const std::string expected = text_of(0);
  if (expected.empty()) return;
  int compared = 0;
  std::vector<int> harmless;
  std::vector<std::pair<int, std::string>> different;  // job, and what it means
  for (const int i : jobs.read) {
    if (text_of(i).empty()) continue;
    ++compared;
    const Meaning meaning = meaning_of(jobs, i, k, limit, findings);
    if (meaning.harmless) {
      harmless.push_back(i);
    } else if (!meaning.text.empty()) {
      different.emplace_back(i, meaning.text);
    }
  }
  note_harmless(jobs, harmless, k, findings);
  const bool all_alike = compared > 1 && std::ssize(different) == compared &&
                         std::ranges::all_of(different, [&](const auto& d) {
                           return k == maxval ? d.second == different[0].second
                                              : text_of(d.first) == text_of(different[0].first);
                         });
  const auto warn = [&](int i, const auto&... parts) {
    findings.warn(header_line(jobs, i, k), {i, k < maxloc ? std::vector{i} : std::vector<int>{}},
                  SignHeader::names[k], " is ", parts...);
  };
  if (all_alike) {
    const std::string first = text_of(different[0].first);
    warn(0, expected, ", in all displaced sign files ",
         k == maxval ? "other than that (" + first + " in the first)" : first,
         ": in the reference ", different[0].second);
    return;
  }
  for (const auto& [i, meaning] : different) {
    warn(i, text_of(i), ", in the reference ", expected, ": ", meaning);
  }
}

bool has_any(const SignHeader& header) {
  return std::ranges::any_of(header.lines, [](long long l) { return l > 0; });
}

}  // namespace

void check_header(const JobData& jobs, const Thresholds& limits, Findings& findings) {
  const SignHeader& reference = jobs.sign_file(0).header;
  std::vector<int> without;
  double largest = not_known;
  for (const int i : jobs.read) {
    const SignHeader& header = jobs.sign_file(i).header;
    if (!has_any(header)) without.push_back(i);
    if (header.tden_maxloc == reference.tden_maxloc) {
      largest = std::fmax(largest, change_of_size(header, reference));
    }
  }
  for (std::size_t k = 0; k < SignHeader::names.size(); ++k) {
    compare_value(jobs, k, limits.header_change, findings);
  }
  findings.figure("largest relative change of tden_maxval (1)", largest);
  if (!has_any(reference)) {
    findings.note(place_of(jobs, 0), "not looked at: the reference's sign file holds no header");
  } else if (!without.empty()) {
    findings.note(whole_list,
                  "not looked at: ", counted(std::ssize(without), "displaced sign file"),
                  " without a header (", analysis::job_names(jobs.run, without), ")");
  }
}

}  // namespace check

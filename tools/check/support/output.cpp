#include "check/support/output.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "options/array_indices.hpp"

namespace check {

namespace {

using Json = nlohmann::ordered_json;

long long count_of(const Findings& findings, Severity severity) {
  return std::ranges::count_if(findings.list,
                               [&](const Finding& f) { return f.severity == severity; });
}

std::ptrdiff_t jobs_read(const JobData& jobs) {
  return std::ssize(jobs.read) + (jobs.reading(0).faults.empty() ? 1 : 0);
}

std::string shown_or_unknown(double value, const char* unit) {
  return std::isnan(value) ? "not known" : io::joined(rounded(value), " ", unit);
}

std::set<int> jobs_to_rerun(const Findings& findings) {
  std::set<int> rerun;
  for (const Finding& finding : findings.list) {
    if (finding.severity == Severity::note) continue;
    rerun.insert(finding.rerun.begin(), finding.rerun.end());
  }
  return rerun;
}

// The base names of the jobs to run again, in job order. Jobs that share a file are named once.
std::vector<std::string> names_to_rerun(const JobData& jobs, const Findings& findings) {
  std::vector<std::string> names;
  for (const int job : jobs_to_rerun(findings)) {
    std::string name = base_name(jobs.job(job));
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  return names;
}

// The findings in their order; of three and more that are alike, of several jobs, the first speaks
// for all.
std::vector<Finding> summed_up(const JobData& jobs, const Findings& findings) {
  constexpr std::size_t few = 2, most_names = 10;
  std::map<std::string, std::vector<const Finding*>> alike;
  for (const Finding& finding : findings.list) {
    if (finding.job >= 0) alike[words_of(finding)].push_back(&finding);
  }
  std::vector<Finding> shown;
  for (const Finding& finding : findings.list) {
    const auto group = finding.job >= 0 ? alike[words_of(finding)] : std::vector{&finding};
    if (group.size() > few && group.front() != &finding) continue;
    Finding& sum = shown.emplace_back(finding);
    if (group.size() <= few) continue;
    for (const Finding* other : group) sum.figure = std::fmax(sum.figure, other->figure);
    sum.text += io::joined("; ", group.size(), " jobs alike");
    if (!std::isnan(sum.figure)) sum.text += ", " + rounded(sum.figure) + " at the worst";
    for (std::size_t k = 0; k < std::min(group.size(), most_names); ++k) {
      sum.text += (k == 0 ? ": " : ", ") + base_name(jobs.job(group[k]->job));
    }
    if (group.size() > most_names) sum.text += ", ...";
  }
  return shown;
}

Json finding_record(const JobData& jobs, const Finding& finding) {
  Json record = {
      {"severity", name_of(finding.severity)}, {"check", finding.check}, {"file", finding.file}};
  if (finding.line > 0) record["line"] = finding.line;
  record["text"] = finding.text;
  if (finding.job >= 0) {
    record["job"] = finding.job;
    record["name"] = base_name(jobs.job(finding.job));
  }
  record["rerun"] = Json::array();
  for (const int job : finding.rerun) record["rerun"].push_back(base_name(jobs.job(job)));
  return record;
}

Json summary_record(const JobData& jobs, const Findings& findings) {
  return {{"jobs_read", jobs_read(jobs)},
          {"errors", count_of(findings, Severity::error)},
          {"warnings", count_of(findings, Severity::warning)},
          {"notes", count_of(findings, Severity::note)},
          {"worst_asymmetry", findings.headline("asymmetry")},
          {"sum_rule_residual", findings.headline("dipole-sum")}};
}

}  // namespace

int exit_status(const Findings& findings) {
  return count_of(findings, Severity::note) < std::ssize(findings.list) ? 1 : 0;
}

void print_text(const JobData& jobs, const Findings& findings) {
  for (const Finding& finding : summed_up(jobs, findings)) io::print_line(line_of(finding));
  io::print_line(
      io::joined(counted(jobs_read(jobs), "job"), " read, ",
                 counted(count_of(findings, Severity::error), "error"), ", ",
                 counted(count_of(findings, Severity::warning), "warning"), "; worst asymmetry ",
                 shown_or_unknown(findings.headline("asymmetry"), "Hartree/Bohr**2"),
                 ", sum-rule residual ", shown_or_unknown(findings.headline("dipole-sum"), "au")));
}

void print_list(const JobData& jobs, const Findings& findings) {
  for (const std::string& name : names_to_rerun(jobs, findings)) io::print_line(name);
}

void print_numbers(const Findings& findings) {
  options::print_array_indices(jobs_to_rerun(findings));
}

void print_json(const std::string& control_file, const JobData& jobs, const Thresholds& limits,
                const Findings& findings) {
  // The library ends the process when memory ends while it holds a value: that there is enough for
  // all of them and their text is found out before.
  constexpr std::size_t at_least = 1 << 20, of_finding = 4000, of_job = 400;  // bytes
  ::operator delete(
      ::operator new(at_least + of_finding * findings.list.size() + of_job * jobs.run.jobs.size()));
  Json list = Json::array(), figures = list, thresholds = list;
  for (const Finding& finding : findings.list) list.push_back(finding_record(jobs, finding));
  for (const Figure& figure : findings.figures) {
    figures.push_back({{"check", figure.check},
                       {"name", figure.name},
                       {"value", figure.is_list ? Json(figure.values) : Json(figure.values[0])}});
  }
  for (const ThresholdName& name : threshold_names) {
    thresholds.push_back({{"name", name.name}, {"value", limits.*name.value}, {"unit", name.unit}});
  }
  const Json document = {{"program", io::program_name},
                         {"control_file", control_file},
                         {"summary", summary_record(jobs, findings)},
                         {"findings", std::move(list)},
                         {"figures", std::move(figures)},
                         {"thresholds", std::move(thresholds)},
                         {"rerun", names_to_rerun(jobs, findings)}};
  io::print_line(document.dump(1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace check

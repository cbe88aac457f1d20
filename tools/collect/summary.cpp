#include "collect/summary.hpp"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "analysis/prepared_dipoles.hpp"

namespace collect {

namespace {

bool is_wanting(const CollectedJob& job) {
  return job.state == State::missing || job.state == State::bad;
}

// Jobs of this kind, as messages name them.
template <class Condition>
std::vector<int> jobs_that(const Collection& all, const Condition& holds) {
  std::vector<int> jobs;
  for (const CollectedJob& job : all.jobs) {
    if (holds(job)) jobs.push_back(job.job);
  }
  return jobs;
}

std::size_t count_of(const Collection& all, State state) {
  return jobs_that(all, [&](const CollectedJob& job) { return job.state == state; }).size();
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

struct Range {
  double least = 0.0, largest = 0.0;
  int count = 0;
};

Range energies_of(const Collection& all) {
  Range range;
  for (const CollectedJob& job : all.jobs) {
    if (job.state != State::taken || !job.output.energy) continue;
    const double energy = *job.output.energy;
    range.least = range.count == 0 ? energy : std::min(range.least, energy);
    range.largest = range.count == 0 ? energy : std::max(range.largest, energy);
    ++range.count;
  }
  return range;
}

// "NWChem 7.0.2, state 1" of all jobs that were taken.
std::string programs_of(const Collection& all) {
  std::map<std::string, int> programs;
  for (const CollectedJob& job : all.jobs) {
    if (job.state == State::taken) {
      ++programs[job.output.program + ", state " + std::to_string(job.output.root)];
    }
  }
  std::string text;
  for (const auto& [program, count] : programs) text += (text.empty() ? "" : "; ") + program;
  return text;
}

const char* name_of(State state) {
  switch (state) {
    case State::taken:
      return "taken";
    case State::kept:
      return "kept";
    case State::missing:
      return "missing";
    case State::bad:
      break;
  }
  return "bad";
}

}  // namespace

bool is_complete(const Collection& all) {
  return all.unsettled_jobs.empty() && std::none_of(all.jobs.begin(), all.jobs.end(), is_wanting);
}

std::string list_text(const Collection& all) {
  std::string text;
  for (const CollectedJob& job : all.jobs) {
    if (is_wanting(job)) text += io::printable(job.name) + "\n";
  }
  return text;
}

std::string summary_text(const Collection& all) {
  const std::size_t taken = count_of(all, State::taken), kept = count_of(all, State::kept);
  const auto jobs = [&](const std::vector<int>& list) {
    return analysis::job_names(all.run, list);
  };
  std::string text = counted(all.jobs.size(), "job") + ": " + std::to_string(taken) + " taken";
  const std::string programs = programs_of(all);
  if (!programs.empty()) text += " (" + io::printable(programs) + ")";
  if (kept > 0) text += ", " + std::to_string(kept) + " with a sign file but no output";
  text += ", " + std::to_string(count_of(all, State::missing)) + " missing, " +
          std::to_string(count_of(all, State::bad)) + " bad\n";
  const auto written = jobs_that(all, [](const CollectedJob& job) { return job.written; });
  text += counted(written.size(), "sign file") + " written\n";
  const Range energies = energies_of(all);
  if (energies.count > 0) {
    text += "energy of the state: " + io::shown(energies.least) + " to " +
            io::shown(energies.largest) + " Hartree\n";
  }
  const auto turned = jobs_that(all, [](const CollectedJob& job) { return job.turned; });
  if (!turned.empty()) text += "sign of the dipole turned: " + jobs(turned) + "\n";
  const auto axes = jobs_that(
      all, [](const CollectedJob& job) { return job.state == State::taken && job.angle > 0.0; });
  if (!axes.empty()) text += "axes turned back: " + jobs(axes) + "\n";
  return text;
}

std::vector<int> jobs_with_few_decimals(const Collection& all) {
  constexpr int enough_decimals = 8;
  return jobs_that(all, [](const CollectedJob& job) {
    return job.state == State::taken && job.output.force_decimals < enough_decimals;
  });
}

std::vector<int> jobs_with_other_files(const Collection& all) {
  return jobs_that(all, [](const CollectedJob& job) { return job.differs; });
}

std::string json_text(const Collection& all) {
  nlohmann::ordered_json document;
  document["program"] = std::string(io::program_name) + " " ZANDOR_VERSION;
  for (const State state : {State::taken, State::kept, State::missing, State::bad}) {
    document[name_of(state)] = count_of(all, state);
  }
  document["unsettled"] = all.unsettled_jobs.size();
  document["jobs"] = nlohmann::ordered_json::array();
  for (const CollectedJob& job : all.jobs) {
    nlohmann::ordered_json one;
    one["job"] = job.job;
    one["name"] = job.name;
    one["state"] = name_of(job.state);
    if (!job.file.empty()) one["output"] = job.file;
    if (job.fault) {
      one["line"] = job.fault->line;
      one["fault"] = job.fault->message;
    }
    if (job.state == State::taken) {
      one["program"] = job.output.program;
      one["root"] = job.output.root;
      if (job.output.energy) one["energy_hartree"] = *job.output.energy;
      if (job.output.oscillator_strength) {
        one["oscillator_strength"] = *job.output.oscillator_strength;
      }
      one["written"] = job.written;
      one["turned_by_degrees"] = job.angle;
      one["sign_turned"] = job.turned;
      one["sign_by"] = job.sign.by;
    }
    document["jobs"].push_back(one);
  }
  return document.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace collect

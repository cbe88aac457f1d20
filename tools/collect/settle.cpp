#include "collect/settle.hpp"

#include <algorithm>

#include "analysis/prepared_dipoles.hpp"
#include "io/process.hpp"

namespace collect {

namespace {

bool is_open(const CollectedJob& job) { return job.state == State::taken && job.sign.sign == 0; }

// The jobs that have to be turned against the reference, whichever of both was named.
std::vector<char> turned_against_reference(const zandor::RunData& run,
                                           const std::vector<int>& named) {
  std::vector<char> turned(run.jobs.size(), 0);
  for (const int job : named) turned[static_cast<std::size_t>(job)] = 1;
  if (turned[0] != 0) {
    for (char& one : turned) one = one == 0 ? 1 : 0;
  }
  return turned;
}

void apply(const analysis::PreparedDipoles& dipoles, Collection& all) {
  const std::vector<char> turned = turned_against_reference(
      all.run, dipoles.signs_turned ? dipoles.signs.jobs : std::vector<int>{});
  for (CollectedJob& job : all.jobs) {
    const bool turn = turned[static_cast<std::size_t>(job.job)] != 0;
    if (is_open(job)) {
      job.turned = job.turned != turn;
      job.sign = {job.turned ? -1 : 1, "all dipoles together"};
    } else if (turn && all.unsettled.empty()) {
      all.unsettled = "the dipoles ask for another sign of job " + job.name + " than its output (" +
                      job.sign.by + ")";
    }
  }
}

}  // namespace

void take_sign_from_marks(const Collection& all, CollectedJob& job) {
  const CollectedJob& reference = all.jobs.front();
  if (reference.state != State::taken) return;
  job.sign = job.job == 0 ? SignDecision{1, "reference"}
                          : compare_marks(job.output, reference.output, all.run.dx);
  job.turned = job.sign.sign < 0;
}

void settle_other_signs(const Choices& choices, Collection& all) {
  for (const CollectedJob& job : all.jobs) {
    if (is_open(job)) all.unsettled_jobs.push_back(job.job);
  }
  if (all.unsettled_jobs.empty()) return;
  const bool complete = std::all_of(all.jobs.begin(), all.jobs.end(), [](const auto& job) {
    return job.state == State::taken || job.state == State::kept;
  });
  if (!complete) {
    all.unsettled = "jobs are missing";
    return;
  }
  // What the phases say of the directory is for zandor_gather and zandor_check to say.
  const io::SinkScope quiet({.report = [](const io::Place&, std::string_view) {},
                             .warn = [](const io::Place&, std::string_view) {},
                             .print_line = [](std::string_view) {}});
  const auto stop = io::collect([&] {
    const zandor::RunData run = analysis::load_job_directory(choices.control_file, choices.masses);
    analysis::DipoleChoices wanted;
    wanted.settle_signs = true;
    const analysis::PreparedDipoles dipoles = analysis::prepare_dipoles(run, wanted);
    all.unsettled = dipoles.refusal;
    if (all.unsettled.empty()) apply(dipoles, all);
  });
  if (stop) all.unsettled = "the sign files cannot be read together " + stop->message;
  if (all.unsettled.empty()) all.unsettled_jobs.clear();
}

}  // namespace collect

#include "check/support/dipoles.hpp"

#include "analysis/dipoles.hpp"
#include "analysis/prepared_dipoles.hpp"

namespace check {

namespace {

std::vector<analysis::DensityElement> density_elements(const JobData& jobs) {
  std::vector<analysis::DensityElement> elements;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    elements.push_back(analysis::density_element(jobs.sign_file(i).header));
  }
  return elements;
}

analysis::ResidualLimits residual_limits(const Thresholds& limits) {
  return {limits.dipole_bounds, limits.dipole_relative, limits.dipole_noise};
}

analysis::PreparedDipoles prepared(const JobData& jobs, const Thresholds& limits, bool settle) {
  return analysis::prepare_dipoles(
      jobs.run, {{}, settle, [&jobs] { return density_elements(jobs); }, residual_limits(limits)});
}

// Dipoles as they are; where they do not fit, with the signs turned that settle_signs finds.
analysis::PreparedDipoles settle_dipoles(const JobData& jobs, const Thresholds& limits) {
  analysis::PreparedDipoles as_read = prepared(jobs, limits, false);
  if (as_read.signs.fits_as_read) return as_read;
  analysis::PreparedDipoles dipoles = prepared(jobs, limits, true);
  if (dipoles.refusal.empty()) {
    dipoles.signs.as_read = as_read.signs.as_read;
    return dipoles;
  }
  as_read.signs.refusal = dipoles.signs.refusal;
  as_read.signs.jobs.clear();
  return as_read;
}

}  // namespace

bool Dipoles::explain(const analysis::SumRuleResidual& residual) const {
  return residual_limits(limits).explain(residual);
}

Dipoles dipoles_at_hand(const JobData& jobs, const Thresholds& limits) {
  Dipoles at;
  at.of_job = analysis::job_dipoles(jobs.run);
  at.limits = limits;
  at.all = jobs.without_results() == 0;
  if (at.all) {
    const analysis::PreparedDipoles settled = settle_dipoles(jobs, limits);
    at.signs = settled.signs;
    if (settled.characters) {
      at.characters = settled.characters->characters;
      at.passes = analysis::goes_through_reference(jobs.run, settled.dipoles);
      analysis::derive_dipoles(jobs.run, at.characters, at.of_job);
    }
  }
  // Without the sum rules only those of computed jobs.
  const auto has_own = [&](int i) { return jobs.usable(i) && (at.all || jobs.job(i).is_calc); };
  for (int ih = 1; ih <= jobs.run.n3; ++ih) {
    at.looked.push_back(has_own(2 * ih - 1) && has_own(2 * ih) ? 1 : 0);
  }
  return at;
}

std::vector<int> signs_to_turn(const JobData& jobs, const Thresholds& limits) {
  for (int i = 0; i <= jobs.run.n6; ++i) {
    if (i == 0 ? jobs.sign_file(0).has_dipole && jobs.has_geometry() : jobs.usable(i)) continue;
    io::fatal_stop(place_of(jobs, i),
                   "expected the results of every job to settle the signs, found ",
                   job_text(jobs, i), " without (see zandor_check)");
  }
  const analysis::PreparedDipoles dipoles = prepared(jobs, limits, true);
  if (!dipoles.refusal.empty()) io::fatal_stop({zandor::job_list_name}, dipoles.refusal);
  return dipoles.signs.jobs;
}

}  // namespace check

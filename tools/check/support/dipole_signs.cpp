#include "check/support/dipole_signs.hpp"

#include "analysis/dipoles.hpp"

namespace check {

namespace {

std::vector<analysis::DensityElement> density_elements(const JobData& jobs) {
  std::vector<analysis::DensityElement> elements;
  for (int i = 0; i <= jobs.run.n6; ++i) {
    elements.push_back(analysis::density_element(jobs.sign_file(i).header));
  }
  return elements;
}

analysis::PreparedDipoles prepared(const JobData& jobs, const Thresholds& limits, bool settle) {
  return analysis::prepare_dipoles(
      jobs.run, {{},
                 settle,
                 [&jobs] { return density_elements(jobs); },
                 {limits.dipole_bounds, limits.dipole_relative, limits.dipole_noise}});
}

}  // namespace

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

std::vector<int> signs_to_turn(const JobData& jobs, const Thresholds& limits) {
  for (int i = 0; i <= jobs.run.n6; ++i) {
    if (i == 0 ? jobs.sign_file(0).has_dipole && jobs.has_geometry() : jobs.usable(i)) continue;
    io::fatal_stop(place_of(jobs, i),
                   "expected the results of every job to settle the signs, found " +
                       job_text(jobs, i) + " without (see zandor_check)");
  }
  const analysis::PreparedDipoles dipoles = prepared(jobs, limits, true);
  if (!dipoles.refusal.empty()) io::fatal_stop({zandor::job_list_name}, dipoles.refusal);
  return dipoles.signs.jobs;
}

}  // namespace check

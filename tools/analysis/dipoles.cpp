#include "analysis/dipoles.hpp"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "analysis/median.hpp"

namespace analysis {

namespace {

// A number other than zero is digits times a power of ten: 0.0264 has 3 digits, the first of them
// at exponent -2.
struct Decimal {
  int digits = 0;
  int exponent = 0;
};

Decimal decimal(double value) {
  char text[32];
  const auto end =
      std::to_chars(text, text + sizeof text, std::abs(value), std::chars_format::scientific).ptr;
  const std::string_view shown(text, static_cast<std::size_t>(end - text));
  const std::size_t e = shown.find('e');
  const int digits = static_cast<int>(e) - (shown.find('.') == shown.npos ? 0 : 1);
  return {digits, std::atoi(std::string(shown.substr(e + 1)).c_str())};
}

}  // namespace

StepJobs step_jobs(const zandor::RunData& run, int ih) {
  const bool as_labelled = run.disp_sign == 1;
  return {as_labelled ? 2 * ih : 2 * ih - 1, as_labelled ? 2 * ih - 1 : 2 * ih};
}

Eigen::Matrix3Xd job_dipoles(const zandor::RunData& run) {
  Eigen::Matrix3Xd dipoles = Eigen::Map<const Eigen::Matrix3Xd>(run.tdip.data(), 3, run.n6 + 1);
  dipoles.col(0) = Eigen::Map<const Eigen::Vector3d>(run.dipole0.data());
  return dipoles;
}

int computed_source(const zandor::RunData& run, int job) {
  while (job > 0) {
    const zandor::Job& here = run.jobs[static_cast<std::size_t>(job)];
    if (here.is_calc) return job;
    const int source = here.calc_m;
    if (source >= job && !run.jobs[static_cast<std::size_t>(source)].is_calc) return 0;
    job = source;
  }
  return 0;
}

Eigen::VectorXd print_rounding(const zandor::RunData& run) {
  const Eigen::Matrix3Xd dipoles = job_dipoles(run);
  int decimals = std::numeric_limits<int>::min();
  int longest = 1;
  for (const double value : dipoles.reshaped()) {
    if (value == 0.0) continue;
    const Decimal found = decimal(value);
    decimals = std::max(decimals, found.digits - 1 - found.exponent);
    longest = std::max(longest, found.digits);
  }
  Eigen::VectorXd rounding = Eigen::VectorXd::Zero(run.n6 + 1);
  if (decimals == std::numeric_limits<int>::min()) return rounding;
  for (int i = 0; i <= run.n6; ++i) {
    const int source = i == 0 ? 0 : computed_source(run, i);
    const double largest = dipoles.col(source).cwiseAbs().maxCoeff();
    int last = -decimals;
    if (largest > 0.0) last = std::max(last, decimal(largest).exponent + 1 - longest);
    rounding(i) = std::max(0.5 * std::pow(10.0, last), 1e-15 * largest);
  }
  return rounding;
}

Eigen::Matrix3Xd dipole_gradient(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  Eigen::Matrix3Xd gradient(3, run.n3);
  for (int ih = 1; ih <= run.n3; ++ih) {
    const StepJobs jobs = step_jobs(run, ih);
    gradient.col(ih - 1) = (dipoles.col(jobs.plus) - dipoles.col(jobs.minus)) / (2.0 * run.dx);
  }
  return gradient;
}

Eigen::Matrix3Xd dipole_midpoints(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  Eigen::Matrix3Xd midpoints(3, run.n3);
  for (int ih = 1; ih <= run.n3; ++ih) {
    const Eigen::Vector3d mean = (dipoles.col(2 * ih) + dipoles.col(2 * ih - 1)) / 2.0;
    midpoints.col(ih - 1) = (mean - dipoles.col(0)) / run.dx;
  }
  return midpoints;
}

SignFreeSteps sign_free_steps(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  SignFreeSteps steps{Eigen::Matrix3Xd(3, run.n3), Eigen::VectorXd(run.n3)};
  for (int ih = 1; ih <= run.n3; ++ih) {
    const Eigen::Vector3d mean = (dipoles.col(2 * ih) + dipoles.col(2 * ih - 1)) / 2.0;
    const Eigen::Vector3d half = (dipoles.col(2 * ih) - dipoles.col(2 * ih - 1)) / 2.0;
    double smallest = std::numeric_limits<double>::infinity();
    for (const auto& [sum, difference] : {std::pair(mean, half), std::pair(half, mean)}) {
      for (const double sign : {1.0, -1.0}) {
        const Eigen::Vector3d even = sign * sum - dipoles.col(0);
        if (even.norm() >= smallest) continue;
        smallest = even.norm();
        steps.even.col(ih - 1) = even;
        steps.change(ih - 1) = 2.0 * difference.norm();
      }
    }
  }
  return steps;
}

double dipole_noise(const SignFreeSteps& steps) {
  constexpr double median_length = 1.538;  // of three normal deviates of width 1
  const Eigen::VectorXd lengths = steps.even.colwise().norm();
  const double noise = std::sqrt(2.0) * median({lengths.begin(), lengths.end()}) / median_length;
  return noise <= most_dipole_noise ? noise : 0.0;
}

double gradient_rounding(const zandor::RunData& run) {
  return print_rounding(run).tail(run.n6).maxCoeff() / std::abs(run.dx);
}

bool goes_through_reference(const zandor::RunData& run, const Eigen::Matrix3Xd& dipoles) {
  const Eigen::Matrix3Xd midpoints = dipole_midpoints(run, dipoles);
  // Half a last digit in mu0, root 2 times as much in a dipole that an operation has turned, and
  // what forming the difference adds.
  constexpr double roundings = 3.0;
  return midpoints.cwiseAbs().maxCoeff() <= roundings * gradient_rounding(run) ||
         midpoints.norm() <= 0.5 * dipole_gradient(run, dipoles).norm();
}

Eigen::Matrix3Xd dipole_along_modes(const zandor::RunData& run, const Eigen::Matrix3Xd& gradient,
                                    const Eigen::Ref<const Eigen::MatrixXd>& modes) {
  const Eigen::Map<const Eigen::VectorXd> root_mass(run.sqtmass.data(), run.n3);
  return gradient * root_mass.cwiseInverse().asDiagonal() * modes;
}

Eigen::VectorXd rounding_along_modes(const zandor::RunData& run,
                                     const Eigen::Ref<const Eigen::MatrixXd>& modes) {
  const Eigen::VectorXd rounding = print_rounding(run);
  Eigen::MatrixXd of_source = Eigen::MatrixXd::Zero(run.n6 + 1, modes.cols());
  for (int i = 1; i <= run.n6; ++i) {
    const int ih = (i + 1) / 2;
    const double weight = rounding(i) / (std::abs(2.0 * run.dx) * run.sqtmass(ih));
    of_source.row(computed_source(run, i)) += weight * modes.row(ih - 1).cwiseAbs();
  }
  return of_source.colwise().norm().transpose() / std::sqrt(3.0);
}

}  // namespace analysis

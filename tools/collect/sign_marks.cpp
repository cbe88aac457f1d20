#include "collect/sign_marks.hpp"

#include <cmath>

namespace collect {

namespace {

// What a moment of a transition changes by when an atom moves by 1 Bohr, atomic units: up to 0.85
// (quadrupole), 0.54 (angular momentum) and 0.23 (dipole) in the S1 states of formaldehyde and HNO.
// A mark has to be ten times what a step changes.
constexpr double largest_slope = 1.0;
constexpr double safety = 10.0;
// Coefficients and densities are normalised to 1 or so; the leading one of a state is not below
// this.
constexpr double least_coefficient = 0.3;
// A mark that has changed by more than this part of it tells of another state.
constexpr double most_changed = 0.5;

double length_of(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value * value;
  return std::sqrt(sum);
}

std::vector<double> sum_of(const std::vector<double>& a, const std::vector<double>& b,
                           double sign) {
  std::vector<double> sum = a;
  for (std::size_t i = 0; i < a.size(); ++i) sum[i] += sign * b[i];
  return sum;
}

int sign_between(const SignMark& mark, const SignMark& reference, double step) {
  if (mark.values.size() != reference.values.size()) return 0;
  const double length = length_of(reference.values);
  const bool is_moment = mark.kind == SignMark::Kind::vector || mark.kind == SignMark::Kind::tensor;
  const double least = is_moment ? safety * largest_slope * std::fabs(step) : least_coefficient;
  if (!(length >= least)) return 0;
  for (const int sign : {1, -1}) {
    const double change = length_of(sum_of(mark.values, reference.values, -sign));
    if (change <= most_changed * length) return sign;
  }
  return 0;
}

}  // namespace

SignDecision compare_marks(const JobOutput& job, const JobOutput& reference, double step) {
  for (const SignMark& of_reference : reference.marks) {
    for (const SignMark& mark : job.marks) {
      if (mark.name != of_reference.name) continue;
      const bool same_place =
          mark.kind != SignMark::Kind::coefficient ||
          (job.leading && reference.leading && job.leading->row == reference.leading->row &&
           job.leading->column == reference.leading->column);
      const int sign = same_place ? sign_between(mark, of_reference, step) : 0;
      if (sign != 0) return {sign, mark.name};
    }
  }
  return {};
}

}  // namespace collect

// Force constants as the jobs give them, before they are made symmetric.
#pragma once

#include <vector>

#include "check/support/job_data.hpp"

namespace check {

RawForceConstants difference_forces(const JobData& jobs);

// How far the forces of a computed job are from what the other columns say: the root mean square of
// (F(c) - F0(c)) / step + h(ih, c) over the given coordinates, with F0 the forces of the reference.
// It holds the error of a one-sided difference, which is the same for both jobs of a coordinate.
// Negative where the reference's sign file holds no forces.
double one_sided_deviation(const JobData& jobs, const RawForceConstants& raw, int job,
                           const std::vector<int>& coordinates);

// How far the mean of the two jobs of coordinate ih is from the reference's forces, over the step:
// small where both hold the same step in opposite directions. Negative where there are no reference
// forces.
double even_deviation(const JobData& jobs, int ih);

// Of these jobs the one that stands out by a factor of 2 and more in one_sided_deviation, else all.
// All, too, where nothing can be compared.
std::vector<int> single_out(const JobData& jobs, const RawForceConstants& raw,
                            const std::vector<int>& suspects, const std::vector<int>& coordinates);

}  // namespace check

// The symmetry operations of a job list: what they do to atoms, to steps and to each other.
#pragma once

#include <Eigen/Dense>
#include <vector>

#include "zandor/run_data.hpp"

namespace analysis {

// Operation k, 1..nop.
Eigen::Map<const Eigen::Matrix3d> operation(const zandor::RunData& run, int k);

// Elements of operations that differ by no more are the same. Those printed with three decimals
// miss op op^T = 1 by root 3 e-3 at most, and their products by half a last digit more, 2.2e-3.
inline constexpr double same_within = 2.5e-3;

// Whether two operations are one.
bool alike(const Eigen::Matrix3d& a, const Eigen::Matrix3d& b);

// The place of an operation, from 0; the number of those among which it is looked for where it is
// not there. The product table of a group is place_of(g[k] * g[l], g).
using Matrices = std::vector<Eigen::Matrix3d>;
std::size_t place_of(const Eigen::Matrix3d& matrix, const Matrices& among);

// The largest element of op op^T - 1; 0 for an orthogonal operation.
double off_orthogonal(const Eigen::Matrix3d& op);

// The atom, from 1, nearest to each place that an operation turns about the origin into that of
// atom a, at [a - 1], among atoms with the same label; empty when one of them is farther off than
// the tolerance or taken twice. x: 3 x natom, tolerance in its unit.
std::vector<int> images(const Eigen::Matrix3Xd& x, const std::vector<int>& labels,
                        const Eigen::Matrix3d& op, double tolerance);

// The sign of the step that job i (1..n6) holds: with a disp_sign other than 1 the jobs are
// labelled the other way round.
int step_sign(const zandor::RunData& run, int i);

// The job of which job i (1..n6) is the image under operation k, by atom table and matrix; 0 where
// the operation turns the step into no step along an axis (elements within the tolerance).
int image_source(const zandor::RunData& run, int i, int k, double tolerance);

}  // namespace analysis

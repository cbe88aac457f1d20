// The files of a job directory, as texts.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "displace/input_template.hpp"
#include "displace/plan.hpp"

namespace displace {

using File = std::pair<std::string, std::string>;  // name and content

// control.inp, the inputs of the jobs to be run, the reference's .com file and, last, files.out.
std::vector<File> contents_of(const Plan& plan, const Template& input);

// The line of files.out that tells what wrote it and how the inputs end: ".nw", or nothing.
inline constexpr const char* origin = " Written by zandor_displace; inputs end in '";

}  // namespace displace

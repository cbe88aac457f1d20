// The three ways in which the findings are printed.
#pragma once

#include <string>

#include "check/support/findings.hpp"
#include "check/support/job_data.hpp"
#include "check/support/thresholds.hpp"

namespace check {

// 0 when nothing is above a note, else 1.
int exit_status(const Findings& findings);

// One line per finding, "FILE:LINE: error|warning|note: text [check]", then the summary.
void print_text(const JobData& jobs, const Findings& findings);

// The base names of the jobs that errors and warnings blame, one a line, in job order.
void print_list(const JobData& jobs, const Findings& findings);

// Their numbers in one line, as "4,8,15".
void print_numbers(const Findings& findings);

// One JSON document with every finding, figure and threshold.
void print_json(const std::string& control_file, const JobData& jobs, const Thresholds& limits,
                const Findings& findings);

}  // namespace check

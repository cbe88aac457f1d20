// Sign files, and the reference's other files, as zandor_gather reads them.
#pragma once

#include <string>

#include "collect/output_data.hpp"
#include "zandor/run_data.hpp"

namespace collect {

// Begins the line that names the output.
inline constexpr const char* source_mark = " written by zandor_collect from ";

// The sign file of a job, with symbols, numbers and masses of the run. `turned`: dipole and leading
// element are multiplied by -1; `turned_axes`: the output's axes were others, which leaves the
// dipole no digits but the printed ones.
struct SignFileData {
  int job = 0;
  std::string source;  // the file of the output
  const JobOutput* output = nullptr;
  bool turned = false;
  bool turned_axes = false;
  bool has_leading = true;
};
std::string sign_file_text(const zandor::RunData& run, const SignFileData& data);

// The reference's input, for its geometry (Angstrom).
std::string input_text(const zandor::RunData& run, const Eigen::Matrix3Xd& places);

}  // namespace collect

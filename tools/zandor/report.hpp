// Last phase: the results.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Writes the report "zandor-es.out": sizes, geometry, frequencies, force constants and, unless symm
// is set, transition dipoles and their derivatives. Later tools read it by titles and columns.
void write_report(const RunData& run);

// Writes the animations "vib.xyz" (unprojected modes) and "vibp.xyz" (projected ones).
void write_animations(const RunData& run);

// Writes all three and puts them in place together, the report last, so that a new report always
// stands beside its own animations. Whatever fails leaves those of an earlier run as they were.
void write_results(const RunData& run);

}  // namespace zandor

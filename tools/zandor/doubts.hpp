// Warnings of results that are doubtful although every file could be read.
#pragma once

#include "zandor/run_data.hpp"

namespace zandor {

// Warns, once each, of a reference that is not stationary, of axes in which the projection leaves
// rigid motions among the vibrations, and of vibrations most of which are imaginary. The run has
// been analysed.
void warn_of_doubts(const RunData& run);

}  // namespace zandor

// The blocks in which files are read and written.
#pragma once

#include <cstddef>

namespace io {

#ifdef ZANDOR_BLOCK_SIZE  // small in a fuzz build, where short files are to reach across blocks
inline constexpr std::size_t block_size = ZANDOR_BLOCK_SIZE;
#else
inline constexpr std::size_t block_size = std::size_t{256} * 1024;
#endif

}  // namespace io

// For the main() of a program, and for code that goes on after a fatal stop.
#pragma once

#include <functional>
#include <optional>

#include "io/fatal.hpp"

namespace io {

// Runs `body` and gives its fatal stop, if it came to one. Units that were opened within and are
// still open are then closed, and what was written to them is dropped. Memory that runs out is a
// stop, too.
std::optional<Stop> collect(const std::function<void()>& body);

// Runs the body of main() and gives the exit status of the program: that of the body, or that of
// the fatal stop in which it ended, whose line is printed here. A full disk, a closed pipe and
// memory that runs out become stops instead of signals, and no file takes the place of a standard
// stream that is closed. Status 2 when standard output could not be written.
int run_program(const std::function<int()>& body);

// From now on a closed pipe ends the process by its signal, as the readers of a pipe expect of a
// program that has nothing else to do; unless the process was started to ignore it.
void end_at_closed_pipes();

}  // namespace io

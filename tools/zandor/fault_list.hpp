// Faults that do not hinder each other: all are shown in one run, before it stops.
#pragma once

#include "io/fatal.hpp"

namespace zandor {

// How many of them, and what the lines beyond the first ones are called: "jobs".
struct FaultList {
  const char* what;
  int count = 0;
};

// Shows the line of a fault; of more than 20 only the first ones.
void add_fault(const io::Stop& stop, FaultList& faults);

// Stops when there was a fault; says first how many more there were than have been shown.
void stop_at_faults(const FaultList& faults);

}  // namespace zandor

#include "zandor/fault_list.hpp"

namespace zandor {

namespace {

constexpr int most_shown = 20;

}  // namespace

void add_fault(const io::Stop& stop, FaultList& faults) {
  if (++faults.count <= most_shown) io::report(stop);
}

void stop_at_faults(const FaultList& faults) {
  if (faults.count == 0) return;
  if (faults.count > most_shown) {
    io::report({}, io::joined("... and ", faults.count - most_shown, " more ", faults.what));
  }
  io::silent_stop(2);
}

}  // namespace zandor

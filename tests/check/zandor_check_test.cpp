// The program zandor_check as a user runs it; tests/outputs holds what it prints.
#include <gtest/gtest.h>

#include "support/support.hpp"

namespace {

#ifndef __SANITIZE_ADDRESS__  // which needs more memory itself
TEST(ZandorCheck, prints_no_half_document_where_memory_ends) {
  const support::TempFolder folder;
  std::filesystem::copy(PROJECT_FOLDER "/examples/formaldehyde-s1", ".");
  std::filesystem::remove("coord-ch2o-s1-03mx.sgn");
  EXPECT_EQ(support::run({ZANDOR_CHECK, "--json", "control.inp"}).status, 1);
  int refused = 0;
  for (int limit = 40000; refused < 5; limit -= 300) {
    const std::string line = "ulimit -v " + std::to_string(limit) + "; \"$0\" --json control.inp";
    const support::Outcome outcome = support::run({"bash", "-c", line, ZANDOR_CHECK});
    if (outcome.status == 1) continue;
    ++refused;
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out, "") << limit;
  }
}
#endif

}  // namespace

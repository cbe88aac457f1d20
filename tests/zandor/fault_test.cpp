// The program while one call of the system after the other fails, or a signal comes at it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "support/support.hpp"
#include "zandor/good_job.hpp"

namespace {

namespace fs = std::filesystem;

// How the results get to their places, by the error that keeps files without a name away.
struct Way {
  const char* name;
  int unnamed;
  bool old_results;
  bool reading;   // count the calls that read the input, too
  int modes = 0;  // the error with which permission bits can never be set
};
void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

class Faults : public testing::TestWithParam<Way> {
 protected:
  void SetUp() override {
    fs::copy(good, "job");
    fs::copy_file(FAULTS, "faults.so");  // a path with blanks could not be preloaded
  }

  // The outcome of a run; false behind its last call.
  bool run(int call, int error) {
    for (const std::string name : results) {
      fs::remove("job/" + name);
      if (!GetParam().old_results) continue;
      support::write_file("job/" + name, "yesterday");
      if (GetParam().modes != 0) fs::permissions("job/" + name, fs::perms::owner_all);
    }
    fs::remove("mark");
    const auto set = [](const char* name, int value) { return name + std::to_string(value); };
    outcome_ = support::run(
        {"env", "-C", "job", "LD_PRELOAD=../faults.so", "ASAN_OPTIONS=verify_asan_link_order=0",
         "FAULT_MARK=../mark", set("FAULT_CALL=", call), set("FAULT_ERROR=", error),
         set("FAULT_UNNAMED=", GetParam().unnamed), set("FAULT_MODES=", GetParam().modes),
         set("FAULT_WRITING=", GetParam().reading ? 0 : 1), ZANDOR_GATHER, "control.inp"});
    outcome_.err = without_axes_warning(outcome_.err);
    return fs::exists("mark");
  }

  // "old", "new" or both; or which file is neither.
  std::string shown_results() {
    std::set<std::string> states;
    for (const std::string name : results) {
      const std::string content = support::read_file("job/" + name);
      const bool is_new = content == support::read_file(good / "expected" / name);
      const bool is_old =
          GetParam().old_results ? content == "yesterday" : !fs::exists("job/" + name);
      states.insert(is_new ? "new" : is_old ? "old" : name);
    }
    std::string shown;
    for (const std::string& state : states) shown += (shown.empty() ? "" : ", ") + state;
    return shown;
  }

  void check(const std::string& where, int sent) {
    const std::string state = shown_results();
    const auto lines = std::count(outcome_.err.begin(), outcome_.err.end(), '\n');
    EXPECT_EQ(outcome_.out, "") << where;
    if (outcome_.status == 2) {
      EXPECT_TRUE(outcome_.err.starts_with("zandor_gather: ") && lines == 1)
          << where << outcome_.err;
    } else {
      EXPECT_TRUE(outcome_.status == 0 || outcome_.status == 1000 + sent)
          << where << outcome_.status;
      EXPECT_EQ(outcome_.err.find("zandor"), std::string::npos) << where << outcome_.err;
    }
    EXPECT_TRUE(state == "new" || (state == "old" && outcome_.status != 0)) << where << state;
    for (const auto& entry : fs::directory_iterator("job")) {
      const std::string name = entry.path().filename();
      EXPECT_TRUE(std::ranges::count(results, name) == 1 || name == "result.log" ||
                  fs::exists(good / name))
          << where << "leaves " << name;
    }
  }

  support::TempFolder folder_;
  support::Outcome outcome_;
};

TEST_P(Faults, leave_all_results_of_a_run_or_none) {
  for (const int error : {EIO, EACCES, -SIGTERM, -SIGXCPU, -SIGUSR1, -SIGRTMIN}) {
    int call = 1;
    for (; run(call, error); ++call) {
      check("call " + std::to_string(call) + ", error " + std::to_string(error) + ": ", -error);
    }
    EXPECT_GT(call, GetParam().reading ? 50 : 15) << "too few calls were counted";
    EXPECT_EQ(outcome_.status, 0) << "behind the last call";
  }
}

INSTANTIATE_TEST_SUITE_P(ways, Faults,
                         testing::Values(Way{"unnamed", 0, true, true},
                                         Way{"unnamed_first", 0, false, false},
                                         Way{"hidden", EOPNOTSUPP, true, false},
                                         Way{"hidden_first", EOPNOTSUPP, false, false},
                                         Way{"in_place", EACCES, true, false},
                                         Way{"no_modes", 0, true, false, ENOSYS}),
                         [](const auto& way) { return way.param.name; });

}  // namespace

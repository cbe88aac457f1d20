// The program zandor_check as a user runs it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "job_folder.hpp"

namespace {

class ZandorCheck : public testing::Test {
 protected:
  ZandorCheck() {
    job_folder::copy_here(PROJECT_FOLDER "/examples/formaldehyde-s1");
    std::filesystem::remove("coord-ch2o-s1-03mx.sgn");
    job_folder::turn_dipole("coord-ch2o-s1-01px.sgn");
  }
  static support::Outcome run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ZANDOR_CHECK);
    arguments.push_back("control.inp");
    return support::run(arguments);
  }
  support::TempFolder folder_;
};

TEST_F(ZandorCheck, prints_findings_and_a_summary) {
  const support::Outcome outcome = run({});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out,
      "files.out: note: not looked at: 1 job without forces that can be used [duplicate]\n"
      "files.out: note: not looked at: 1 coordinate without two jobs that can be used; the "
      "others are not held against their median [asymmetry]\n"
      "files.out: note: not looked at: 1 coordinate without two jobs that can be used [net-force]\n"
      "files.out: note: frequencies not looked at: the projection needs all jobs "
      "[force-constants]\n"
      "files.out: note: the sum rules are not looked at: 1 job without a dipole, and the sums need "
      "all [dipole-sum]\n"
      "coord-ch2o-s1-ref.com: note: not looked at: the projection needs all jobs [frame]\n"
      "coord-ch2o-s1-ref.com: note: not looked at: the projection needs all jobs [noise]\n"
      "coord-ch2o-s1-01mx.sgn: warning: the transition dipole of job 1 (atom 1 (C) x-) has the "
      "other "
      "sign: turn it; another one of job 2 (atom 1 (C) x+), coord-ch2o-s1-01px.sgn, would do as "
      "well "
      "[dipole-sum]\n"
      "coord-ch2o-s1-03mx.sgn: error: expected a file that can be read, found: No such file or "
      "directory [files]\n"
      "24 jobs read, 1 error, 1 warning; worst asymmetry 2.862e-05 Hartree/Bohr**2, sum-rule "
      "residual not known\n");
  EXPECT_EQ(run({"--list"}).out, "ch2o-s1-03mx\n");
  EXPECT_EQ(run({"--list=numbers"}).out, "13\n");
  EXPECT_NE(run({"--list=no"}).err.find("expected --list alone"), std::string::npos);
  EXPECT_EQ(run({"--only", "asymmetry,names"}).status, 0);
  // Neither an input that is cut nor a job that the list gives twice is mended by running a job.
  const std::string com = support::read_file("coord-ch2o-s1-ref.com");
  support::write_file("coord-ch2o-s1-ref.com", com.substr(0, com.find_last_not_of('\n') + 1));
  support::edit_file("files.out", "ch2o-s1-02px", "ch2o-s1-01px");
  EXPECT_EQ(run({"--list"}).out, "ch2o-s1-03mx\n");
  std::filesystem::remove("coord-ch2o-s1-ref.log");
  EXPECT_EQ(run({"--list"}).out, "ch2o-s1-ref\nch2o-s1-03mx\n");
}

#ifndef __SANITIZE_ADDRESS__  // which needs more memory itself
TEST_F(ZandorCheck, prints_no_half_document_where_memory_ends) {
  support::run(
      {"bash", "-c",
       "{ printf 'a b c 100\\na b c 1\\nstep 0.005\\nBegin_zand_info\\n\\na b c 0\\n\\n\\n\\n';"
       " yes '1 H 1' | head -n 100; echo; echo; echo; seq -f '0 j%g T 0 0' 0 600; } >files.out"});
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

TEST_F(ZandorCheck, says_once_what_is_alike) {
  for (int job = 1; job <= 24; job += 2) {
    const std::string name = std::string("coord-ch2o-s1-0") + std::to_string((job + 5) / 6) + "m" +
                             "xyz"[(job - 1) % 6 / 2] + ".sgn";
    std::filesystem::remove(name);
  }
  const std::string out = run({"--only", "files"}).out;
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2) << out;
  EXPECT_NE(out.find("coord-ch2o-s1-01mx.sgn: error: expected a file that can be read, found: No "
                     "such file or directory; 12 jobs alike: ch2o-s1-01mx, "),
            out.npos)
      << out;
  EXPECT_NE(out.find("ch2o-s1-04mx, ... [files]\n13 jobs read, 12 errors"), out.npos) << out;
  const auto document = nlohmann::json::parse(run({"--only", "files", "--json"}).out);
  EXPECT_EQ(document["findings"].size(), 12U);
}

TEST_F(ZandorCheck, prints_everything_as_json) {
  std::filesystem::copy_file(PROJECT_FOLDER "/examples/formaldehyde-s1/coord-ch2o-s1-03mx.sgn",
                             "coord-ch2o-s1-03mx.sgn");
  const support::Outcome outcome = run({"--json", "--asymmetry", "1e-5", "--asymmetry-ratio=9"});
  EXPECT_EQ(outcome.status, 1);
  const auto document = nlohmann::json::parse(outcome.out);
  const auto& summary = document["summary"];
  EXPECT_EQ(summary["jobs_read"], 25);
  EXPECT_NEAR(summary["worst_asymmetry"].get<double>(), 2.862e-5, 1e-8);
  EXPECT_NEAR(summary["sum_rule_residual"].get<double>(), 0.28, 0.01);
  bool turned = false;
  for (const auto& finding : document["findings"]) {
    turned |= finding["check"] == "dipole-sum" && finding["name"] == "ch2o-s1-01px" &&
              finding["rerun"].empty();
  }
  EXPECT_TRUE(turned) << outcome.out;
  EXPECT_FALSE(document["rerun"].empty()) << "columns above 1e-5";
  EXPECT_EQ(document["thresholds"].size(), std::size(check::threshold_names));
  EXPECT_NE(document["figures"].dump().find("net force of each coordinate"), std::string::npos);
}

// Dipole and tden_maxval with the other sign, all else byte for byte.
TEST_F(ZandorCheck, writes_sign_files_with_the_sign_turned) {
  const std::string name = "coord-ch2o-s1-01px.sgn";
  const std::string file = PROJECT_FOLDER "/examples/formaldehyde-s1/" + name;
  EXPECT_NE(run({"--turn", "new"}).err.find("expected the results of every job"),
            std::string::npos);
  std::filesystem::copy(PROJECT_FOLDER "/examples/formaldehyde-s1/coord-ch2o-s1-03mx.sgn", ".");
  std::filesystem::copy(file, name, std::filesystem::copy_options::overwrite_existing);
  const std::string sound = support::read_file(name);
  EXPECT_NE(run({"--turn", "new"}).out.find("no sign has to be turned"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists("new"));
  support::edit_file(name, "  0.00264", " -0.00264");
  support::edit_file(name, "tden_maxval    =     0", "tden_maxval    =    -0");
  const std::string turned = support::read_file(name);
  EXPECT_EQ(run({"--turn", "new"}).status, 0);
  EXPECT_EQ(support::read_file("new/" + name), sound);
  EXPECT_EQ(support::read_file(name), turned);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("new"), {}), 1);
  const support::Outcome again = run({"--turn", "new"});
  EXPECT_EQ(again.status, 2);
  EXPECT_NE(again.err.find("a folder that is new or empty"), std::string::npos) << again.err;
}

TEST_F(ZandorCheck, says_why_it_cannot_check) {
  const auto fails = [](const std::vector<std::string>& arguments, const char* says) {
    const support::Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
  };
  fails({"--only", "everything"}, "zandor_check: --only: everything not in {");
  fails({"--json", "--list"}, "excludes");
  for (const char* const value : {"-1", "nan", "inf", "much"}) {
    fails({"--frame", value}, "expected a number of 0 or more, found");
  }
  support::edit_file("files.out", "Begin_zand_info", "Begin");
  fails({}, "zandor_check: files.out: no line holds 'Begin_zand_info'");
  std::filesystem::remove("control.inp");
  fails({}, "zandor_check: control.inp: expected a file that can be read");
}

}  // namespace

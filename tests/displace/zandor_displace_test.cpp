// zandor_displace as a program: what it writes, refuses and leaves behind.
#include <algorithm>
#include <cmath>

#include "analysis/job_directory.hpp"
#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;
using support::read_file;
using support::write_file;

constexpr const char* water = "3\nwater\nO 0 0 0.12\nH 0 0.757 -0.47\nH 0 -0.757 -0.47\n";
constexpr const char* input =
    "name {{name}} of {{reference}}\n{{charge}} {{multiplicity}}\n"
    "{{geometry}}\n{{symbols}} {{natom}}\n";

support::Outcome displace(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), ZANDOR_DISPLACE);
  return support::run(arguments);
}

std::vector<std::string> names_in(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename();
    if (!name.starts_with("std")) names.push_back(name);  // what the program printed
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(zandor_displace, writes_every_file_that_the_run_reads_and_nothing_else) {
  const support::TempFolder folder;
  write_file("w.xyz", water);
  write_file("t.nw", input);
  const auto outcome = displace({"w.xyz", "t.nw", "-o", "jobs", "--axes", "keep"});
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  const std::string names =
      "w-ref\nw-01mx\nw-01my\nw-01mz\nw-01pz\nw-02mx\nw-02my\nw-02py\nw-02mz\nw-02pz\n";
  EXPECT_EQ(outcome.out,
            "H2O, C2v: 18 displaced jobs, 9 to run, 9 derived by 4 operations\n" + names);
  const std::vector<std::string> expected = {
      "control.inp",     "coord-w-01mx.nw", "coord-w-01my.nw", "coord-w-01mz.nw", "coord-w-01pz.nw",
      "coord-w-02mx.nw", "coord-w-02my.nw", "coord-w-02mz.nw", "coord-w-02px.nw", "coord-w-02py.nw",
      "coord-w-02pz.nw", "coord-w-ref.com", "coord-w-ref.nw",  "files.out"};
  auto found = names_in("jobs");
  found.insert(std::find(found.begin(), found.end(), "coord-w-02py.nw"), "coord-w-02px.nw");
  EXPECT_EQ(found, expected);
  EXPECT_EQ(read_file("jobs/coord-w-02py.nw"),
            "name w-02py of w-ref\n0 1\n"
            " O        0.0000000000      0.0000000000      0.1200000000\n"
            " H        0.0000000000      0.7620000000     -0.4700000000\n"
            " H        0.0000000000     -0.7570000000     -0.4700000000\nO H H 3\n");
  // A job list begins where the last one ended: sign files that are there are not missing.
  fs::current_path("jobs");
  EXPECT_EQ(displace({"--missing"}).out, names);
  for (const char* job : {"ref", "01mx", "02pz"}) {
    write_file(std::string("coord-w-") + job + ".sgn", "any");
  }
  EXPECT_EQ(displace({"--missing=numbers", "control.inp"}).out, "3,5,6,7,9,10,11\n");
  fs::current_path("..");
  EXPECT_NE(displace({"w.xyz", "t.nw", "-o", "jobs"}).status, 0);
  // Written again: other jobs, the same results; a folder of somebody else's stays as it is.
  ASSERT_EQ(displace({"w.xyz", "t.nw", "-o", "jobs", "--force", "--no-symmetry", "--list"}).status,
            0);
  EXPECT_EQ(names_in("jobs").size(), 3u + 19u + 3u);
  ASSERT_EQ(displace({"w.xyz", "t.nw", "-o", "jobs", "--force", "--axes", "keep"}).status, 0);
  EXPECT_EQ(names_in("jobs").size(), expected.size() - 1 + 3);
  EXPECT_EQ(read_file("jobs/coord-w-ref.sgn"), "any");
  fs::create_directory("mine");
  EXPECT_EQ(displace({"w.xyz", "t.nw", "-o", "mine/"}).status, 0);
  write_file("mine/files.out", "mine\n");
  EXPECT_NE(displace({"w.xyz", "t.nw", "-o", "mine", "--force"}).status, 0);
  EXPECT_EQ(read_file("mine/files.out"), "mine\n");
}

TEST(zandor_displace, refuses_in_one_line_and_leaves_nothing) {
  const std::string two = "2\n\nC 0 0 0\n";
  const struct {
    const char* what;
    std::string geometry, input;
    std::vector<std::string> more;
    const char* message;
  } cases[] = {
      {"one atom", "1\n\nC 0 0 0\n", input, {}, "g.xyz:1: expected a molecule of 2 to 600 atoms"},
      {"no count", "C 0 0 0\n", input, {}, "g.xyz:1: expected the number of atoms"},
      {"empty", "", input, {}, "expected the number of atoms"},
      {"too short", two, input, {}, "g.xyz:4: expected 2 atoms, found the end of the file after 1"},
      {"huge count", "2000000000\n\nC 0 0 0\n", input, {}, "found 2000000000"},
      {"no element", two + "Xx 0 0 1\n", input, {}, "g.xyz:4: expected the symbol of an element"},
      {"no number", two + "O 0 0 1.x\n", input, {}, "g.xyz:4: expected the symbol"},
      {"not finite", two + "O 0 0 nan\n", input, {}, "g.xyz:4: expected the symbol"},
      {"other columns",
       "2\nProperties=id:I:1:species:S:1\nC 0 0 0\nO 0 0 1\n",
       input,
       {},
       "g.xyz:2:"},
      {"on top", two + "O 0 0 0.01\n", input, {}, "found atoms 1 and 2 0.01 Angstrom apart"},
      {"no geometry", two + "O 0 0 1\n", "{{name}}\n", {}, "t.inp: expected {{geometry}}"},
      {"unknown place",
       two + "O 0 0 1\n",
       "a\n{{geometry}}\n{{nam}}\n",
       {},
       "t.inp:3: expected {{name}}"},
      {"open place", two + "O 0 0 1\n", "{{geometry}}\n{{name\n", {}, "t.inp:2: expected {{name}}"},
      {"name",
       two + "O 0 0 1\n",
       input,
       {"--name", "a b"},
       "expected a name of at most 185 letters"},
      {"long name", two + "O 0 0 1\n", input, {"--name", std::string(186, 'a')}, "expected a name"},
      {"step", two + "O 0 0 1\n", input, {"--step", "0"}, "expected a number above 0"},
      {"multiplicity", two + "O 0 0 1\n", input, {"--multiplicity", "2"}, "14 electrons can have"},
      {"isotope",
       two + "O 0 0 1\n",
       input,
       {"--isotope", "H=2"},
       "expected an element of the molecule"},
      {"no folder",
       two + "O 0 0 1\n",
       input,
       {"-o", "no/such"},
       "no/such: cannot write: No such file"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const support::TempFolder folder;
    write_file("g.xyz", c.geometry);
    write_file("t.inp", c.input);
    std::vector<std::string> arguments = {"g.xyz", "t.inp"};
    if (c.more.empty() || c.more[0] != "-o") arguments.insert(arguments.end(), {"-o", "jobs"});
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    const auto outcome = displace(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find(c.message), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_EQ(names_in(".").size(), 2u);
  }
}

TEST(zandor_displace, takes_inputs_and_templates_that_end_in_com) {
  const support::TempFolder folder;
  write_file("i.gjf", "#p any\n\n2 in front\n\n-1 1\nO,0,0,0.12\n h 0 0.757 -0.47\n\nH 0 0 0\n");
  write_file("t.com", "# any\n\n{{name}}\n\n{{charge}} {{multiplicity}}\n{{geometry}}\n");
  auto outcome = displace({"i.gjf", "t.com", "-o", "jobs", "--axes", "keep"});
  EXPECT_NE(outcome.err.find("give the template another ending"), std::string::npos);
  outcome = displace(
      {"i.gjf", "t.com", "-o", "jobs", "--axes", "keep", "--charge", "1", "--multiplicity", "1"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(read_file("jobs/coord-i-ref.com").find("i-ref"), 7u);
}

// The examples' own results, taken for what the program asks to be run.
TEST(zandor_displace, agrees_with_the_examples) {
  const struct {
    const char *folder, *results, *name, *step;
    int most;
  } cases[] = {{"formaldehyde-s1-c2v", "formaldehyde-s1", "ch2o-s1", "0.005", 14},
               {"ammonia-s1-c3v", "ammonia-s1-c3v", "nh3", "0.01", 7}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.folder);
    const support::TempFolder folder;
    const fs::path examples = fs::path(PROJECT_FOLDER) / "examples";
    const std::string reference = std::string("coord-") + c.name + "-ref.";
    write_file("t.inp", "{{geometry}}\n");
    const auto outcome =
        displace({(examples / c.folder / (reference + "com")).string(), "t.inp", "-o", "jobs",
                  "--list", "--axes", "keep", "--step", c.step, "--name", c.name});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), c.most);
    fs::current_path("jobs");
    for (const std::string& job : names_in(".")) {
      if (!job.ends_with(".inp") || job == "control.inp") continue;
      const fs::path sign = fs::path(job).replace_extension(".sgn");
      fs::copy_file(examples / c.results / sign, sign);
    }
    fs::copy_file(examples / c.results / (reference + "log"), reference + "log");
    const zandor::RunData ours = analysis::load_job_directory("control.inp");
    fs::current_path(examples / c.folder);
    const zandor::RunData theirs = analysis::load_job_directory("control.inp");
    fs::current_path(folder.path());
    for (int i = 1; i <= ours.n3; ++i) {
      if (std::abs(theirs.freqp(i)) < 5.0) continue;
      EXPECT_NEAR(ours.freqp(i), theirs.freqp(i), 0.01) << i;
    }
  }
}

}  // namespace

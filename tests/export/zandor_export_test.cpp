// The program zandor_export as a user runs it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;

using nlohmann::json;
using Arguments = std::vector<std::string>;

class ZandorExport : public testing::Test {
 protected:
  void enter(const std::string& job) {
    fs::copy(fs::path(PROJECT_FOLDER) / job, ".",
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
  }
  support::Outcome run(const Arguments& arguments) {
    Arguments command = {ZANDOR_EXPORT};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return support::run(command);
  }
  json exported(const Arguments& options = {}) {
    Arguments arguments = {"json", "control.inp"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const support::Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return json::parse(outcome.out);
  }
  support::TempFolder folder_;
};

// The vibrations of a list, those with little rigid motion in them.
std::vector<double> vibrations(const json& modes) {
  std::vector<double> result;
  for (std::size_t k = 0; k < modes["frequencies"].size(); ++k) {
    if (modes["rigid_weight"][k] < 0.5) result.push_back(modes["frequencies"][k]);
  }
  return result;
}

double square(const json& vector) {
  double sum = 0.0;
  for (const double component : vector) sum += component * component;
  return sum;
}

TEST_F(ZandorExport, gives_what_the_report_and_its_jobs_hold) {
  enter("examples/formaldehyde-s1");
  const json all = exported();
  // From the report, whose own digits are good to 0.01 cm-1.
  const double expected[] = {-569.0862, 898.7569, 1308.8758, 1410.1017, 3109.7927, 3222.7946};
  const std::vector<double> found = vibrations(all["projected"]);
  ASSERT_EQ(found.size(), 6U);
  for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(found[k], expected[k], 0.01);
  EXPECT_EQ(all["projected"]["frequencies"][1], 0.0) << "rigid motions are taken out exactly";
  EXPECT_EQ(all["provenance"]["inputs"].size(), 29U);
  EXPECT_EQ(all["symmetry_used"], false);
  // The reduced mass of a displacement of unit length, from the masses and the displacements.
  const std::string frames = run({"xyz", "control.inp"}).out;
  EXPECT_NEAR(all["masses"][0], 12.0, 1e-3);
  for (std::size_t k = 0; k < 12; ++k) {
    double mass = 0.0;
    for (std::size_t a = 0; a < 4; ++a) {
      mass += double(all["masses"][a]) * square(all["projected"]["displacements"][k][a]);
    }
    EXPECT_NEAR(all["projected"]["reduced_masses"][k], mass, 1e-9 * mass);
    const std::string name = "reduced_mass_u=";
    const std::size_t at = frames.find(name, frames.find("mode#=" + std::to_string(k + 1) + " "));
    EXPECT_NEAR(std::stod(frames.substr(at + name.size())), mass, 1e-9 * mass);
  }
  // Most of the strength is in modes 8 and 12.
  const auto& slopes = all["projected"]["transition_dipole_derivatives"];
  EXPECT_GT(square(slopes[7]) + square(slopes[11]), 50.0 * square(slopes[9]));

  enter("examples/formaldehyde-s1-c2v");
  support::write_file("[x]", "&control symm = .false. /\n");
  const json derived = json::parse(run({"json", "[x]"}).out);
  EXPECT_EQ(derived["provenance"]["control_file"], "[x]");
  EXPECT_EQ(derived["symmetry_used"], true) << "whatever the control file says of it";
  EXPECT_EQ(derived["provenance"]["notes"], json({"characters of the operations: +,-,-"}));
  for (std::size_t mode : {7U, 11U}) {
    const double computed = square(slopes[mode]);
    EXPECT_NEAR(square(derived["projected"]["transition_dipole_derivatives"][mode]), computed,
                1e-3 * computed);
  }
}

// The state, in the words of either program that writes sign files.
TEST_F(ZandorExport, tells_what_the_reference_says_of_its_state) {
  enter("examples/formaldehyde-s1");
  const std::string name = "coord-ch2o-s1-ref.sgn", electronvolts = "3.376900";
  const auto line_of_checkpoint = [&](const std::string& name_of_record) {
    const std::string text = run({"fchk", "control.inp"}).out;
    const std::size_t at = text.find("\n" + name_of_record + " ");
    return at == text.npos ? "" : text.substr(at + 45, 27);
  };
  json all = exported();
  EXPECT_NEAR(all["excitation_energy"], 3.3769 / 27.211386245988, 1e-12);
  EXPECT_EQ(all["oscillator_strength"], 0.0);
  EXPECT_EQ(all["gradient"][2], -7.84e-8);
  EXPECT_EQ(line_of_checkpoint("SCF Energy"), "     -1.144841996836000E+02");
  EXPECT_EQ(line_of_checkpoint("Total Energy"), "     -1.143601008975450E+02");
  support::edit_file(name, " Total ground state energy (Hartree)       -114.4841996836",
                     " Energy of the state (Hartree)  -1.1436D2");
  support::edit_file(name, electronvolts, electronvolts + " 2.0");
  support::edit_file(name, "0.0000000784", "0.00000007x4");
  all = exported();
  for (const char* key : {"excitation_energy", "gradient"}) EXPECT_FALSE(all.contains(key)) << key;
  EXPECT_EQ(line_of_checkpoint("SCF Energy"), "      0.000000000000000E+00");
  EXPECT_EQ(line_of_checkpoint("Total Energy"), "     -1.143600000000000E+02");
  EXPECT_EQ(line_of_checkpoint("Cartesian Gradient"), "");
}

TEST_F(ZandorExport, leaves_out_derivatives_that_mean_nothing_and_says_so) {
  enter("tests/zandor/cases/nine-atoms-c2v");
  const support::Outcome outcome = run({"json", "control.inp"});
  EXPECT_EQ(outcome.status, 0);
  const std::string warning = "transition dipole derivatives are left out: ";
  EXPECT_NE(outcome.err.find("zandor_export: warning: " + warning), std::string::npos);
  const json all = json::parse(outcome.out);
  EXPECT_FALSE(all.contains("transition_dipole_gradient"));
  EXPECT_FALSE(all["projected"].contains("transition_dipole_derivatives"));
  EXPECT_TRUE(all["provenance"]["notes"][0].get<std::string>().starts_with(warning));
  EXPECT_EQ(run({"html", "control.inp"}).out.find("\"strength_0-1_au\""), std::string::npos);
}

TEST_F(ZandorExport, takes_five_motions_from_a_linear_molecule_and_other_masses) {
  enter("tests/zandor/cases/diatomic-dipoles");
  const std::vector<double> light = vibrations(exported()["projected"]);
  ASSERT_EQ(light.size(), 1U);
  const json masses = exported()["masses"];
  Arguments heavier;
  for (std::size_t a = 0; a < masses.size(); ++a) {
    const double mass = masses[a];
    heavier.insert(heavier.end(),
                   {"--mass", std::to_string(a + 1) + "=" + std::to_string(4 * mass)});
  }
  const json heavy = exported(heavier);
  EXPECT_NEAR(vibrations(heavy["projected"])[0], light[0] / 2, 1e-4);
  EXPECT_TRUE(
      heavy["provenance"]["notes"][0].get<std::string>().starts_with("masses changed: atom 1 ("));
}

TEST_F(ZandorExport, writes_a_file_completely_or_not_at_all) {
  enter("examples/formaldehyde-s1");
  EXPECT_EQ(run({"molden", "control.inp", "-o", "modes"}).status, 0);
  const std::string before = support::read_file("modes");
  EXPECT_EQ(before, run({"molden", "control.inp", "-o", "-"}).out);
  EXPECT_EQ(run({"xyz", "--movie", "8", "4", "control.inp", "-o", "film"}).err, "");
  EXPECT_TRUE(support::read_file("film").starts_with("4\nProperties="));
  support::edit_file("coord-ch2o-s1-ref.com", "0.95656836      -1.1", "0.85656836      -1.1");
  EXPECT_NE(run({"molden", "control.inp"}).err.find("Angstrom apart): forces and dipoles are"),
            std::string::npos);
  fs::remove("coord-ch2o-s1-03my.sgn");
  EXPECT_EQ(run({"molden", "control.inp", "-o", "modes"}).status, 2);
  EXPECT_EQ(support::read_file("modes"), before);
}

TEST_F(ZandorExport, names_what_it_cannot_do) {
  enter("examples/formaldehyde-s1");
  fs::create_symlink("files.out", "link");
  support::write_file("vib.xyz", "");
  const std::pair<Arguments, const char*> cases[] = {
      {{"pdf", "control.inp"},
       "expected a format (json, fchk, hess, cjson, molden, xyz or html), found 'pdf'"},
      {{}, "expected a format (json, fchk, hess, cjson, molden, xyz or html), found none"},
      {{"control.inp", "json"},
       "(json, fchk, hess, cjson, molden, xyz or html), found 'control.inp'"},
      {{"--mass", "3=2", "json", "control.inp"}, "options behind the format, found '--mass'"},
      {{"json"}, "CONTROLFILE is required"},
      {{"json", "control.inp", "--all"}, "--all"},
      {{"xyz", "control.inp", "--mode", "0"}, "expected a mode from 1 to 12, found 0"},
      {{"xyz", "control.inp", "--movie", "13", "8"}, "expected a mode from 1 to 12, found 13"},
      {{"xyz", "control.inp", "--movie", "8", "3"}, "expected --movie with at least 4 frames"},
      {{"xyz", "control.inp", "--movie", "8", "8", "--mode", "8"}, "--mode excludes --movie"},
      {{"xyz", "control.inp", "--amplitude", "nan"}, "expected --amplitude above 0, found NaN"},
      {{"html", "control.inp", "-o", "missing/page.html"}, "missing/page.html: expected a file"},
      {{"html", "control.inp", "-o", "link"}, "link: expected a file that is no input or result"},
      {{"json", "control.inp", "-o", "zandor-es.out"}, "result of the job, found zandor-es.out"},
      {{"json", "control.inp", "-o", "./vib.xyz"}, "result of the job, found vib.xyz"},
      {{"html", "missing.inp"}, "missing.inp: expected a file that can be read"},
      {{"json", "control.inp", "--mass", "5=1.0"}, "expected an atom within 1..4"},
  };
  for (const auto& [arguments, message] : cases) {
    const support::Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << message;
    EXPECT_EQ(outcome.out, "") << message;
    EXPECT_EQ(outcome.err.find("zandor_export: "), 0U) << outcome.err;
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
  }
  for (const auto& [command, message] :
       {std::pair("\"$0\" html control.inp >/dev/full", "standard output: cannot write: "),
        {"\"$0\" html control.inp >&-", "standard output: cannot write: "},
        {R"(script -qec "\"$0\" html control.inp" /dev/null >&2)",
         "expected -o FILE behind html"}}) {
    const support::Outcome outcome = support::run({"sh", "-c", command, ZANDOR_EXPORT});
    EXPECT_EQ(outcome.status, 2) << command;
    EXPECT_EQ(outcome.err.find(std::string("zandor_export: ") + message), 0U) << outcome.err;
  }
  EXPECT_EQ(run({"json", "control.inp", "-o", "files.out "}).status, 0);
  EXPECT_FALSE(support::read_file("files.out").starts_with("{")) << "a blank belongs to the name";
  const support::Outcome shut = support::run(
      {"bash", "-c", "(sleep .3; \"$0\" json control.inp; echo $? >&2) | :", ZANDOR_EXPORT});
  EXPECT_EQ(shut.err, "141\n");
}

}  // namespace

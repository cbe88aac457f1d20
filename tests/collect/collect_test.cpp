// The program zandor_collect on real outputs, and on what can be wrong with them.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "collect/readers/readers.hpp"
#include "support/support.hpp"
#include "zandor/sign_file.hpp"

namespace {

namespace fs = std::filesystem;

using support::read_file;
using support::write_file;

const std::string header_of_modes = " Unprojected Frequency (cm-1)";

struct Engine {
  const char* folder;
  const char* job;  // names of the jobs begin so
  int natom, jobs;
  const char *version, *sign_by;
  // The engine's own numerical frequencies, cm-1, of the highest modes.
  std::vector<double> frequencies;
  double excitation_energy;  // eV
  void (*read)(const std::string&, const collect::Request&, collect::JobOutput&);
  const char* last_line;
};

const Engine nwchem = {"nwchem-formaldehyde",
                       "ch2o-",
                       4,
                       25,
                       "NWChem 7.0.2, state 1",
                       "quadrupole",
                       {563.16, 993.88, 1438.86, 1662.66, 3206.12, 3296.93},
                       3.9708,
                       collect::read_nwchem,
                       " Total times"};
const Engine openmolcas = {"openmolcas-hno",
                           "hno-",
                           3,
                           19,
                           "OpenMolcas 22.10, state 2",
                           "transition density",
                           {1196.92, 1398.80, 3593.98},
                           1.7974,
                           collect::read_openmolcas,
                           "Happy landing"};

void replace_all(std::string& text, const std::string& from, const std::string& to) {
  ASSERT_NE(text.find(from), text.npos) << from;
  for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

struct SignFile {
  std::vector<double> dipole = std::vector<double>(3), forces;
};
SignFile sign_file(const std::string& name, int natom, zandor::SignFile* whole = nullptr) {
  SignFile file;
  file.forces.resize(3 * static_cast<std::size_t>(natom));
  zandor::read_sign_file("coord-" + name + ".sgn", 1, natom, file.dipole.data(), file.forces.data(),
                         whole);
  return file;
}

class Collect : public testing::Test {
 protected:
  void SetUp() override {
    if (support::run({"tar", "--version"}).status != 0 ||
        support::run({"xz", "--version"}).status != 0) {
      GTEST_SKIP() << "for want of tar or xz";
    }
  }
  void unpack(const Engine& engine) {
    for (const std::string folder : {engine.folder, "not-whole"}) {
      const std::string pack =
          std::string(PROJECT_FOLDER) + "/tests/collect/data/" + folder + ".tar.xz";
      ASSERT_EQ(support::run({"tar", "-xJf", pack, "--strip-components=1"}).status, 0);
    }
  }
  support::Outcome run(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {ZANDOR_COLLECT, "control.inp"});
    return support::run(options);
  }
  static int sign_files() {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("."))
      count += entry.path().extension() == ".sgn";
    return count;
  }
  support::TempFolder folder_;
};

// The numbers of a list of modes of the report.
std::vector<double> frequencies() {
  const std::string report = read_file("zandor-es.out");
  std::vector<double> values;
  std::size_t at = report.find('\n', report.find(header_of_modes)) + 1;
  for (int mode = 0; std::sscanf(report.c_str() + at, "%d", &mode) == 1;) {
    values.push_back(std::stod(report.substr(at + 10, 15)));
    at = report.find('\n', at) + 1;
  }
  return values;
}

TEST_F(Collect, takes_real_outputs_whole) {
  for (const Engine& engine : {nwchem, openmolcas}) {
    unpack(engine);
    const support::Outcome outcome = run();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const std::string head = std::to_string(engine.jobs) + " jobs: " + std::to_string(engine.jobs) +
                             " taken (" + engine.version + "), 0 missing, 0 bad\n";
    EXPECT_EQ(outcome.out.substr(0, head.size()), head);
    ASSERT_EQ(sign_files(), engine.jobs);
    const support::Outcome check = support::run({ZANDOR_CHECK, "control.inp"});
    EXPECT_NE(check.out.find(" jobs read, 0 errors, 0 warnings;"), std::string::npos) << check.out;
    ASSERT_EQ(support::run({ZANDOR_GATHER, "control.inp"}).status, 0);
    const std::vector<double> found = frequencies();
    for (std::size_t k = 0; k < engine.frequencies.size(); ++k) {
      EXPECT_NEAR(found[found.size() - engine.frequencies.size() + k], engine.frequencies[k], 1.0);
    }
    zandor::SignFile states;
    sign_file(engine.job + std::string("ref"), engine.natom, &states);
    EXPECT_NEAR(states.states.excitation_energy.value_or(0.0), engine.excitation_energy, 1e-4);
    const auto document = nlohmann::json::parse(run({"--json"}).out);
    for (const auto& job : document["jobs"]) {
      EXPECT_EQ(job["sign_by"], job["job"] == 0 ? "reference" : engine.sign_by) << job;
    }
    // The sign of the dipole is that of the reference in every job.
    const SignFile reference = sign_file(engine.job + std::string("ref"), engine.natom);
    for (const char* name : {"01mx", "01py", "02mz", "03pz"}) {
      const SignFile job = sign_file(std::string(engine.job) + name, engine.natom);
      double product = 0.0;
      for (std::size_t k = 0; k < 3; ++k) product += job.dipole[k] * reference.dipole[k];
      EXPECT_GT(product, 1e-3) << name;
    }
    for (const auto& entry : fs::directory_iterator(".")) fs::remove_all(entry.path());
  }
}

// What is done to the output of one job, and what is said of it.
struct Fault {
  const char* what;
  std::function<void(std::string&)> edit;
  const char* expected;
};

void cut_before(std::string& text, const std::string& line) {
  ASSERT_NE(text.rfind(line), text.npos) << line;
  text.resize(text.rfind(line));
}
void drop_line_with(std::string& text, const std::string& word) {
  const std::size_t at = text.find(word);
  ASSERT_NE(at, text.npos) << word;
  const std::size_t begin = text.rfind('\n', at) + 1;
  text.erase(begin, text.find('\n', at) + 1 - begin);
}

// The output of a calculation that went so, or of another one.
std::function<void(std::string&)> is_file(const std::string& name) {
  return [name](std::string& text) { text = read_file(name); };
}

void expect_faults(const Engine& engine, const std::string& job, const std::vector<Fault>& faults,
                   const std::function<support::Outcome()>& run) {
  const std::string file = "coord-" + job + ".out";
  const std::string good = read_file(file);
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.what);
    std::string text = good;
    fault.edit(text);
    write_file(file, text);
    fs::remove("coord-" + job + ".sgn");
    const support::Outcome outcome = run();
    EXPECT_EQ(outcome.status, 1) << outcome.out;
    EXPECT_EQ(outcome.err.substr(0, 16 + file.size()), "zandor_collect: " + file);
    EXPECT_NE(outcome.err.find(fault.expected), std::string::npos) << outcome.err;
    EXPECT_FALSE(fs::exists("coord-" + job + ".sgn"));
    EXPECT_NE(outcome.out.find(std::to_string(engine.jobs - 1) + " taken"), std::string::npos);
  }
  // Cut behind any block, it is not taken.
  for (std::size_t at = 0; (at = good.find("\n\n", at + 1)) < good.find(engine.last_line);) {
    write_file(file, good.substr(0, at + 1));
    collect::JobOutput output;
    EXPECT_TRUE(support::stops(2, "", [&] { engine.read(file, {engine.natom, 0}, output); })) << at;
  }
}

TEST_F(Collect, refuses_what_is_not_whole_from_nwchem) {
  unpack(nwchem);
  const auto edit_gradient_row = [](std::string& text, const std::string& with) {
    const std::size_t at = text.find("   4 H ", text.find("TDDFT ENERGY GRADIENTS"));
    text.replace(at, text.find('\n', at) + 1 - at, with);
  };
  expect_faults(
      nwchem, "ch2o-02px",
      {{"cut before the end", [](auto& t) { cut_before(t, " Total times  cpu:"); }, "did not end"},
       {"cut in the gradient", [](auto& t) { cut_before(t, "   3 H "); }, "did not end"},
       {"gradient after three atoms", [&](auto& t) { edit_gradient_row(t, "\n"); },
        "expected a gradient for 4 atoms, found 3"},
       {"gradient that overflowed",
        [&](auto& t) { edit_gradient_row(t, "   4 H 0. 0. 0. ********** 0. 0.\n"); },
        "(finite number), found '**********'"},
       {"orbitals not converged", is_file("nwchem-orbitals.out"),
        "found 'Calculation failed to converge'"},
       {"roots not converged", is_file("nwchem-roots.out"),
        "found 'tddft_davidson: exceeded maxiter"},
       {"roots that say nothing", [](auto& t) { drop_line_with(t, "Convergence criterion met"); },
        "no line holds 'Convergence criterion met'"},
       {"ground state's gradient", is_file("nwchem-ground.out"), "no line holds 'Root N'"},
       {"no gradient of a state",
        [](auto& t) { replace_all(t, " TDDFT ENERGY GRADIENTS", " DFT ENERGY GRADIENTS"); },
        "no line holds 'TDDFT ENERGY GRADIENTS'"},
       {"another root", is_file("nwchem-root2.out"),
        "expected state 1 as in the other jobs, found state 2"},
       {"no transition moments",
        [](auto& t) { replace_all(t, "Transition Moments    X", "Transition moments    X"); },
        "no line holds 'Transition Moments    X' below 'Root 1'"},
       {"another molecule", is_file("nwchem-sulphur.out"),
        "expected atomic number 8 for atom 2 as in files.out, found 16"},
       {"another job's output", is_file("coord-ch2o-02mx.out"),
        "Angstrom away: it is that of job ch2o-02mx"},
       {"digits of another gradient",
        [](auto& t) {
          replace_all(
              t, " zandor gradient",
              " zandor gradient (Hartree/Bohr)\n 0 0 0\n 0 0 0\n 0 0 0\n 0 0 0\n zandor old");
        },
        "found one that differs by"},
       {"a program of unknown kind", [](auto& t) { replace_all(t, "NWChem", "nwchem"); },
        "expected an output of a known kind"}},
      [&] { return run(); });
  EXPECT_EQ(sign_files(), 24);
  EXPECT_EQ(run({"--list"}).out, "ch2o-02px\n");
}

TEST_F(Collect, refuses_what_is_not_whole_from_openmolcas) {
  unpack(openmolcas);
  expect_faults(
      openmolcas, "hno-03mz",
      {{"no happy landing", [](auto& t) { drop_line_with(t, "Happy landing"); },
        "no line holds 'Happy landing!'"},
       {"gradient after two atoms",
        [](auto& t) { drop_line_with(t.erase(0, 0), "  O3                "); },
        "expected a gradient for 3 atoms, found 2"},
       {"not converged", is_file("openmolcas-iterations.out"), "found 'No convergence after"},
       {"another root", is_file("openmolcas-root1.out"), "found state 1"},
       {"another job's output", is_file("coord-hno-03pz.out"), "it is that of job hno-03pz"},
       {"another program's output", is_file("nwchem-root2.out"), "found 4"},
       {"no dipole", [](auto& t) { replace_all(t, " PROPERTY: MLTPL  1", " PROPERTY: MLTPL  7"); },
        "no line holds 'PROPERTY: MLTPL  1   COMPONENT:'"},
       {"states of two wave functions",
        [](auto& t) { replace_all(t, " Root nr:        1   2", " Root nr:        1   1"); },
        "expected behind 'Root nr:'"},
       {"no gradient",
        [](auto& t) { replace_all(t, "Molecular gradients", "Molecular couplings"); },
        "no line holds 'Molecular gradients'"}},
      [&] { return run(); });
  EXPECT_NE(
      run({"--root", "1"}).err.find("expected the gradient of state 1, found that of state 2"),
      std::string::npos);
}

// Turns the signs of the numbers behind a line, in their fields of 19 columns.
void turn_numbers_behind(std::string& text, const std::string& line,
                         const std::function<bool(std::size_t)>& turns) {
  ASSERT_NE(text.find(line), text.npos) << line;
  for (std::size_t at = 0; (at = text.find(line, at)) != text.npos;) {
    at = text.find('\n', at) + 1;
    for (std::size_t number = 0, field = at;
         text.compare(field, 2, " #") != 0 && text[field] >= ' ';) {
      if (turns(number++)) text[field] = text[field] == '-' ? ' ' : '-';
      field += 19;
      if (text[field] == '\n') ++field;
    }
  }
}

TEST_F(Collect, takes_signs_from_densities_whatever_those_of_orbitals) {
  unpack(openmolcas);
  const std::string file = "coord-hno-01py.out",
                    orbital = " #  Symm                     1    Orbital                     8";
  std::string text = read_file(file);
  // The middle one of three active orbitals, hence the middle row and column of their density.
  turn_numbers_behind(text, orbital, [](std::size_t) { return true; });
  turn_numbers_behind(text, " #  Symmetries", [](std::size_t i) { return i % 2 == 1; });
  write_file(file, text);
  EXPECT_EQ(run().out.find("turned"), std::string::npos);
  turn_numbers_behind(text, " #  Symmetries", [](std::size_t) { return true; });
  write_file(file, text);
  EXPECT_NE(run().out.find("sign of the dipole turned: coord-hno-01py.sgn\n"), std::string::npos);
  // What tells where that is not printed.
  for (const auto& [line, sign_by] : {std::pair{"Nr of irreps:", "quadrupole"},
                                      std::pair{"PROPERTY: MLTPL  2", "magnetic dipole"},
                                      std::pair{"PROPERTY: ANGMOM", "leading coefficient"}}) {
    replace_all(text, line, "gone");
    write_file(file, text);
    EXPECT_EQ(nlohmann::json::parse(run({"--json"}).out)["jobs"][4]["sign_by"], sign_by);
  }
}

TEST_F(Collect, takes_printed_digits_where_there_are_no_others_and_says_so) {
  unpack(nwchem);
  ASSERT_EQ(run().status, 0);
  const SignFile full = sign_file("ch2o-01pz", 4);
  std::string text = read_file("coord-ch2o-01pz.out");
  replace_all(text, " zandor ", " other ");
  write_file("coord-ch2o-01pz.out", text);
  fs::remove("coord-ch2o-01pz.sgn");
  const support::Outcome outcome = run();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("the forces of coord-ch2o-01pz.sgn have few decimals"),
            std::string::npos);
  const SignFile printed = sign_file("ch2o-01pz", 4);
  for (std::size_t k = 0; k < 12; ++k) EXPECT_NEAR(printed.forces[k], full.forces[k], 5.1e-7);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(printed.dipole[k], full.dipole[k], 5.1e-6);
  EXPECT_NE(printed.dipole, full.dipole);
}

TEST_F(Collect, replaces_older_sign_files_only_and_names_what_is_missing) {
  unpack(openmolcas);
  ASSERT_EQ(run().status, 0);
  EXPECT_NE(read_file("coord-hno-ref.log").find("coord-hno-ref.out"), std::string::npos);
  fs::remove("coord-hno-ref.com");
  EXPECT_NE(run().out.find("\n0 sign files written\n"), std::string::npos);
  EXPECT_TRUE(fs::exists("coord-hno-ref.com"));
  write_file("coord-hno-01mx.sgn", "by hand\n");
  write_file("coord-hno-01my.sgn", "by hand\n");
  fs::last_write_time("coord-hno-01my.sgn",
                      fs::last_write_time("coord-hno-01my.out") - std::chrono::hours(1));
  fs::remove("coord-hno-01mz.out");  // its sign file is there
  fs::remove("coord-hno-01px.out");
  fs::remove("coord-hno-01px.sgn");
  fs::create_directory("coord-hno-01py");
  fs::rename("coord-hno-01py.out", "coord-hno-01py/any.out");
  const support::Outcome outcome = run();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.err,
      "zandor_collect: coord-hno-01px: expected an output with the suffix .log, .out, .fchk, "
      ".json, found none\n"
      "zandor_collect: warning: not what the outputs give, but newer, and so left alone (remove "
      "what is to be written): coord-hno-01mx.sgn\n");
  EXPECT_NE(outcome.out.find("17 taken"), std::string::npos) << outcome.out;
  EXPECT_NE(
      outcome.out.find("1 with a sign file but no output, 1 missing, 0 bad\n1 sign file written\n"),
      std::string::npos)
      << outcome.out;
  EXPECT_EQ(read_file("coord-hno-01mx.sgn"), "by hand\n");
  EXPECT_EQ(run({"--list"}).out, "hno-01px\n");
  const auto document = nlohmann::json::parse(run({"--json"}).out);
  EXPECT_EQ(document["missing"], 1);
  EXPECT_EQ(document["jobs"][4]["output"], "coord-hno-01py/any.out") << document["jobs"][4];

  fs::remove("coord-hno-ref.sgn");
  ASSERT_EQ(run({"--isotope", "H=2.014101778", "--mass", "3=17.99916"}).status, 1);
  const std::string reference = read_file("coord-hno-ref.sgn");
  EXPECT_NE(reference.find("1     2.014101778"), std::string::npos) << reference;
  EXPECT_NE(reference.find("7    14.003074000"), std::string::npos) << reference;
  EXPECT_NE(reference.find("8    17.999160000"), std::string::npos) << reference;

  fs::remove("coord-hno-ref.com");
  fs::remove("coord-hno-ref.out");
  const support::Outcome nothing = run();
  EXPECT_EQ(nothing.status, 2);
  EXPECT_EQ(nothing.err,
            "zandor_collect: coord-hno-ref.com: expected the geometry of the reference here or in "
            "an output of job hno-ref, found neither\n");
}

}  // namespace

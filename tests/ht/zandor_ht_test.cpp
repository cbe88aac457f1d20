// The program zandor_ht as a user runs it, on real job directories.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "support/support.hpp"

namespace {

namespace fs = std::filesystem;

constexpr const char* formaldehyde = "examples/formaldehyde-s1";
constexpr const char* formaldehyde_c2v = "examples/formaldehyde-s1-c2v";
constexpr const char* water = "tests/ht/cases/water-s1";
constexpr const char* water_c2v = "tests/ht/cases/water-s1-c2v";

using nlohmann::json;

// What zandor_export gives, turned (x to y, y to z, z to x) and shifted.
json turned(const json& before) {
  json all = before;
  const auto to = [](std::size_t i) { return i / 3 * 3 + (i % 3 + 1) % 3; };
  for (std::size_t i = 0; i < before["geometry"].size(); ++i) {
    all["geometry"][to(i)] = before["geometry"][i].get<double>() + 1.5;
    for (std::size_t j = 0; j < before["geometry"].size(); ++j) {
      all["hessian"][to(i)][to(j)] = before["hessian"][i][j];
    }
  }
  return all;
}

class ZandorHt : public testing::Test {
 protected:
  static support::Outcome run(std::vector<std::string> options) {
    options.insert(options.begin(), ZANDOR_HT);
    options.emplace_back("control.inp");
    return support::run(options);
  }

  // The job directory in a folder of its own, which becomes the working folder.
  void enter(const std::string& directory) {
    fs::current_path(folder_.path());
    const fs::path copy = "job-" + std::to_string(++copies_);
    fs::copy(fs::path(PROJECT_FOLDER) / directory, copy);
    fs::current_path(copy);
  }

  static nlohmann::json results(std::vector<std::string> options) {
    options.emplace_back("--json");
    const support::Outcome outcome = run(options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return nlohmann::json::parse(outcome.out);
  }

  static std::string exported(const char* format, const char* masses = "--isotope=H=1.007825") {
    return support::run({ZANDOR_EXPORT, format, masses, "control.inp"}).out;
  }

  // Runs it and expects this status and text on standard error.
  static void expect(int status, const std::string& text, const std::vector<std::string>& options) {
    const support::Outcome outcome = run(options);
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_EQ(outcome.out.empty(), status != 0);
    EXPECT_NE(outcome.err.find(text), std::string::npos) << outcome.err;
  }

  support::TempFolder folder_;
  int copies_ = 0;
};

TEST_F(ZandorHt, gives_the_oscillator_strengths_of_formaldehyde_and_water) {
  enter(formaldehyde);
  // An ordinary log of a program that is not known by name.
  support::write_file("coord-ch2o-s1-ref.log", "This run of MOLCAS\n");
  expect(0, "zandor_ht: *** WARNING: Unknown output type with file", {"--csv"});
  const auto found = results({"--energy", "3.3769", "--energy-kind", "vertical"});
  EXPECT_EQ(found["totals"]["reference_oscillator_strength"], 0.0);
  EXPECT_NEAR(found["totals"]["oscillator_strength"], 2.07e-5, 5e-8);
  ASSERT_EQ(found["modes"].size(), 6U);
  const auto& imaginary = found["modes"][0];
  EXPECT_LT(imaginary["frequency"], 0.0);
  EXPECT_TRUE(imaginary["dmu_dq"].is_null() && imaginary["oscillator_strength"].is_null());
  EXPECT_NEAR(imaginary["dmu_dQ_debye"][1], 205.06 * imaginary["dmu_dQ"][1].get<double>(), 1e-4);
  double sum = 0.0;
  for (std::size_t i = 1; i < 6; ++i) {
    const auto& mode = found["modes"][i];
    EXPECT_EQ(mode["mode"], 7 + i);
    EXPECT_GT(mode["overlap"], 0.999);
    EXPECT_NEAR(mode["strength"], std::pow(mode["dmu_dq"].get<double>(), 2) / 2, 1e-18);
    EXPECT_EQ(mode["share"].is_null(), mode["strength"] == 0.0);
    if (!mode["share"].is_null()) sum += mode["share"].get<double>();
  }
  EXPECT_NEAR(found["modes"][1]["oscillator_strength"], 8.4e-6, 5e-8);
  EXPECT_NEAR(found["modes"][5]["oscillator_strength"], 1.23e-5, 5e-8);
  EXPECT_NEAR(sum, 1.0, 1e-12);

  enter(water);
  const auto bright = results({"--energy=8.1222", "--energy-kind=vertical"});
  EXPECT_NEAR(bright["totals"]["reference_oscillator_strength"], 0.01645052, 5e-7);
}

TEST_F(ZandorHt, gives_the_same_from_derived_and_from_computed_jobs) {
  const struct {
    const char *computed, *derived, *characters;
  } cases[] = {{formaldehyde, formaldehyde_c2v, "+,-,-"}, {water, water_c2v, "-,+,-"}};
  for (const auto& [computed, derived, characters] : cases) {
    enter(computed);
    const auto expected = results({});
    EXPECT_TRUE(expected["derived_jobs"].is_null());
    enter(derived);
    const auto found = results({});
    EXPECT_EQ(found["derived_jobs"]["shown"], characters);
    EXPECT_LE(found["sum_rules"]["worst_ratio_to_bound"], 1.0);
    ASSERT_EQ(found["modes"].size(), expected["modes"].size());
    for (std::size_t i = 0; i < expected["modes"].size(); ++i) {
      const auto& a = expected["modes"][i];
      const auto& b = found["modes"][i];
      EXPECT_EQ(a["mode"], b["mode"]);
      EXPECT_NEAR(a["frequency"], b["frequency"], 0.01);
      for (std::size_t k = 0; k < 3; ++k) {
        // Half a digit (5e-6) over dx (0.0094) per coordinate, over sqrt(m) of hydrogen (43).
        const double other = std::abs(b["dmu_dQ"][k].get<double>());
        EXPECT_NEAR(std::abs(a["dmu_dQ"][k].get<double>()), other, 1.2e-5) << derived << a["mode"];
      }
    }
  }
}

TEST_F(ZandorHt, gives_no_strength_to_the_rounding_of_dipoles) {
  enter(formaldehyde);
  for (const auto& entry : fs::directory_iterator(".")) {
    if (entry.path().extension() != ".sgn") continue;
    // Only those of modes 8 and 12 are along x.
    support::run({"sed", "-i", "-E", "s/(S0->S1 +1 +)-?[0-9.]+/\\10.00000/", entry.path()});
  }
  const auto found = results({});
  EXPECT_EQ(found["totals"]["strength"], 0.0);
  for (const auto& mode : found["modes"]) EXPECT_TRUE(mode["share"].is_null()) << mode;
  const std::string table = run({}).out;
  EXPECT_NE(table.find("\nno strength in first order"), std::string::npos) << table;
  EXPECT_EQ(table.find('%'), std::string::npos) << table;
}

TEST_F(ZandorHt, refuses_characters_that_cannot_be_told) {
  enter(formaldehyde_c2v);
  support::edit_file("coord-ch2o-s1-01px.sgn", "   0.00264", "  -0.00264");
  expect(2, "no characters of the operations suit the transition dipoles", {});
  expect(0, "coord-ch2o-s1-01px.sgn", {"--characters=+,-,-"});
}

TEST_F(ZandorHt, names_turned_signs_and_settles_them) {
  enter(formaldehyde);
  const auto expected = results({});
  // The least of the dipoles that are not zero.
  support::edit_file("coord-ch2o-s1-03mz.sgn", "  -0.00007", "   0.00007");
  expect(0, "the sign of coord-ch2o-s1-03mz.sgn seems to have turned", {});
  EXPECT_NE(results({})["modes"], expected["modes"]);
  const auto settled = results({"--settle-signs"});
  EXPECT_EQ(settled["modes"], expected["modes"]);
  EXPECT_EQ(settled["signs"]["turned_files"][0], "coord-ch2o-s1-03mz.sgn");
  const std::string csv = run({"--settle-signs", "--csv"}).out;
  EXPECT_NE(csv.find("# signs turned back: coord-ch2o-s1-03mz.sgn\n"), std::string::npos) << csv;
  support::edit_file("coord-ch2o-s1-02mx.sgn", "0.00075", "0.00300");
  expect(0, "a state may have changed", {});
  expect(2, "a state may have changed", {"--settle-signs"});
}

TEST_F(ZandorHt, adds_temperature_energy_and_other_masses) {
  enter(water);
  const auto found = results({"--temperature", "1000", "--energy", "8", "--energy-kind", "0-0",
                              "--emission", "--isotope", "H=2.014101778", "--mass", "1=17.999"});
  const auto& mode = found["modes"][2];
  const double omega = mode["frequency"].get<double>() / 219474.6307;
  const double strength = mode["strength"];
  EXPECT_NEAR(mode["thermal"], strength / std::tanh(omega / (2 * 3.1668115634556e-6 * 1000)),
              1e-15);
  EXPECT_NEAR(mode["oscillator_strength"], 2.0 / 3.0 * (8 / 27.211386245988 - omega) * strength,
              1e-15);
  EXPECT_EQ(found["process"], "emission");
  EXPECT_EQ(found["molecule"]["masses_changed"].dump(),
            R"([{"element":"H","mass":2.014101778},{"atom":1,"mass":17.999}])");
  EXPECT_LT(mode["frequency"], 3771.0 * 0.75);
  for (const auto& [energy, left_out] : {std::pair("--energy=0.1", 2), {"--energy=0.3", 1}}) {
    const auto totals = results({energy, "--energy-kind=0-0", "--emission"})["totals"];
    EXPECT_EQ(totals["modes_without_oscillator_strength"], left_out);
    EXPECT_EQ(totals["oscillator_strength"].is_null(), left_out == 2);
  }
  const std::string csv = run({"--csv", "--temperature=0", "--mass=1=17.999"}).out;
  EXPECT_NE(csv.find("\n# masses changed: atom 1 (O) 17.999\n"), std::string::npos) << csv;
  // The imaginary mode's line holds as many commas as the others, empty where it has no value.
  EXPECT_NE(csv.find(",,,,,0.99"), std::string::npos) << csv;
}

TEST_F(ZandorHt, adds_degenerate_modes_up) {
  enter("examples/ammonia-s1-c3v");
  const auto found = results({});
  ASSERT_EQ(found["degenerate"].size(), 2U);
  EXPECT_EQ(found["degenerate"][0]["modes"], (std::vector<int>{7, 8}));
  EXPECT_NEAR(found["degenerate"][0]["strength"], 2 * found["modes"][0]["strength"].get<double>(),
              1e-15);
  EXPECT_NE(run({}).out.find("\n degenerate modes together\n     7+8    997.6"), std::string::npos);
}

TEST_F(ZandorHt, finds_its_own_modes_in_a_file_however_that_is_turned) {
  for (const char* const example : {formaldehyde, formaldehyde_c2v}) {
    enter(example);
    const json heavy = json::parse(exported("json", "--isotope=H=2.014101778"));
    support::write_file("deuterated", turned(heavy).dump());
    support::write_file("turned", turned(json::parse(exported("json"))).dump(1));
    for (const char* const format : {"json", "fchk", "hess"}) {
      support::write_file(format, exported(format));
    }
    for (const char* const name : {"json", "turned", "fchk", "hess", "deuterated"}) {
      for (const char* const mass : {"H=1.007825", "H=2.014101778"}) {
        if (std::string(name) == "deuterated" && mass[2] == '1') continue;
        const auto expected = results({"--isotope", mass});
        // Masses are those of the file, unless they are changed.
        std::vector<std::string> options = {"--modes-of", name, "--isotope", mass};
        if (std::string(name) == "deuterated") options.resize(2);
        const auto found = results(options);
        EXPECT_NEAR(found["modes_of"]["distance"], 0.0, 1e-8) << name;
        ASSERT_EQ(found["modes"].size(), expected["modes"].size());
        for (std::size_t i = 0; i < expected["modes"].size(); ++i) {
          const auto& a = expected["modes"][i];
          const auto& b = found["modes"][i];
          EXPECT_NEAR(a["frequency"], b["frequency"], 1e-5) << name;
          if (options.size() == 2) continue;  // the report's modes, and their numbers, are others
          EXPECT_EQ(a["mode"], b["mode"]) << name;
          for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(a["dmu_dQ"][k], b["dmu_dQ"][k], 1e-9);
        }
        EXPECT_NEAR(found["totals"]["strength"], expected["totals"]["strength"], 1e-11) << name;
      }
    }
  }
}

TEST_F(ZandorHt, takes_the_modes_of_the_ground_state) {
  enter(formaldehyde);
  const std::string file = PROJECT_FOLDER "/examples/formaldehyde-s0.fchk";
  const auto found = results({"--modes-of", file});
  EXPECT_NEAR(found["modes_of"]["distance"], 0.0405, 5e-5);
  EXPECT_EQ(found["modes_of"]["farthest_atom"], 1);
  const auto& out_of_plane = found["modes"][0];
  EXPECT_NEAR(out_of_plane["frequency"], 1198.10, 0.02);  // of NWChem
  // The derivative hardly changes: the motion is the same.
  EXPECT_NEAR(out_of_plane["dmu_dQ"][1], results({})["modes"][0]["dmu_dQ"][1], 1e-5);
  EXPECT_NEAR(out_of_plane["share"], 0.85, 0.005);
  EXPECT_EQ(found["totals"]["modes_left_out"], 0);
  expect(2,
         "within 0.04 Angstrom (root mean square) of that of the jobs (see --within), found one "
         "0.0405",
         {"--modes-of", file, "--within=0.04"});
}

TEST_F(ZandorHt, refuses_files_that_hold_no_modes_of_the_molecule) {
  enter(formaldehyde);
  json changed = json::parse(exported("json"));
  const std::string fchk = exported("fchk"), hess = exported("hess"), text = changed.dump();
  changed["hessian"][0][5] = 0.3;
  const std::string skew = changed.dump();
  const struct {
    const std::string& good;
    const char *from, *to, *message;
  } cases[] = {
      {fchk, "           8 ", "           7 ",
       "expected atomic number 8 for atom 2 as in files.out, found 7"},
      {fchk, "N=          12", "N=          -1",
       "file:17: expected 'Current cartesian coordinates' with 12 values"},
      {fchk, "N=          78",
       "N=", "file:29: expected the number of values of 'Cartesian Force Constants'"},
      {fchk, "Cartesian Force", "Cartesian force",
       "expected 'Cartesian Force Constants', found the end of the file"},
      {fchk, " 1.599", "-1.599",
       "file: expected masses, places and force constants of a molecule, found others"},
      {fchk, " 1.599", "x1.599",
       "file:22: expected 'Real atomic weights', value 2 (number), found"},
      {fchk, "Number of atoms", "Number of electrons", "file:1: expected a formatted checkpoint"},
      {hess, "$hessian\n12", "$hessian\n15",
       "file:14: expected the number of coordinates 12, found 15"},
      {hess, "5                  6", "5                  7",
       "file:28: expected the column of the force constants 6, found 7"},
      {hess, "\n    3 ", "\n    4 ", "file:19: expected the row of the force constants 3, found 4"},
      {hess, "C    12.000000000", "C", "a coordinate of an atom"},
      {hess, "\n   O ", "\n   Q ", "expected atomic number 8 for atom 2 as in files.out, found 0"},
      {text, "zandor_vibrations", "vibrations", "file:1: expected 'schema_name' to be"},
      {text, "\"masses\":[", "\"masses\":[1,", "file:1: expected 'masses' with 4 values for"},
      {text, "\"masses\":[", "\"masses\":[null,",
       "file:1: expected finite numbers in 'masses', found null"},
      {text, "\"geometry\":", "\"geometry\":[1,2],\"g\":", "expected 'geometry' with 12 values"},
      {text, "\"hessian\"", "\"Hessian\"", "expected 'hessian', found the end of the file"},
      {text, "\"step\":", "\"step\":[[[[[[[[[[[[[[[[[[", "expected at most 16 brackets within"},
      {skew, "{", "{", "file: expected symmetric force constants, found two that differ by 0."},
      {text, "\"hessian\":[[-0.", "\"hessian\":[[-1000.",
       "file: expected masses, places and force constants of a molecule, found others"},
      {text, "}", "", "file:1: expected a JSON object, found a text that is none"},
  };
  for (const auto& [good, from, to, message] : cases) {
    support::write_file("file", good);
    support::edit_file("file", from, to);
    SCOPED_TRACE(message);
    expect(2, message, {"--modes-of=file"});
  }
}

TEST_F(ZandorHt, broadens_strengths_to_lines_of_their_area) {
  enter(water);
  const auto modes = results({"--temperature=3000"});
  const double strength = modes["totals"]["strength"];
  const double thermal =
      modes["totals"]["thermal"].get<double>() - modes["totals"]["reference_square"].get<double>();
  const auto spectrum = [](const std::vector<std::string>& more) {
    std::vector<std::string> options = {"--spectrum", "-50000", "50000", "5", "--width=40"};
    options.insert(options.end(), more.begin(), more.end());
    return results(options)["spectrum"];
  };
  // A Gaussian has no end to speak of; of each Lorentzian W / (pi 50000) is beyond either end.
  const auto check_area = [](const json& found, double area, double lost) {
    double sum = 0.0;
    for (const double value : found["strength"]) sum += 5.0 * value;
    EXPECT_NEAR(sum / area, 1.0 - lost, 3e-6) << found["shape"];
  };
  const auto absorption = spectrum({"--origin=5000"});
  check_area(absorption, strength, 0.0);
  check_area(spectrum({"--shape=lorentz"}), strength, 40 / (M_PI * 50000));
  check_area(spectrum({"--temperature=3000"}), thermal, 0.0);
  const auto emission = spectrum({"--origin=-5000", "--emission"});
  ASSERT_EQ(absorption["strength"].size(), 20001U);
  const double place = 5000 + modes["modes"][2]["frequency"].get<double>();
  const auto at = static_cast<std::size_t>(std::round((place + 50000) / 5));
  EXPECT_NEAR(absorption["wavenumber"][at], place, 2.5);
  for (std::size_t i = at - 10; i < at + 10; ++i) {
    EXPECT_NEAR(emission["strength"][20000 - i], absorption["strength"][i], 1e-20);
  }
  // Half as high at half the width.
  const auto height = [&](double away) -> double {
    const std::string from = std::to_string(place - 5000 + away);
    return results({"--spectrum", from, "1e4", "1e4", "--width=0.5"})["spectrum"]["strength"][0];
  };
  EXPECT_NEAR(height(0.25) / height(0.0), 0.5, 1e-4);
  const support::Outcome narrow =
      run({"--spectrum", "0", "10", "5", "--width=1e-320", "--shape=lorentz"});
  EXPECT_NE(narrow.err.find("the points of the spectrum are 5 cm-1 apart, further"),
            std::string::npos);
  EXPECT_EQ(narrow.out.find("nan"), std::string::npos);
  const std::string csv = run({"--spectrum", "0", "1", "0.1", "--width=9"}).out;
  EXPECT_NE(
      csv.find("\n# 1 imaginary (or zero) left out\nwavenumber_cm-1,strength_au_per_cm-1\n0,"),
      std::string::npos)
      << csv;
  EXPECT_NE(csv.find("\n0.3,"), std::string::npos) << csv;
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n') - std::count(csv.begin(), csv.end(), '#'), 12);
}

TEST_F(ZandorHt, says_what_it_does_not_understand) {
  enter(water);
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"--temperature=-1"}, "expected behind --temperature a number of 0 or more, found -1"},
      {{"--energy=0", "--energy-kind=0-0"}, "expected behind --energy a number above 0, found 0"},
      {{"--energy=1"}, "--energy requires --energy-kind"},
      {{"--energy-kind=0-0"}, "requires --energy"},
      {{"--emission"}, "expected --energy or --spectrum beside --emission, found neither"},
      {{"--modes-of=none", "--within=-1"},
       "expected behind --within a number of 0 or more, found -1"},
      {{"--modes-of", ""}, "expected a file that can be read"},
      {{"--modes-of=none"}, "none: expected a file that can be read"},
      {{"--spectrum", "0", "9", "1"}, "--spectrum requires --width"},
      {{"--width=1"}, "--width requires --spectrum"},
      {{"--spectrum", "0", "9", "0", "--width=1"}, "a STEP above 0 with at most 1000000 points"},
      {{"--spectrum", "9", "0", "1", "--width=1"}, "MIN below MAX"},
      {{"--spectrum", "0", "1e7", "1", "--width=1"}, "found 0 1e+07 1"},
      {{"--spectrum", "0", "nan", "1", "--width=1"}, "found 0 NaN 1"},
      {{"--spectrum", "0", "9", "1", "--width=0"},
       "expected behind --width a number above 0, found 0"},
      {{"--spectrum", "0", "9", "1", "--width=1", "--origin=inf"},
       "behind --origin a number, found 0 9 1 and Infinity"},
      {{"--mass=4=1"}, "expected an atom within 1..3 behind --mass, found 4"},
      {{"--mass", "O=1"}, "expected --mass ATOM=MASS"},
      {{"--characters", ""}, "for each of the 0 operations other than the identity"},
      {{"more.inp"}, "The following argument was not expected: control.inp"},
  };
  for (const auto& [options, message] : cases) expect(2, message, options);
  support::edit_file("coord-h2o-ref.com", "0.75720000", "0.85720000");
  expect(0, "coord-h2o-ref.com: the geometry is not that of coord-h2o-ref.sgn", {});
  expect(0, "no job is derived: the characters are not used", {"--characters=+"});
  EXPECT_NE(support::run({"sh", "-c", "\"$0\" control.inp >/dev/full", ZANDOR_HT})
                .err.find("standard output: cannot write: No space"),
            std::string::npos);
  fs::remove("coord-h2o-02py.sgn");
  expect(2, "coord-h2o-02py.sgn", {});
}

}  // namespace

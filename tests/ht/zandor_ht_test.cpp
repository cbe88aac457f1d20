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

TEST_F(ZandorHt, says_what_it_does_not_understand) {
  enter(water);
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"--temperature=-1"}, "expected behind --temperature a number of 0 or more, found -1"},
      {{"--energy=0", "--energy-kind=0-0"}, "expected behind --energy a number above 0, found 0"},
      {{"--energy=1"}, "--energy requires --energy-kind"},
      {{"--energy-kind=0-0"}, "requires --energy"},
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

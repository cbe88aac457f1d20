// The writers on a small molecule made by hand: every number that they write is known.
#include "export/formats.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "io/units.hpp"
#include "support/support.hpp"

namespace {

using exporting::Content;
using exporting::ModeList;

constexpr int unit = 13;

// What a writer writes.
std::string text_of(const std::function<void(io::OutputFile& out)>& write) {
  const support::TempFolder folder;
  io::open_replaced(unit, "out");
  write(io::output(unit));
  io::close(unit);
  return support::read_file("out");
}

// Six modes of two atoms: number k moves coordinate k alone. Rigid weights pick out five of them.
ModeList mode_list() {
  ModeList list;
  list.frequencies = {-500.25, -1e-7, 0.0, 0.0, 1.5, 2000.0};
  list.reduced_masses = {2.0, 1.0, 1.0, 1.0, 1.0, 1.5};
  list.rigid_weights = {1e-20, 0.75, 1.0, 1.0, 1.0, 0.8};
  list.rigid = {false, true, true, true, true, true};
  list.dipole_derivatives.assign(18, 0.0);
  list.dipole_derivatives[1] = 0.125;
  list.strengths = {0, 0, 0, 0, 3, 8};
  list.displacements = {"displacements", {3, 2, 6}};
  for (int k = 1; k <= 6; ++k) list.displacements((k - 1) % 3 + 1, (k - 1) / 3 + 1, k) = 1.0;
  list.displacements(1, 1, 6) = -0.25;
  return list;
}

Content molecule() {
  Content content;
  content.control_file = "</script>\"\\\n";
  content.notes = {{"gr\xc3\xbc\xc3\x9f", true}, {"no UTF-8: \xfc"}};
  content.symbols = {"Cl", "X"};
  content.atomic_numbers = {17, 0};
  content.masses = {34.96885268, 1.1};
  content.geometry = {0.1, -200000, 1e-300, 0.0, 0.0, 2.4};
  content.view = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  content.step = 0.01;
  content.hessian = {"hessian", {6, 6}};
  for (int i = 1; i <= 6; ++i) content.hessian(i, i) = i / 3.0;
  content.dipole = {1e-30, 2e22, -0.0};
  content.projected = mode_list();
  content.unprojected = mode_list();
  return content;
}

TEST(Formats, write_molden_without_blank_lines_exponents_or_rigid_motions) {
  Content content = molecule();
  const auto written = [&](const ModeList& list) {
    return text_of([&](io::OutputFile& out) { exporting::write_molden(content, list, out); });
  };
  EXPECT_EQ(written(exporting::vibrations(content.projected)),
            "[Molden Format]\n[Atoms] AU\n"
            "  Cl 1 17      0.1000000000 -200000.0000000000      0.0000000000\n"
            "   X 2 0      0.0000000000      0.0000000000      2.4000000000\n"
            "[N_FREQ]\n1\n[FREQ]\n     -500.250000\n[FR-COORD]\n"
            "  Cl      0.1000000000 -200000.0000000000      0.0000000000\n"
            "   X      0.0000000000      0.0000000000      2.4000000000\n"
            "[FR-NORM-COORD]\nvibration 1\n"
            "      1.0000000000      0.0000000000      0.0000000000\n"
            "      0.0000000000      0.0000000000      0.0000000000\n");
  content.changed_masses = "masses changed: all H 2.014";
  const std::string all = written(content.projected);
  EXPECT_NE(all.find("[Molden Format]\n[Title]\nmasses changed: all H 2.014\n[Atoms] AU\n"),
            std::string::npos);
  EXPECT_NE(all.find("vibration 6\n     -0.2500000000"), std::string::npos);
  EXPECT_EQ(all.find("vibration 7"), std::string::npos);
}

TEST(Formats, write_json_that_reads_back_bit_by_bit) {
  Content content = molecule();
  const auto written = [&] {
    return text_of([&](io::OutputFile& out) { exporting::write_json(content, out); });
  };
  auto json = nlohmann::json::parse(written());
  EXPECT_EQ(json["provenance"]["control_file"], content.control_file);
  EXPECT_EQ(json["provenance"]["notes"],
            nlohmann::json({"gr\xc3\xbc\xc3\x9f", "no UTF-8: \xef\xbf\xbd"}));
  EXPECT_EQ(json["masses"].get<std::vector<double>>(), content.masses);
  EXPECT_EQ(json["geometry"].get<std::vector<double>>(), content.geometry);
  EXPECT_EQ(json["hessian"][4][4], 5 / 3.0);
  EXPECT_EQ(json["transition_dipole"], content.dipole);
  EXPECT_FALSE(json.contains("transition_dipole_gradient"));
  EXPECT_EQ(json["projected"]["displacements"][5][0][0], -0.25);
  EXPECT_EQ(json["unprojected"]["displacements"][5][1][2], 1.0);
  EXPECT_EQ(json["projected"]["transition_dipole_derivatives"][0][1], 0.125);
  content.dipole_gradient.resize(18);
  content.dipole_gradient[9 + 3 * 2 + 1] = 7.0;  // atom 2, along z, of the y component
  json = nlohmann::json::parse(written());
  EXPECT_EQ(json["transition_dipole_gradient"][1][2][1], 7.0);
  content.step = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(support::stops(2, "expected finite numbers to write", [&] { written(); }));
}

TEST(Formats, refuse_numbers_that_do_not_fit_their_columns) {
  Content content = molecule();
  const auto stops = [&](auto write, const char* found) {
    return support::stops(
        2, "expected numbers that fit the columns of the format, found " + std::string(found),
        [&] { text_of([&](io::OutputFile& out) { write(content, out); }); });
  };
  EXPECT_TRUE(stops(exporting::write_hess, "-2e+05"));  // with 12 decimals
  content.geometry[1] = 1e-300;
  EXPECT_NE(text_of([&](io::OutputFile& out) {
              exporting::write_fchk(content, out);
            }).find("  0.00000000E+00"),
            std::string::npos);
  content.hessian(1, 2) = -1e99;
  EXPECT_TRUE(stops(exporting::write_fchk, "-1e+99"));
  EXPECT_TRUE(stops(exporting::write_hess, "-1e+99"));
}

// What the page makes of the packed displacements, which the browser's test looks at, too.
TEST(Formats, pack_displacements_into_16_bits) {
  double scale = 0.0;
  const double values[] = {0.5, -0.5, 0.25, 0.0, -1e-9, 0.1};
  EXPECT_EQ(exporting::packed_displacements(values, 6, scale), "/38BgABAAAAAAJkZ");
  EXPECT_EQ(scale, 0.5);
  const double zeros[3] = {};
  EXPECT_EQ(exporting::packed_displacements(zeros, 3, scale), "AAAAAAAA");
  EXPECT_EQ(scale, 0.0);
}

TEST(Formats, write_a_page_whose_data_no_text_can_end) {
  Content content = molecule();
  content.projected.rigid = {true, true, true, true, true, false};
  const std::string page =
      text_of([&](io::OutputFile& out) { exporting::write_html(content, out); });
  const std::string begin = "<script type=\"application/json\" id=\"data\">";
  const std::size_t from = page.find(begin) + begin.size();
  const auto data = nlohmann::json::parse(page.substr(from, page.find('<', from) - from));
  EXPECT_EQ(data["control_file"], content.control_file);
  EXPECT_EQ(data["notes"][0]["warning"], true);
  EXPECT_EQ(data["formula"], nlohmann::json({"Cl", "", "X", ""}));
  EXPECT_EQ(data["radii"], nlohmann::json({1.02, 1.5}));
  EXPECT_EQ(data["columns"].size(), 10U);
  const auto& rows = data["projected"]["rows"];
  EXPECT_EQ(rows[5], nlohmann::json({6, 2000.0, 1.5, 0.8, 0, 0.0, 0.0, 0.0, 4.0, 8.0}));
  EXPECT_EQ(rows[4][9], nullptr) << "a rigid motion";
  EXPECT_EQ(data["unprojected"]["rows"][0][9], nullptr) << "an imaginary mode";
  EXPECT_EQ(page.find("unsafe"), std::string::npos);
  EXPECT_EQ(page.find("@DATA@"), std::string::npos);
}

}  // namespace

// Outputs of programs that are not at hand, written here after their layouts from the sign files of
// an example: every format in turned axes, with signs as they come and in other units.
#include <gtest/gtest.h>

#include <Eigen/Geometry>
#include <nlohmann/json.hpp>

#include "collect/frame.hpp"
#include "collect/sign_marks.hpp"
#include "flib/units_of_measure.hpp"
#include "support/support.hpp"
#include "zandor/sign_file.hpp"

namespace {

namespace fs = std::filesystem;

const fs::path example = fs::path(PROJECT_FOLDER) / "examples/formaldehyde-s1";
constexpr int natom = 4;
const std::vector<int> numbers = {6, 8, 1, 1};
const std::string prefix = "coord-ch2o-s1-";

struct Job {
  std::string name;
  Eigen::Matrix3Xd places = Eigen::Matrix3Xd(3, natom), forces = Eigen::Matrix3Xd(3, natom);
  Eigen::Vector3d dipole;
};

std::vector<Job> example_jobs() {
  std::vector<Job> jobs(1 + 6 * natom);
  for (int i = 0; i <= 6 * natom; ++i) {
    Job& job = jobs[static_cast<std::size_t>(i)];
    const int k = (i - 1) / 2;
    job.name =
        i == 0 ? "ref" : "0" + std::to_string(k / 3 + 1) + (i % 2 == 0 ? "p" : "m") + "xyz"[k % 3];
    zandor::read_input_file((example / (prefix + "ref.com")).string(), natom, job.places.data());
    zandor::read_sign_file((example / (prefix + job.name + ".sgn")).string(), 1, natom,
                           job.dipole.data(), job.forces.data());
    if (i > 0) job.places(k % 3, k / 3) += i % 2 == 0 ? 0.005 : -0.005;
  }
  return jobs;
}

// The axes and the sign in which a program happens to give a job.
struct View {
  Eigen::Matrix3d turn;
  Eigen::Vector3d shift;
  double sign;
};
View view_of(std::size_t job) {
  const double angle = 0.3 * static_cast<double>(job);
  return {Eigen::AngleAxisd(angle, Eigen::Vector3d(1.0, 2.0, -0.5).normalized()).matrix(),
          {0.1, -2.0, angle},
          job % 3 == 1 ? -1.0 : 1.0};
}
// What turns with the wave function, in the axes of the list.
const Eigen::Vector3d velocity(0.3, -0.2, 0.5);
const Eigen::Matrix3d quadrupole = velocity * velocity.transpose();

std::string row(const char* format, const Eigen::Vector3d& v) {
  char text[200];
  std::snprintf(text, sizeof text, format, v(0), v(1), v(2));
  return text;
}

std::string as_json(const Job& job, const View& view) {
  const auto rows = [](const Eigen::Matrix3Xd& m) {
    std::vector<std::vector<double>> all;
    for (const auto& column : m.colwise()) all.emplace_back(column.begin(), column.end());
    return all;
  };
  const auto list = [](const Eigen::Vector3d& v) {
    return std::vector<double>(v.begin(), v.end());
  };
  const double bohr = flib::angstrom_per_bohr;
  const Eigen::Matrix3Xd places = ((view.turn * job.places).colwise() + view.shift) / bohr;
  const Eigen::Matrix3Xd gradient =
      -view.turn * job.forces * (flib::electronvolts_per_hartree / bohr);
  const Eigen::Matrix3d q = view.sign * view.turn * quadrupole * view.turn.transpose();
  const nlohmann::json document = {
      {"format", "zandor-job"},
      {"finished", true},
      {"program", "mine 1.0"},
      {"state", 1},
      {"units", {{"length", "Bohr"}, {"force", "eV/Angstrom"}, {"dipole", "Debye"}}},
      {"symbols", {"C", "O", "H", "H"}},
      {"geometry", rows(places)},
      {"gradient", rows(gradient)},
      {"transition_dipole", list(view.turn * job.dipole * (view.sign * flib::debye_per_au))},
      {"transition_quadrupole", {q(0, 0), q(0, 1), q(0, 2), q(1, 1), q(1, 2), q(2, 2)}}};
  return document.dump();
}

std::string fchk_array(const std::string& name, const std::vector<double>& values) {
  char text[100];
  std::snprintf(text, sizeof text, "%-40s   R   N=%12zu\n", name.c_str(), values.size());
  std::string all = text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::snprintf(text, sizeof text, "%16.8E%s", values[i],
                  i % 5 == 4 || i + 1 == values.size() ? "\n" : "");
    all += text;
  }
  return all;
}

std::string as_fchk(const Job& job, const View& view) {
  const auto flat = [](const Eigen::Matrix3Xd& m) {
    return std::vector<double>(m.data(), m.data() + m.size());
  };
  std::vector<double> states(2 * 16 + 48, 0.0);
  const Eigen::Vector3d dipole = view.sign * view.turn * job.dipole;
  const Eigen::Vector3d turning = view.sign * view.turn * velocity;
  for (int k = 0; k < 3; ++k) {  // the second state is the one that was followed
    states[static_cast<std::size_t>(17 + k)] = dipole(k);
    states[static_cast<std::size_t>(20 + k)] = turning(k);
  }
  return "title\nForce     RCIS      6-31G\nNumber of atoms                            I           "
         "     4\n"
         "Atomic numbers                             I   N=           4\n           6           8  "
         "         1           1\n" +
         fchk_array(
             "Current cartesian coordinates",
             flat(((view.turn * job.places).colwise() + view.shift) / flib::angstrom_per_bohr)) +
         fchk_array("Cartesian Gradient", flat(-view.turn * job.forces)) +
         "ETran scalars                              I   N=           5\n           2           2  "
         "         0           0           2\n" +
         fchk_array("ETran state values", states);
}

// The forces stand in the axes of the input, the moments in the standard orientation.
std::string as_gaussian_log(const Job& job, const View& view) {
  const auto orientation = [](const char* title, const Eigen::Matrix3Xd& places) {
    std::string text = std::string("      ") + title + "\n ----\n Center\n Number\n ----\n";
    for (int a = 0; a < natom; ++a) {
      text += " " + std::to_string(a + 1) + " " +
              std::to_string(numbers[static_cast<std::size_t>(a)]) + " 0" +
              row(" %12.6f%12.6f%12.6f\n", places.col(a));
    }
    return text + " ----\n";
  };
  const auto moments = [&](const char* kind, const Eigen::Vector3d& moment, const char* format) {
    return std::string(" Ground to excited state transition ") + kind +
           " moments (Au):\n       state          X           Y           Z\n" +
           row("         1    9.0000    9.0000    9.0000\n", {}) + "         2    " +
           row(format, view.sign * view.turn * moment);
  };
  std::string text =
      " Entering Gaussian System, Link 0=g16\n *****************\n Gaussian 16:  ES64L-G16RevC.01  "
      "3-Jul-2019\n" +
      orientation("Input orientation:", job.places) +
      orientation("Standard orientation:", (view.turn * job.places).colwise() + view.shift) +
      moments("electric dipole", job.dipole, "%14.8f%14.8f%14.8f\n") +
      moments("velocity dipole", velocity, "%10.4f%10.4f%10.4f\n") +
      " Excited State   1:      Singlet-A      3.9709 eV  312.23 nm  f=0.0010  <S**2>=0.000\n      "
      " 7 -> 9         0.7\n"
      " Excited State   2:      Singlet-A      4.9709 eV  250.23 nm  f=0.0010  <S**2>=0.000\n      "
      " 8 -> 9         0.69\n"
      " This state for optimization and/or second-order correction.\n Total Energy, E(CIS) =  "
      "-113.5500\n"
      " ***** Axes restored to original set *****\n"
      " Center     Atomic                   Forces (Hartrees/Bohr)\n Number     Number\n ----\n";
  for (int a = 0; a < natom; ++a) {
    text += " " + std::to_string(a + 1) + " 1 " + row(" %14.9f%14.9f%14.9f\n", job.forces.col(a));
  }
  return text + " ----\n Normal termination of Gaussian 16 at Sun Nov 22\n";
}

struct Format {
  const char* suffix;
  std::string (*write)(const Job&, const View&);
  double force_within;
  const char* sign_by;
};
const Format formats[] = {{".json", as_json, 6e-11, "quadrupole"},
                          {".fchk", as_fchk, 1e-9, "velocity dipole"},
                          {".log", as_gaussian_log, 6e-10, "velocity dipole"}};

class Readers : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"files.out", "control.inp", "coord-ch2o-s1-ref.com"}) {
      fs::copy(example / name, name);
    }
  }
  void write(const Format& format) {
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
      support::write_file(prefix + jobs_[i].name + format.suffix,
                          format.write(jobs_[i], view_of(i)));
    }
  }
  static support::Outcome run(const char* suffix, const char* option = "--suffix=.none") {
    return support::run({ZANDOR_COLLECT, "control.inp", "--suffix", suffix, option});
  }
  support::TempFolder folder_;
  std::vector<Job> jobs_ = example_jobs();
};

TEST_F(Readers, turn_axes_and_signs_back_and_convert_units) {
  for (const Format& format : formats) {
    SCOPED_TRACE(format.suffix);
    write(format);
    const support::Outcome outcome = run(format.suffix);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("25 jobs: 25 taken"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("axes turned back: coord-ch2o-s1-01mx.sgn"), std::string::npos);
    EXPECT_NE(outcome.out.find("sign of the dipole turned: coord-ch2o-s1-01mx.sgn, "),
              std::string::npos);
    const auto document = nlohmann::json::parse(run(format.suffix, "--json").out);
    EXPECT_EQ(document["jobs"][7]["sign_by"], format.sign_by);
    for (const Job& expected : jobs_) {
      Job found;
      zandor::read_sign_file(prefix + expected.name + ".sgn", 1, natom, found.dipole.data(),
                             found.forces.data());
      EXPECT_LE((found.forces - expected.forces).cwiseAbs().maxCoeff(), format.force_within)
          << expected.name;
      EXPECT_LE((found.dipole - expected.dipole).cwiseAbs().maxCoeff(), 1e-7) << expected.name;
      fs::remove(prefix + expected.name + ".sgn");
      fs::remove(prefix + expected.name + format.suffix);
    }
  }
}

TEST_F(Readers, leave_to_all_dipoles_the_signs_that_nothing_else_tells) {
  for (const Job& job : jobs_) {
    const double sign = job.name == "03px" ? -1.0 : 1.0;
    const std::string file = prefix + job.name + ".json";
    support::write_file(file, as_json(job, {Eigen::Matrix3d::Identity(), {0, 0, 0}, sign}));
    support::edit_file(file, "transition_quadrupole", "of no use");
  }
  fs::rename(prefix + "04pz.json", "away");
  const support::Outcome incomplete = run(".json");
  EXPECT_EQ(incomplete.status, 1);
  EXPECT_NE(incomplete.err.find("cannot settle the sign of the dipole of coord-ch2o-s1-01mx.sgn, "),
            std::string::npos)
      << incomplete.err;
  EXPECT_NE(incomplete.err.find(": jobs are missing"), std::string::npos) << incomplete.err;
  fs::rename("away", prefix + "04pz.json");
  for (const char* written : {"2 sign files written", "0 sign files written"}) {
    const support::Outcome complete = run(".json");
    EXPECT_EQ(complete.status, 0) << complete.err;
    EXPECT_NE(complete.out.find(written), std::string::npos) << complete.out;
    EXPECT_NE(complete.out.find("sign of the dipole turned: coord-ch2o-s1-03px.sgn\n"),
              std::string::npos)
        << complete.out;
  }
}

TEST_F(Readers, refuse_what_is_not_whole) {
  const struct {
    int format;
    const char *from, *to, *expected;
  } faults[] = {
      {0, "\"finished\":true", "\"finished\":false",
       "expected 'finished' to be true, found 'false'"},
      {0, "\"finished\":true", "\"finished\":[[[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]]",
       "expected at most 16 brackets within each other, found more"},
      {0, "\"dipole\":\"Debye\"", "\"dipole\":\"D\"", "as 'dipole' au or Debye, found '\"D\"'"},
      {0, "\"gradient\"", "\"hessian\"", "expected either 'gradient' or 'forces'"},
      {0, "\"state\":1", "\"state\":2", "expected state 1 as in the other jobs, found state 2"},
      {0, "\"state\":1", "\"state\":1.5", "'state' (integer), found '1.5'"},
      {0, "[\"C\",", "[\"N\",", "expected atomic number 6 for atom 1"},
      {0, "[\"C\",", "[", "expected 'symbols' for 4 atoms, found 3"},
      {0, "}", "", "expected a JSON object, found a text that is none"},
      {1, "Cartesian Gradient ", "Other Gradient ", "no line holds 'Cartesian Gradient'"},
      {1, "           2           2           0           0           2",
       "           2           0           0           0           3", "found state 3"},
      {1, "\nETran state values", "\nETran state values xx", "no line holds 'ETran state values'"},
      {1, "N=          12", "N=           9",
       "expected 'Current cartesian coordinates' for 4 atoms, found 3"},
      {1, "N=          12", "N=  -123456789", "expected a number of values of"},
      {2, " Normal termination", " Error termination",
       "no line holds 'Normal termination of Gaussian'"},
      {2, " This state for optimization", " No state",
       "no line holds 'This state for optimization'"},
      {2, "Input orientation:", "Other orientation:", "(run it with nosymm)"},
      {2, "Forces (Hartrees/Bohr)", "Forces",
       "no line holds 'Center Atomic Forces (Hartrees/Bohr)'"},
      {2, "         2    ", "         3    ", "moments (Au)' with state 2"},
      {2, " 4 1  ", " ----\n 4 1  ", "expected forces for 4 atoms, found 3"}};
  for (const Format& format : formats) {
    write(format);
    const std::string file = prefix + "02mx" + format.suffix;
    const std::string good = support::read_file(file);
    for (const auto& fault : faults) {
      if (&formats[fault.format] != &format) continue;
      SCOPED_TRACE(fault.expected);
      support::write_file(file, good);
      support::edit_file(file, fault.from, fault.to);
      const support::Outcome outcome = run(format.suffix);
      EXPECT_EQ(outcome.status, 1);
      EXPECT_EQ(outcome.err.substr(0, 16 + file.size()), "zandor_collect: " + file);
      EXPECT_NE(outcome.err.find(fault.expected), std::string::npos) << outcome.err;
      EXPECT_FALSE(fs::exists(prefix + "02mx.sgn"));
    }
    for (std::size_t part = 1; part < 8; ++part) {
      support::write_file(file, good.substr(0, good.size() * part / 8));
      EXPECT_EQ(run(format.suffix).status, 1) << format.suffix << part;
    }
    for (const Job& job : jobs_) fs::remove(prefix + job.name + format.suffix);
    for (const Job& job : jobs_) fs::remove(prefix + job.name + ".sgn");
  }
}

TEST(Frame, is_one_turn_or_none) {
  const std::vector<int> two = {1, 1};
  collect::JobOutput output;
  output.places.resize(3, 2);
  output.places << 0, 0.7, 0, 0, 0, 0;
  output.forces = output.places;
  const Eigen::Matrix3Xd turned =
      Eigen::AngleAxisd(0.5, Eigen::Vector3d::UnitZ()).matrix() * output.places;
  EXPECT_TRUE(support::stops(2, "on one line",
                             [&] { collect::bring_into_axes("a.log", two, turned, output); }));
  // A mirror image is no turn; a place may be 1e-5 Angstrom off and no more.
  Eigen::Matrix3Xd chiral(3, 4);
  chiral << 0, 1, 0, 0, 0, 0, 1.2, 0, 0, 0, 0, 1.5;
  EXPECT_FALSE(collect::match_geometry(-chiral, chiral).found);
  for (const double off : {0.9e-5, 2e-5}) {
    Eigen::Matrix3Xd near = chiral;
    near(1, 2) += off * 4.0 / 3.0;  // a quarter is lost as a shift of the centre
    EXPECT_EQ(collect::match_geometry(near, chiral).found, off < 1e-5) << off;
  }
}

TEST(SignMarks, tell_where_a_step_cannot_turn_them) {
  using Kind = collect::SignMark::Kind;
  constexpr double step = 0.00945;
  const struct {
    Kind kind;
    double reference, job;
    int expected;
  } rows[] = {{Kind::vector, 0.2, 0.19, 1},       {Kind::vector, 0.2, -0.21, -1},
              {Kind::vector, 0.09, -0.09, 0},     {Kind::vector, 0.2, 0.05, 0},
              {Kind::tensor, 0.2, -0.2, -1},      {Kind::coefficient, 0.9, -0.88, -1},
              {Kind::coefficient, 0.25, 0.25, 0}, {Kind::coefficient, 0.9, 0.3, 0},
              {Kind::density, 1.0, -0.6, -1}};
  for (const auto& row : rows) {
    collect::JobOutput job, reference;
    job.leading = reference.leading = collect::LeadingElement{8, 9, 1.0};
    reference.marks = {{"mark", row.kind, {row.reference}}};
    job.marks = {{"mark", row.kind, {row.job}}};
    EXPECT_EQ(collect::compare_marks(job, reference, step).sign, row.expected) << row.job;
  }
}

}  // namespace

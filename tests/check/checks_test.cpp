// Every check on a real directory with one thing changed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iomanip>
#include <set>
#include <sstream>

#include "flib/units_of_measure.hpp"
#include "job_folder.hpp"

namespace {

using namespace job_folder;
using support::edit_file;

constexpr const char* formaldehyde = "/examples/formaldehyde-s1";
constexpr const char* derived = "/examples/formaldehyde-s1-c2v";
constexpr const char* spoilt = "coord-ch2o-s1-01px.sgn";
constexpr const char* reference_file = "coord-ch2o-s1-ref.sgn";
constexpr const char* input = "coord-ch2o-s1-ref.com";
constexpr const char* oniom = " Entering Gaussian System\n # oniom(td:uff)\n";

// What the check says of the changed directory: a part of its lines, or nothing at all.
struct Row {
  const char* check;
  std::function<void()> change;
  const char* says;
  const char* folder = formaldehyde;
};

constexpr const char* ammonia = "/examples/ammonia-s1-c3v";
constexpr const char* water = "/tests/check/cases/water-s1";
constexpr const char* pi_state = "/tests/check/cases/co-pi-state";

void edit(const char* file, const char* from, const char* to) { edit_file(file, from, to); }

// All sign files in the order of their names, the reference's behind them if it is wanted.
void edit_all(const std::function<void(const std::string&)>& change, bool with_reference = false) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    const std::string name = entry.path().filename();
    if (name.ends_with(".sgn") && (with_reference || !name.ends_with("ref.sgn")))
      names.insert(name);
  }
  for (const std::string& name : names) change(name);
}
bool is_positive(const std::string& name) { return name.find('p') != name.npos; }

void drop_forces_of_reference() { edit(reference_file, "Center Atomic Forces", "No forces"); }

// Takes the coordinates of the input for others.
void write_input(const std::function<std::string(double x, double y, double z)>& row) {
  Lines lines = read_lines(input);
  for (std::size_t k = lines.size() - 5; k < lines.size() - 1; ++k) {
    std::istringstream items(lines[k]);
    std::string symbol;
    double x = 0.0, y = 0.0, z = 0.0;
    items >> symbol >> x >> y >> z;
    lines[k] = symbol + " " + row(x, y, z);
  }
  write_lines(input, lines);
}
std::string numbers(double x, double y, double z) {
  return std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z);
}

void swap_lines(const char* file, std::size_t (*block)(const Lines&), std::size_t first = 2) {
  Lines lines = read_lines(file);
  const std::size_t at = block == nullptr ? lines.size() - 5 : block(lines);
  std::swap(lines[at + first], lines[at + first + 1]);
  write_lines(file, lines);
}

void scale_forces(const std::string& name, double factor) {
  std::vector<double> forces = forces_of(name);
  for (double& force : forces) force *= factor;
  set_forces(name, forces);
}

void round_forces(int decimals, double factor = 1.0) {
  edit_all([&](const std::string& n) {
    scale_forces(n, factor);
    set_forces(n, forces_of(n), decimals);
  });
}

// Adds to a force of one job, as a difference over twice the step, Hartree/Bohr**2.
void push(const std::string& name, std::size_t k, double by) {
  std::vector<double> forces = forces_of(name);
  forces[k] += by * 2.0 * 0.005 / flib::angstrom_per_bohr;
  set_forces(name, forces);
}
void push_all_positive(double by) {
  edit_all([by](const std::string& n) {
    if (is_positive(n)) push(n, 0, by);
  });
}

void scale_all_forces(double factor) {
  edit_all([factor](const std::string& n) { scale_forces(n, factor); });
}

// A kink of the forces along the bond of C and O, without a net force.
void bend_forces(double by) {
  edit_all([by](const std::string& n) {
    std::vector<double> forces = forces_of(n);
    forces[2] += is_positive(n) ? by : 0.0;
    forces[5] -= is_positive(n) ? by : 0.0;
    set_forces(n, forces);
  });
}

// Rounds all dipoles, and adds to that of one job.
void push_dipole(const std::string& name, int decimals, double by) {
  edit_all(
      [&](const std::string& n) {
        Dipole dipole = dipole_of(n);
        if (n == name) dipole[2] += by;
        set_dipole(n, dipole, decimals);
      },
      true);
}

// The same of two jobs, whose mean stays.
void spread_dipoles(const std::string& molecule, int decimals, double by) {
  push_dipole("coord-" + molecule + "-01mx.sgn", 8, -by);
  push_dipole("coord-" + molecule + "-01px.sgn", decimals, by);
}

void leave_jobs(double count) {
  edit_all([&](const std::string& n) {
    if (count-- <= 0.0) std::filesystem::remove(n);
  });
}

void repeat_reference_geometry(double count) {
  edit_all([&](const std::string& name) {
    if (count-- <= 0.0) return;
    Lines lines = read_lines(name);
    const Lines good = read_lines(reference_file);
    std::copy_n(good.begin() + static_cast<long>(geometry_at(good)), 4,
                lines.begin() + static_cast<long>(geometry_at(lines)));
    write_lines(name, lines);
  });
}

const Row rows[] = {
    {"files", [] { scale_forces(spoilt, 0.0); },
     "coord-ch2o-s1-01px.sgn:32: error: all forces of job 2 (atom 1 (C) x+) are exactly zero"},
    {"files", [] { edit(spoilt, "0.0003379346", "1e308"); },
     "01px.sgn:32: error: expected forces, found 1e+308 Hartree/Bohr on atom 1 (C) x"},
    {"files", [] { edit(spoilt, "-0.59735072", "-0.5x735072"); },
     "01px.sgn:24: error: expected the geometry of atom 1 (number), found '-0.5x735072'"},
    {"files", [] { edit(spoilt, "nmo            =         32", "nmo = y"); },
     "01px.sgn:8: error: expected nmo (integer), found 'y'"},
    {"files", [] { edit(spoilt, "0.3075126970", "1e400"); },
     "01px.sgn:15: error: expected tden_maxval (finite number), found '1e400'"},
    {"files", [] { edit(reference_file, "0.0000000784", "NaN"); },
     "ref.sgn:33: error: expected the force on atom 1 (finite number), found 'NaN'"},
    {"files", [] { edit(reference_file, "tden_maxval", "largest"); },
     "coord-ch2o-s1-ref.sgn: error: no line holds 'tden_maxval'"},
    {"files", [] { edit("control.inp", "0.005", "0.01"); }, "files.out:3: warning: the step is"},
    {"columns", [] { swap_lines(spoilt, forces_at); },
     "01px.sgn:35: warning: the force of atom 3: the line is numbered '4', but atoms are read in "
     "the order of the lines (and 1 more line of the block)"},
    {"columns", [] { edit(input, " C  ", " C 0"); },
     "ref.com:8: warning: the coordinates of atom 1"},
    {"columns", [] { edit(input, "-0.59735072", "-0.59735072 \"open"); },
     "atom 1: more items than the 4 that are read, the first of them '\"open'"},
    {"columns",
     [] {
       write_input([](double x, double y, double z) { return numbers(x, y, z) + " H"; });
       support::write_file("coord-ch2o-s1-ref.log", oniom);
     },
     ""},
    {"symbols", [] { edit("files.out", "2   O        8", "2   O        7"); },
     "files.out:30: warning: atom 2 is 'O' 7, but the number of that symbol is 8"},
    {"symbols", [] { edit(input, " O ", " S "); }, "ref.com:9: warning: atom 2 is 'S'"},
    {"symbols", [] { edit(input, " O ", " 8 "); }, ""},
    {"geometry", [] { edit(spoilt, "Coordinates (Ang", "Places (Ang"); },
     "1 sign file without a geometry block that can be read (coord-ch2o-s1-01px.sgn)"},
    {"geometry", [] { edit(spoilt, "0.00500000", "0.00000000"); },
     "error: holds the reference geom"},
    {"geometry", [] { edit("control.inp", "disp_sign = 1", "disp_sign = -1"); },
     "files.out:37: error: every job holds the step of the other sign"},
    {"input",
     [] { write_input([](double x, double y, double z) { return numbers(x, y, z + 1); }); },
     "shifted by 0, 0, 1 Angstrom, against coord-ch2o-s1-ref.sgn: only a shift, which does no"},
    {"input", [] { write_input([](double x, double y, double z) { return numbers(z, x, y); }); },
     "warning: the geometry is turned by 120 degrees"},
    {"input", [] { swap_lines(input, nullptr); },
     "in another order: atom 3 stands at the place of atom 4"},
    {"derived", [] { edit("files.out", "-1.0000000000    0.0", "-1.0000000000    0.5"); },
     "error: operation 2 of job 1 (atom 1 (C) x-) and 8 more jobs is not orthogonal", derived},
    {"derived", [] { edit("files.out", "        2        2", "        0        2"); },
     "files.out:37: error: the forces of job 1 are zero: its source, job 0", derived},
    {"duplicate", [] { set_forces(spoilt, forces_of("coord-ch2o-s1-02px.sgn")); },
     "01px.sgn:32: error: the forces of job 2 (atom 1 (C) x+) are those of job 8 (atom 2 (O) x+), "
     "digit for digit (coord-ch2o-s1-02px.sgn) [duplicate]"},
    {"duplicate", [] { set_forces(spoilt, forces_of(reference_file)); },
     "01px.sgn:32: error: the forces of job 2 (atom 1 (C) x+) are those of the reference, digit"},
    {"asymmetry",
     [] {
       drop_forces_of_reference();
       scale_forces("coord-ch2o-s1-02pz.sgn", 0.5);
       push("coord-ch2o-s1-03mx.sgn", 0, 6e-3);
     },
     "02mz.sgn:32: warning: the forces do not fit"},
    // A second bad job leaves nearly as much with the one as with the other of two columns.
    {"asymmetry",
     [] {
       swap_lines("coord-ch2o-s1-01py.sgn", forces_at, 0);
       for (const std::size_t k : {2, 4, 6, 7}) push("coord-ch2o-s1-01mz.sgn", k, -3.5e-3);
       for (const std::size_t k : {8, 10, 11}) push("coord-ch2o-s1-01mz.sgn", k, 3.5e-3);
     },
     "01py.sgn:32: warning: the forces do not fit", derived},
    {"net-force",
     [] {
       push(spoilt, 0, 5e-3);
       support::write_file("coord-ch2o-s1-ref.log", oniom);
     },
     "01px.sgn:32: note: net force in the column of atom 1 (C) x"},
    {"precision", [] { set_forces(spoilt, forces_of(spoilt), 6); },
     "01px.sgn:32: note: the forces are printed with 6 decimals, those of the other jobs with 10"},
    {"files", [] { edit("control.inp", "symm = .false.", ""); },
     "control.inp: note: symm is true, as it is when left out: the report gets no dipole sections"},
    {"dipole-sum",
     [] {
       turn_dipole(spoilt);
       support::write_file("coord-ch2o-s1-ref.log", oniom);
     },
     "01px.sgn: warning: the transition dipoles miss their sum rules"},
    {"dipole-sum", [] { edit(reference_file, "0.00000     0.0", "0.00000     0.3"); },
     "ref.sgn: warning: the transition dipole of the reference does not fit the others: 0 0.3 0 "
     "au"},
    {"dipole-sum", [] { edit(spoilt, "0.00000     0.00264", "0.3 0.0"); },
     "01px.sgn: warning: the transition dipole of job 2 (atom 1 (C) x+) does not fit the others: "
     "0.3 0 0 au, expected about ",
     derived},
    {"frame", [] { support::write_file("coord-nh3-ref.log", oniom); },
     "ref.com: note: the axes are 35.26 degrees off", ammonia},
};

TEST(Checks, say_what_was_changed) {
  for (const Row& row : rows) {
    const support::TempFolder temp;
    copy_here(PROJECT_FOLDER + std::string(row.folder));
    row.change();
    const std::string said = lines_of(look({row.check}), true);
    EXPECT_NE(said.find(row.says), std::string::npos) << row.check << " said:\n" << said;
    EXPECT_EQ(said.empty(), *row.says == '\0') << row.check << " said:\n" << said;
  }
}

std::string fixed(double value) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(10) << value;
  return text.str();
}

// Data that stay within a limit, of which nothing is said, and data beyond it: a limit that is off
// by a factor of 3 either way says something of the one, or nothing of the other.
struct Limit {
  const char* check;
  std::function<void(double)> spoil;
  const char* says;
  double within, beyond;
  const char* folder = formaldehyde;
};

const Limit limits[] = {
    {"header", [](double f) { edit(spoilt, "0.3075126970", fixed(0.3075126970 * f).c_str()); },
     "the state has changed", 1.1, 1.5},
    {"header",
     [](double f) {
       edit(spoilt, "18      7", "18 6");
       edit(spoilt, "0.3075126970", fixed(0.3075126970 * f).c_str());
     },
     "tden_maxloc is 18 6, in the reference 18 7", 1.01, 1.05},
    {"geometry", [](double d) { edit(spoilt, "0.00500000", fixed(0.005 + d).c_str()); },
     "01px.sgn:24: error", 5e-6, 2.5e-5},
    {"input", [](double d) { edit(input, "0.71205659", fixed(0.71205659 + d).c_str()); },
     "another geometry", 5e-5, 2.5e-4},
    {"stationary", [](double f) { edit(reference_file, "0.0000000784", fixed(f).c_str()); },
     "note: the reference is not", 5e-5, 2.5e-4},
    {"stationary", [](double f) { edit(reference_file, "0.0000000784", fixed(f).c_str()); },
     "warning: the reference is not", 5e-4, 2.5e-3},
    {"masses", [](double d) { edit(reference_file, "15.994910", fixed(15.994915 + d).c_str()); },
     "atom 2 has the mass", 0.01, 0.05},
    {"derived",
     [](double d) { edit("coord-ch2o-s1-ref.sgn", "0.95656836", fixed(0.95656836 + d).c_str()); },
     "does not carry", 1e-4, 5e-4, derived},
    {"frame",
     [](double degrees) {
       const double c = std::cos(degrees * M_PI / 180.0), s = std::sin(degrees * M_PI / 180.0);
       write_input([&](double x, double y, double z) {
         return fixed(x) + " " + fixed(c * y + s * z) + " " + fixed(c * z - s * y);
       });
     },
     "degrees off the principal axes", 0.05, 0.25},
    {"frame", scale_all_forces, "warning: the axes", 0.003, 0.07, ammonia},
    {"force-constants", scale_all_forces, "the highest frequency", 1.6, 8.0},
    {"force-constants", scale_all_forces, "push it away", 1.0, -1.0, water},
    {"force-constants",
     [](double f) {
       std::filesystem::remove(input);
       scale_all_forces(f);
     },
     "of every atom sum up to", 8.0, 24.0},
    {"precision", [](double f) { round_forces(5, 1.0 / f); }, "note: the digits", 1.0 / 30,
     1.0 / 3},
    {"precision", [](double f) { round_forces(5, 1.0 / f); }, "warning: the digits", 3.3, 10.0},
    {"asymmetry",
     [](double by) {
       std::filesystem::remove("coord-ch2o-s1-04mz.sgn");
       push(spoilt, 4, by);
     },
     "do not fit", 5e-4, 2.5e-3},
    {"asymmetry", [](double by) { push(spoilt, 4, by); }, "do not fit", 1.2e-4, 6e-4},
    {"net-force", [](double by) { push(spoilt, 0, by); }, "net force in the column", 5e-5, 2.5e-4},
    {"net-force",
     [](double by) {
       push_all_positive(3e-5);
       push(spoilt, 0, by);
     },
     "at most", 1.2e-4, 6e-4},
    {"net-force", push_all_positive, "converge tighter", 2.5e-5, 1.25e-4},
    {"net-force",
     [](double by) {
       push_all_positive(by);
       push(spoilt, 0, by);
     },
     "net force in the column of atom 1 (C) x: 0.0002", 2.5e-5, 1.25e-4},
    {"net-force", push_all_positive, "does not float freely", 5e-4, 2.5e-3},
    // The other job is as far off, or nearly.
    {"net-force",
     [](double by) {
       push(spoilt, 0, by);
       push("coord-ch2o-s1-01mx.sgn", 0, -1e-3);
     },
     "this job or", 4e-3, 1.2e-3},
    {"asymmetry",
     [](double by) {
       push_all_positive(1e-4);
       push(spoilt, 4, by);
     },
     "do not fit", 5e-3, 2e-2},
    {"geometry", repeat_reference_geometry, "repeat", 8, 24},
    {"geometry",
     [](double factor) {
       edit("files.out", "0.005000", fixed(0.005 / factor).c_str());
       edit("control.inp", "  dx = 0.005\n", "");
     },
     "(0.529...", 0.5312, 0.5297},
    {"duplicate",
     [](double f) {
       round_forces(4, f);
       set_forces(spoilt, forces_of(reference_file));
     },
     "are those of the reference", 1.0, 3.0},
    {"precision",
     [](double count) {
       std::vector<double> forces = forces_of(spoilt);
       for (double& force : forces) force = count-- > 0.0 ? force + 1e-9 * count : 0.0;
       set_forces(spoilt, forces, 9);
     },
     "printed with 9 decimals", 3, 8},
    {"state", bend_forces, "is degenerate", 7e-4, 3e-3},
    {"state",
     [](double by) {
       bend_forces(by);
       edit(reference_file, "0.0000000784", "0.5");
     },
     "is degenerate", 1.3e-4, 5e-4},
    {"state",
     [](double f) {
       edit_all([f](const std::string& n) {
         if (is_positive(n)) scale_dipole(n, f);
       });
     },
     "is degenerate", 1.1, 1.025, pi_state},
    {"state", [](double f) { edit_all([f](const std::string& n) { scale_dipole(n, f); }, true); },
     "is degenerate", 8e-4, 3e-3, pi_state},
    {"state", leave_jobs, "is degenerate", 3, 6, pi_state},
    {"dipole-sum", [](double f) { scale_dipole("coord-h2o-01px.sgn", f); }, "(Debye?)", 2.65, 2.57,
     water},
    {"dipole-sum", [](double f) { scale_dipole("coord-h2o-01px.sgn", f); }, "has the other sign",
     -1.2, -1.05, water},
    {"dipole-sum", [](double d) { spread_dipoles("h2o", 5, d); }, "miss their sum rules", 3e-4,
     1e-3, water},
    {"dipole-sum", [](double d) { spread_dipoles("ch2o-s1", 3, d); }, "miss their sum rules", 0.01,
     0.03},
    {"dipole-sum", [](double d) { spread_dipoles("ch2o-s1", 7, d); }, "miss their sum rules",
     3.5e-5, 1e-4},
    {"dipole-sum",
     [](double d) {
       std::filesystem::remove("coord-h2o-03mz.sgn");
       push_dipole("coord-h2o-01px.sgn", 3, d);
     },
     "expected about", 0.012, 0.04, water},
    {"dipole-sum", [](double d) { push_dipole("coord-h2o-02pz.sgn", 4, d); }, "would do as well",
     6e-3, 1.5e-3, water},
};

TEST(Checks, keep_silent_within_each_limit_and_speak_beyond) {
  for (const Limit& limit : limits) {
    for (const double value : {limit.within, limit.beyond}) {
      const support::TempFolder temp;
      copy_here(PROJECT_FOLDER + std::string(limit.folder));
      limit.spoil(value);
      const std::string said = lines_of(look({limit.check}), true);
      EXPECT_EQ(said.find(limit.says) != said.npos, value == limit.beyond)
          << limit.check << ", " << value << ", said:\n"
          << said;
    }
  }
}

TEST(Checks, note_frequencies_within_the_noise) {
  const support::TempFolder temp;
  copy_here(PROJECT_FOLDER + std::string(formaldehyde));
  check::JobData jobs;
  EXPECT_EQ(lines_of(look(jobs, {"noise"}), true), "");
  for (const double eigenvalue : {3e-10, 6e-10}) {
    jobs.context.modes.eigenvalues(11) = eigenvalue;
    check::Findings findings;
    check::check_noise(jobs, {}, findings);
    EXPECT_EQ(lines_of(findings, true).find("7 projected frequencies below 4.604 cm-1") ==
                  std::string::npos,
              eigenvalue > 5e-10);
  }
}

TEST(Checks, read_headers_and_rows_in_every_spelling) {
  const support::TempFolder temp;
  copy_here(PROJECT_FOLDER "/tests/zandor/cases/triatomic-formats");
  check::JobData jobs;
  look(jobs, {"columns"});
  for (int i = 0; i <= jobs.run.n6; ++i) {
    const check::SignFile& file = jobs.sign_file(i);
    for (std::size_t k = 0; k < 7; ++k) {
      EXPECT_EQ(file.header.sizes[k], (std::array{3, 27, 12, 15, 3, 1, 0}[k])) << i << " " << k;
    }
    EXPECT_EQ(file.header.tden_maxloc, (std::array{12, 2})) << i;
    EXPECT_EQ(file.header.tden_maxval, 0.72) << i;
    if (!file.geometry) continue;
    EXPECT_EQ(file.geometry->numbers, (std::vector{6, 1, 1})) << i;
    EXPECT_EQ(file.geometry->x[3], -0.849242921) << i;
  }
  EXPECT_EQ(jobs.forces(0)(8), -0.0003166377);
  EXPECT_EQ(jobs.job(4).number, 4);
  EXPECT_EQ(jobs.job(2).number, std::nullopt);
}

}  // namespace

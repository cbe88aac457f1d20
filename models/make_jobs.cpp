// make_jobs NATOM DIRECTORY: writes a synthetic job directory of any size, every job computed, for
// timing whole runs. The forces are those of the molecule's springs, so the analysis has real work.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "flib/units_of_measure.hpp"
#include "io/process.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "models/molecule.hpp"

const char* const io::program_name = "make_jobs";

namespace {

constexpr int unit = 10;
constexpr double step = 0.005;  // Angstrom

using models::Molecule;

std::string job_name(int job) { return job == 0 ? "ref" : "d" + std::to_string(job); }

io::OutputFile& open(const std::string& name) {
  io::open_replaced(unit, name);
  return io::output(unit);
}

void write_control_and_list(const Molecule& m) {
  open("control.inp").text("&control\n symm = .false.\n disp_a = 1.0\n disp_sign = 1\n/\n");
  io::close(unit);
  io::OutputFile& out = open("files.out");
  out.text(" Number of atoms:").integer(m.natom, 8).text("\n Number of files:");
  out.integer(6 * m.natom + 1, 8).text("\n Step(Angstrom):").fixed(step, 12, 6);
  out.text("\nBegin_zand_info\n Operations\n Number of operations: 0\n ----\n ----\n Atoms\n");
  for (int a = 1; a <= m.natom; ++a) out.integer(a, 6).text("   C    6\n");
  out.text("\n Jobs\n Id  Name  Computed  Source  Operation\n");
  for (int job = 0; job <= 6 * m.natom; ++job) {
    out.integer(job, 7).text("  " + job_name(job) + "  T").integer(job, 8).text("    1\n");
  }
  io::close(unit);
}

void write_header(io::OutputFile& out, const Molecule& m) {
  out.text(" Sign reference of the excited state\n natom =").integer(m.natom, 6);
  out.text("\n nmo =   19\n mi =    8\n ma =   11\n mci =    3\n NFC =    1\n NFV =    0\n");
  out.text(" tden_maxloc =    8    2\n tden_maxval = 0.71000000\n\n");
  out.text(" Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)\n");
  out.text(" Number  Symbol  Number     Mass         X           Y           Z\n");
  for (std::size_t a = 0; a < m.x.size(); a += 3) {
    out.integer(static_cast<long long>(a / 3) + 1, 7).text("   C    6     12.00000");
    for (std::size_t i = 0; i < 3; ++i) out.fixed(m.x[a + i], 15, 9);
    out.end_line();
  }
}

void write_sign_file(const Molecule& m, int job) {
  io::OutputFile& out = open("coord-" + job_name(job) + ".sgn");
  write_header(out, m);
  out.text("\n Ground to excited state transition electric dipole moments (Au)\n state 1");
  for (int i = 1; i <= 3; ++i) out.fixed(0.3 * std::sin(0.01 * job + i), 15, 8);
  out.text("\n\n Center Atomic Forces (Hartrees/Bohr)\n");
  const std::size_t n3 = m.x.size();
  // Job 2 i - 1 is the negative and job 2 i the positive step of coordinate i.
  const auto coordinate = static_cast<std::size_t>(std::max(job - 1, 0) / 2);
  const double moved = job == 0 ? 0.0 : (job % 2 == 0 ? step : -step) / flib::angstrom_per_bohr;
  for (std::size_t a = 0; a < n3; a += 3) {
    out.integer(static_cast<long long>(a / 3) + 1, 7);
    for (std::size_t i = 0; i < 3; ++i) out.fixed(-moved * m.k[coordinate * n3 + a + i], 16, 10);
    out.end_line();
  }
  out.text(" End\n");
  io::close(unit);
}

void write_reference(const Molecule& m) {
  io::OutputFile& com = open("coord-ref.com");
  com.text("# td\n\nsynthetic\n\n0 1\n");
  for (std::size_t a = 0; a < m.x.size(); a += 3) {
    com.text(" C");
    for (std::size_t i = 0; i < 3; ++i) com.fixed(m.x[a + i], 15, 9);
    com.end_line();
  }
  io::close(unit);
  open("coord-ref.log")
      .text(
          " Entering Gaussian System, Link 0=g16\n *****************\n Gaussian 16:  "
          "ES64L-G16RevC.01 3-Jul-2019\n");
  io::close(unit);
}

}  // namespace

namespace {

int make_jobs(int argc, char** argv) {
  int natom = 0;
  const std::string_view count = argc == 3 ? argv[1] : "";
  std::from_chars(count.data(), count.data() + count.size(), natom);
  if (natom < 1)
    io::fatal_stop("expected a number of atoms and a directory (usage: make_jobs NATOM DIRECTORY)");
  std::error_code error;
  std::filesystem::create_directories(argv[2], error);
  if (!error) std::filesystem::current_path(argv[2], error);
  if (error)
    io::fatal_stop({argv[2]}, "expected a directory to write to, found: " + error.message());
  const Molecule molecule = models::make_molecule(natom);
  write_control_and_list(molecule);
  write_reference(molecule);
  for (int job = 0; job <= 6 * natom; ++job) write_sign_file(molecule, job);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return make_jobs(argc, argv); });
}

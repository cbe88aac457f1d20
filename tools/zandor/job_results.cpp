#include "zandor/job_results.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/rotn.hpp"
#include "flib/search_word.hpp"
#include "flib/units_of_measure.hpp"
#include "io/free_form.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/fault_list.hpp"
#include "zandor/get_sgn_param.hpp"
#include "zandor/sign_file_blocks.hpp"

namespace zandor {

namespace {

void find_block(const char* header, int job) {
  const std::int64_t before = io::position(input_unit);
  io::Line line;
  if (!flib::search_word_free(input_unit, header, line)) {
    if (io::position(input_unit) == 0) {
      io::fatal_stop({io::name(input_unit)}, "expected the results of job " + std::to_string(job) +
                                                 ", found an empty file");
    }
    io::fatal_stop({io::name(input_unit)}, "no line holds '" + std::string(header) +
                                               "' after line " +
                                               std::to_string(io::line_number(input_unit, before)) +
                                               " (job " + std::to_string(job) + ")");
  }
}

void read_dipole(int job, double* dipole) {
  find_block(dipole_header, job);
  io::FreeForm row(input_unit);
  row.skip_words(2, {"the transition dipole of job", job});
  for (int k = 0; k < 3; ++k) row.finite_real(dipole[k], {"the transition dipole of job", job});
  row.warn_of_open_end({"the transition dipole of job", job});
}

// Reads a word and three numbers per atom into the columns of a 3 x natom array.
void read_atom_vectors(int natom, double* vectors, std::string_view what,
                       std::string_view remark = {}) {
  for (int a = 1; a <= natom; ++a) {
    const io::Subject subject{what, a, remark};
    io::FreeForm row(input_unit);
    row.skip_words(1, subject);
    for (int k = 0; k < 3; ++k) row.finite_real(*vectors++, subject);
    if (a == natom) row.warn_of_open_end(subject);
  }
}

// The line of a sign file that gives the number of atoms.
long long line_of_natom(std::string_view name) {
  io::open_existing(input_unit, name);
  io::Line line;
  flib::search_word_del_space(input_unit, "natom", line);
  const long long number = io::line_number(input_unit);
  io::close(input_unit);
  return number;
}

// The sign file must carry the whole keyword header, and belong to the molecule of the job list.
void check_sign_header(const RunData& run) {
  const io::Line& name = run.jobs[0].sgn_name;
  int natom = 0, nbasis = 0, nbsuse = 0, mi = 0, ma = 0, mci = 0, nfc = 0, nfv = 0;
  std::array<int, 2> tden_maxloc{};
  double tden_maxval = 0.0;
  get_sgn_param(true, name.padded(), natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv, tden_maxloc,
                tden_maxval);
  if (natom != run.natom) {
    io::fatal_stop({name.content(), line_of_natom(name.content())},
                   "expected natom = " + std::to_string(run.natom) + " as in " + job_list_name +
                       ", found " + std::to_string(natom));
  }
}

void read_geometry_and_masses(RunData& run) {
  find_block(geometry_header, 0);
  io::pass_over_lines(input_unit, 1, "the caption of the geometry");
  for (int a = 1; a <= run.natom; ++a) {
    io::FreeForm row(input_unit);
    row.skip_words(1, {"the geometry of atom", a});
    const auto place = static_cast<std::size_t>(a - 1);
    row.text(run.symbol[place], {"the symbol of atom", a});
    row.optional_integer(run.nat[place], {"the atomic number of atom", a});
    row.finite_real(run.mass(a), {"the mass of atom", a});
    if (!(run.mass(a) > 0.0)) {
      io::fatal_stop(io::place(input_unit), "expected a mass above 0 for atom " +
                                                std::to_string(a) + ", found " +
                                                io::shown(run.mass(a)));
    }
    for (int k = 1; k <= 3; ++k) row.finite_real(run.x(k, a), {"the geometry of atom", a});
    if (a == run.natom) row.warn_of_open_end({"the geometry of atom", a});
  }
}

void read_sign_file_of_reference(RunData& run) {
  io::open_existing(input_unit, run.jobs[0].sgn_name.content());
  read_geometry_and_masses(run);
  read_dipole(0, run.dipole0.data());
  io::close(input_unit);
  std::copy_n(run.x.data(), run.x.size(), run.xa.data());
  for (int a = 1; a <= run.natom; ++a) {
    run.mass(a) *= flib::electron_masses_per_amu;
    for (int k = 1; k <= 3; ++k) run.sqtmass(3 * (a - 1) + k) = std::sqrt(run.mass(a));
  }
}

// Passes over the lines up to the one with charge and multiplicity, the first that begins with a
// digit, and gives its number. A negative charge is not taken for one, deliberately.
long long pass_over_input_head() {
  io::Line line;
  do {
    if (io::read_line(input_unit, line) != io::read_ok) {
      io::fatal_stop(io::next_place(input_unit),
                     "expected a line that begins with a digit (charge and multiplicity), found "
                     "the end of the file");
    }
    const std::string_view text = io::without_leading_blanks(line.padded());
    if (!text.empty() && io::is_digit(text.front())) return io::line_number(input_unit);
  } while (true);
}

void read_input_of_reference(RunData& run) {
  io::open_existing(input_unit, run.com_name.content());
  const long long head = pass_over_input_head();
  read_atom_vectors(run.natom, run.x.data(), "the coordinates of atom",
                    "line " + std::to_string(head) + " was taken for charge and multiplicity");
  io::close(input_unit);
  for (double* x = run.x.data(); x < run.x.data() + run.x.size(); ++x) {
    *x /= flib::angstrom_per_bohr;
  }
}

}  // namespace

void read_reference(RunData& run) {
  check_sign_header(run);
  bool ifoniom = false;
  int info = 0;
  flib::qm_file_ifoniom(run.jobs[0].log_name.padded(), ifoniom, info);
  read_sign_file_of_reference(run);
  read_input_of_reference(run);
}

void read_computed_job(RunData& run, int i) {
  io::open_existing(input_unit, run.jobs[static_cast<std::size_t>(i)].sgn_name.content());
  read_dipole(i, run.tdip.column(i));
  find_block(forces_header, i);
  read_atom_vectors(run.natom, run.force.column(1, i), "the force on atom");
  io::close(input_unit);
}

void read_computed_jobs(RunData& run) {
  FaultList faults{"jobs"};
  for (int i = 1; i <= run.n6; ++i) {
    if (!run.jobs[static_cast<std::size_t>(i)].is_calc) continue;
    const auto stop = io::collect([&] { read_computed_job(run, i); });
    if (stop) add_fault(*stop, faults);
  }
  stop_at_faults(faults);
}

void derive_symmetry_jobs(RunData& run) {
  flib::Array<double, 2> force_tmp("force_tmp", {3, run.natom});
  const int one_vector = 1;
  for (int i = 1; i <= run.n6; ++i) {
    const Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (job.is_calc) continue;
    for (int a = 1; a <= run.natom; ++a) {
      const int b = run.atom_m(a, job.iops);
      std::copy_n(run.force.column(b, job.calc_m), 3, force_tmp.column(a));
      flib::rotn(one_vector, run.op.column(1, job.iops), force_tmp.column(a));
    }
    std::copy_n(force_tmp.data(), force_tmp.size(), run.force.column(1, i));
  }
}

void read_job_results(RunData& run) {
  read_reference(run);
  read_computed_jobs(run);
  derive_symmetry_jobs(run);
}

}  // namespace zandor

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
#include "zandor/fault_list.hpp"
#include "zandor/get_sgn_param.hpp"
#include "zandor/sign_file.hpp"

namespace zandor {

namespace {

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
    io::fatal_stop({name.content(), line_of_natom(name.content())}, "expected natom = ", run.natom,
                   " as in ", job_list_name, ", found ", natom);
  }
}

void read_geometry_and_masses(RunData& run) {
  find_block(geometry_header, 0);
  io::pass_over_lines(input_unit, 1, "the caption of the geometry");
  for (int a = 1; a <= run.natom; ++a) {
    io::FreeForm row(input_unit);
    row.skip_words(1, {"the geometry of atom", a});
    const auto place = static_cast<std::size_t>(a - 1);
    read_atom(row, a, run.symbol[place], run.nat[place], run.mass(a), run.xa.column(a));
    if (a == run.natom) row.warn_of_open_end({"the geometry of atom", a});
  }
}

// The largest force that the sign file holds behind the dipole. Only a warning rests on it: what is
// missing or malformed is passed over.
void look_at_forces(RunData& run) {
  io::Line line;
  if (!flib::search_word_free(input_unit, forces_header, line)) return;
  std::vector<double> forces(static_cast<std::size_t>(run.n3));
  if (io::collect([&] { read_forces(run.natom, forces.data()); })) return;
  for (const double force : forces) {
    run.reference_force = std::max(run.reference_force, std::fabs(force));
  }
}

void read_reference_blocks(RunData& run) {
  io::open_existing(input_unit, run.jobs[0].sgn_name.content());
  read_geometry_and_masses(run);
  read_dipole(0, run.dipole0.data());
  look_at_forces(run);
  io::close(input_unit);
  for (int a = 1; a <= run.natom; ++a) {
    run.mass(a) *= flib::electron_masses_per_amu;
    for (int k = 1; k <= 3; ++k) run.sqtmass(3 * (a - 1) + k) = std::sqrt(run.mass(a));
  }
}

}  // namespace

void read_reference_sign_file(RunData& run) {
  check_sign_header(run);
  int info = 0;
  flib::qm_file_ifoniom(run.jobs[0].log_name.padded(), run.layered, info);
  read_reference_blocks(run);
}

void read_reference_input(RunData& run, ReferenceInput* input) {
  read_input_file(run.com_name.content(), run.natom, run.x.data(), input);
  for (double* x = run.x.data(); x < run.x.data() + run.x.size(); ++x) {
    *x /= flib::angstrom_per_bohr;
  }
}

void read_computed_job(RunData& run, int i, SignFile* file, const SignFile* reference) {
  read_sign_file(run.jobs[static_cast<std::size_t>(i)].sgn_name.content(), i, run.natom,
                 run.tdip.column(i), run.force.column(1, i), file, reference);
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
  read_reference_sign_file(run);
  read_reference_input(run);
  read_computed_jobs(run);
  derive_symmetry_jobs(run);
}

}  // namespace zandor

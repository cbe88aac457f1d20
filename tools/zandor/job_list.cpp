#include "zandor/job_list.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>

#include "flib/search_word.hpp"
#include "flib/units_of_measure.hpp"
#include "io/free_form.hpp"
#include "io/units.hpp"
#include "io/values.hpp"
#include "zandor/fault_list.hpp"

namespace zandor {

namespace {

constexpr const char* section_marker = "Begin_zand_info";
constexpr std::size_t longest_name = io::line_capacity - std::string_view("coord-.sgn").size();

void add_fault_at(long long line, std::string message, FaultList& faults) {
  add_fault({.file = job_list_name, .line = line, .message = std::move(message)}, faults);
}

io::Place here() { return io::place(input_unit); }

// The items of the next record behind so many words.
io::FreeForm behind_words(int count, const io::Subject& subject) {
  io::FreeForm items(input_unit);
  items.skip_words(count, subject);
  return items;
}

void read_sizes(RunData& run) {
  constexpr int most_atoms = std::numeric_limits<int>::max() / 6;
  const io::Subject atoms{"the number of atoms"}, files{"the number of files"};
  behind_words(3, atoms).integer(run.natom, atoms);
  if (run.natom < 1 || run.natom > most_atoms) {
    io::fatal_stop(here(), "expected a number of atoms from 1 to ", most_atoms, ", found ",
                   run.natom);
  }
  run.n3 = 3 * run.natom;
  run.n6 = 6 * run.natom;

  behind_words(3, files).integer(run.nfile, files);

  const io::Subject displacement{"the displacement step"};
  double step = 0.0;
  behind_words(1, displacement).finite_real(step, displacement);
  run.dx = step / flib::angstrom_per_bohr;
  if (run.dx == 0.0 || !std::isfinite(run.dx)) {
    io::fatal_stop(here(), "expected a displacement step other than 0 that is finite in Bohr, ",
                   "found ", run.dx == 0.0 ? "0" : "an infinite one");
  }
  if (!std::isnan(run.control_dx) && run.control_dx != step) {
    io::warn(here(), io::joined("the step is ", step, " Angstrom, and not dx = ", run.control_dx,
                                " of the control file"));
  }
}

void find_job_section() {
  const std::int64_t before = io::position(input_unit);
  io::Line line;
  if (flib::search_word(input_unit, 1, 15, section_marker, line)) return;
  io::fatal_stop({job_list_name}, "no line holds '", section_marker,
                 "' in columns 1-15 after line ", io::line_number(input_unit, before));
}

void read_operations(RunData& run) {
  io::pass_over_lines(input_unit, 1, "a line before the number of operations");
  const io::Subject operations{"the number of operations"};
  behind_words(3, operations).integer(run.nop, operations);
  if (run.nop < 0) {
    io::fatal_stop(here(), "expected a number of operations of 0 or more, found ", run.nop);
  }
  io::pass_over_lines(input_unit, 1, "a line before the operations");
  std::vector<double> elements;  // column by column of each
  for (int k = 1; k <= run.nop; ++k) {
    io::pass_over_lines(input_unit, 1, "the caption of operation " + std::to_string(k));
    elements.resize(elements.size() + 9);
    for (auto row = elements.end() - 9; row != elements.end() - 6; ++row) {
      io::FreeForm items(input_unit);
      for (int i = 0; i < 9; i += 3) {
        items.finite_real(row[i], {"a matrix element of operation", k});
      }
    }
  }
  run.op = {"op", {3, 3, run.nop}};
  std::copy(elements.begin(), elements.end(), run.op.data());
}

void read_atom_table(RunData& run) {
  io::pass_over_lines(input_unit, 2, "two lines before the atom table");
  std::vector<int> images;
  for (int a = 1; a <= run.natom; ++a) {
    io::FreeForm row(input_unit);
    row.skip_words(1, {"the table entry of atom", a});
    row.text(run.symbol.emplace_back(), {"the symbol of atom", a});
    row.optional_integer(run.nat.emplace_back(), {"the atomic number of atom", a});
    for (int k = 1; k <= run.nop; ++k) {
      row.optional_integer(images.emplace_back(), {"an image of atom", a});
    }
    run.atom_line.push_back(io::line_number(input_unit));
  }
  run.atom_m = {"atom_m", {run.natom, run.nop}};
  auto image = images.begin();
  for (int a = 1; a <= run.natom; ++a) {
    for (int k = 1; k <= run.nop; ++k) run.atom_m(a, k) = *image++;
  }
}

void read_jobs(RunData& run) {
  io::pass_over_lines(input_unit, 3, "three lines before the jobs");
  for (int i = 0; i <= run.n6; ++i) {
    io::FreeForm row(input_unit);
    Job& job = run.jobs.emplace_back();
    io::Line name;
    row.skip_words(1, {"the name of job", i});
    if (int number = 0; io::parse_integer(row.word(), number)) job.number = number;
    row.text(name, {"the name of job", i});
    row.logical(job.is_calc, {"the computed flag of job", i});
    const bool has_job = row.optional_integer(job.calc_m, {"the source of job", i});
    const bool has_operation = row.optional_integer(job.iops, {"the operation of job", i});
    if (!has_job || !has_operation) job.missing = row.missing_value();
    job.list_line = io::line_number(input_unit);
    if (i == run.n6 && !job.is_calc) row.warn_of_open_end({"the operation of job", i});
    const std::string_view base = io::trimmed(io::without_leading_blanks(name.padded()));
    if (base.size() > longest_name && (i == 0 || job.is_calc)) {
      io::fatal_stop(here(), "expected a job name of at most ", longest_name, " characters, found ",
                     io::quoted(base));
    }
    job.log_name = io::joined("coord-", base, ".log");
    job.sgn_name = io::joined("coord-", base, ".sgn");
    if (i == 0) run.com_name = io::joined("coord-", base, ".com");
  }
}

std::string range_text(int first, int last) { return io::joined(first, "..", last); }

// What is wrong with the line of a derived job; empty when nothing is.
std::string fault_of(const RunData& run, int i) {
  const Job& job = run.jobs[static_cast<std::size_t>(i)];
  if (job.missing != nullptr) {
    // A slash in a name that is not quoted ends the line before its flag.
    return io::joined("expected T, or a source job and an operation, for job ", i, ", found ",
                      job.missing);
  }
  const std::string which = io::joined(" for the derived job ", i, ", found ");
  if (job.iops < 1 || job.iops > run.nop) {
    return io::joined("expected an operation within ", range_text(1, run.nop), which, job.iops);
  }
  if (job.calc_m < 0 || job.calc_m > run.n6) {
    return io::joined("expected a source job within ", range_text(0, run.n6), which, job.calc_m);
  }
  return {};
}

// Gives the operations that derived jobs use, true at the number of each.
std::vector<bool> check_sources(const RunData& run) {
  std::vector<bool> is_used(static_cast<std::size_t>(run.nop) + 1);
  FaultList faults{"jobs"};
  for (int i = 1; i <= run.n6; ++i) {
    const Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (job.is_calc) continue;
    std::string fault = fault_of(run, i);
    if (fault.empty()) {
      is_used[static_cast<std::size_t>(job.iops)] = true;
    } else {
      add_fault_at(job.list_line, std::move(fault), faults);
    }
  }
  stop_at_faults(faults);
  return is_used;
}

void check_images(const RunData& run, const std::vector<bool>& is_used) {
  FaultList faults{"images"};
  for (int a = 1; a <= run.natom; ++a) {
    for (int k = 1; k <= run.nop; ++k) {
      const int image = run.atom_m(a, k);
      const bool is_atom = image >= 1 && image <= run.natom;
      if (is_atom || !is_used[static_cast<std::size_t>(k)]) continue;
      add_fault_at(
          run.atom_line[static_cast<std::size_t>(a - 1)],
          io::joined("expected an atom within ", range_text(1, run.natom), " as the image of atom ",
                     a, " under operation ", k, ", found ", image),
          faults);
    }
  }
  stop_at_faults(faults);
}

// Two computed jobs that read the same sign file.
void warn_of_equal_names(const RunData& run) {
  std::unordered_map<std::string_view, int> job_of_name;
  for (int i = 0; i <= run.n6; ++i) {
    const Job& job = run.jobs[static_cast<std::size_t>(i)];
    if (!job.is_calc && i > 0) continue;
    const auto [found, is_new] = job_of_name.emplace(job.sgn_name.content(), i);
    if (is_new) continue;
    const Job& other = run.jobs[static_cast<std::size_t>(found->second)];
    io::warn({job_list_name, job.list_line},
             io::joined("job ", i, " has the name of job ", found->second, " in line ",
                        other.list_line, ": both read ", io::printable(job.sgn_name.content())));
  }
}

// Warns of derived jobs whose source holds no forces at the moment when they are derived: the
// reference, a job derived later, or one that was derived from such a source itself.
void warn_of_zeros(const RunData& run) {
  std::vector<bool> is_zero(run.jobs.size());
  const Job* first_derived = nullptr;
  int derived = 0;
  for (std::size_t i = 1; i < run.jobs.size(); ++i) {
    const Job& job = run.jobs[i];
    if (job.is_calc) continue;
    if (derived++ == 0) first_derived = &job;
    const auto source = static_cast<std::size_t>(job.calc_m);
    const bool later = source >= i && !run.jobs[source].is_calc;
    is_zero[i] = source == 0 || later || is_zero[source];
    if (!is_zero[i]) continue;
    io::warn({job_list_name, job.list_line},
             io::joined("the forces of job ", i, " are zero: its source, job ", source,
                        ", holds none when it is derived"));
  }
  if (derived == 0 || run.symm) return;
  io::warn({job_list_name, first_derived->list_line},
           io::joined("symm is false, but ", derived, derived == 1 ? " job is" : " jobs are",
                      " derived: transition dipoles from symmetry are zero and the derivatives "
                      "rest on them"));
}

}  // namespace

void read_job_list(RunData& run) {
  io::open_existing(input_unit, job_list_name, "run it in the job directory");
  read_sizes(run);
  find_job_section();
  read_operations(run);
  read_atom_table(run);
  read_jobs(run);
  io::close(input_unit);
  check_images(run, check_sources(run));
  warn_of_equal_names(run);
  warn_of_zeros(run);
}

}  // namespace zandor

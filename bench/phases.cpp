// phases CONTROLFILE: runs zandor_gather's phases in the current job directory and prints, for
// each, its time, the time of the least work it could do (its floor) and their ratio. The best of
// several runs of each.
#include "zandor/phases.hpp"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>

#include "flib/ddiag.hpp"
#include "flib/projtrm_rot.hpp"
#include "flib/units_of_measure.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "zandor/job_results.hpp"
#include "zandor/report.hpp"
#include "zandor/run_control.hpp"

const char* const io::program_name = "phases";

namespace {

constexpr int repetitions = 5;

double seconds_of(const std::function<void()>& work) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < repetitions; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    best = std::min(best, taken.count());
  }
  return best;
}

// The bytes of every sign file through `cat`, as a shell would do it.
void read_bytes() {
  if (std::system("cat coord-*.sgn > /dev/null") != 0) io::fatal_stop("cannot run cat");
}

// Every number of the report and the animations through std::to_chars, written nowhere.
void format_numbers(const zandor::RunData& run) {
  static char text[512];
  const auto format = [](const double* values, std::size_t count, std::chars_format form,
                         int digits) {
    for (std::size_t i = 0; i < count; ++i) {
      std::to_chars(text, text + sizeof text, values[i], form, digits);
    }
  };
  const std::size_t matrix = run.hess.size();
  for (int twice = 0; twice < 2; ++twice) {
    format(run.hess.data(), matrix, std::chars_format::scientific, 6);
    const auto& displacements = twice == 0 ? run.disp : run.dispp;
    format(displacements.data(), matrix, std::chars_format::fixed, 10);
    for (int mode = 0; mode < run.n3; ++mode) {
      format(run.x.data(), run.x.size(), std::chars_format::fixed, 10);
    }
  }
}

void solve(const flib::ArrayView<double, 2>& matrix, zandor::RunData& run) {
  int ier = 0;
  flib::tred2e(run.n3, run.n3, matrix.data(), run.eval.data(), run.wk.data(), run.c.data());
  flib::tql2e(run.n3, run.n3, run.eval.data(), run.wk.data(), run.c.data(), ier);
}

void print(const char* phase, double taken, const char* floor, double least) {
  std::printf("%-34s %8.1f ms   %-34s %8.1f ms   %5.2f\n", phase, 1e3 * taken, floor, 1e3 * least,
              taken / least);
}

}  // namespace

namespace {

int measure_phases(int argc, char** argv) {
  using namespace zandor;
  RunData run;
  const bool writes_results = false;
  read_phases(control_file_name(argc, argv), run, writes_results);
  const double reading = seconds_of([&] { read_job_results(run); });
  const double analysis = seconds_of([&] { analyse_phases(run); });
  const double report = seconds_of([&] { write_report(run); });
  const double animations = seconds_of([&] { write_animations(run); });

  const double cat = seconds_of(read_bytes);
  int info = 0;
  flib::Array<double, 2> matrix("matrix", {run.n3, run.n3});
  std::copy_n(run.mhess.data(), run.mhess.size(), matrix.data());
  for (int i = 1; i <= run.n3; ++i) matrix(i, i) += 100000.0;
  const double pair = seconds_of([&] { solve(matrix, run); });
  const double projection = seconds_of(
      [&] { flib::projtrm_rot(run.natom, run.x.data(), run.mass.data(), matrix.data(), info); });
  const double formatting = seconds_of([&] { format_numbers(run); });

  std::printf("%d atoms, %d sign files\n", run.natom, run.n6 + 1);
  print("read the results of all jobs", reading, "cat of the sign files", cat);
  print("analyse (two pairs and projection)", analysis, "two pairs and projection alone",
        2 * pair + projection);
  print("write report and animations", report + animations, "to_chars of their numbers",
        formatting);
  std::printf("pair %.1f ms, projection %.1f ms, report %.1f ms, animations %.1f ms\n", 1e3 * pair,
              1e3 * projection, 1e3 * report, 1e3 * animations);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return measure_phases(argc, argv); });
}

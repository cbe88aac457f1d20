// The inner parts of a run, measured one by one.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "flib/ddiag.hpp"
#include "flib/kernels.hpp"
#include "flib/projtrm_rot.hpp"
#include "flib/search_word.hpp"
#include "flib/units_of_measure.hpp"
#include "io/fields.hpp"
#include "io/free_form.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "models/molecule.hpp"
#include "models/plain_ddiag.hpp"
#include "peers.hpp"

const char* const io::program_name = "zandor_bench";

namespace {

constexpr int unit = 10;

// The mass-weighted force constants of a molecule with n coordinates, shifted as the program does.
const std::vector<double>& matrix_of(int n) {
  static std::vector<double> matrix;
  static int made = 0;
  if (made != n) {
    matrix = models::make_molecule(n / 3).k;
    const auto order = static_cast<std::size_t>(n);
    for (double& element : matrix) {
      element /= models::carbon_mass * flib::electron_masses_per_amu;
    }
    for (std::size_t i = 0; i < order; ++i) matrix[i * order + i] += 100000.0;
    made = n;
  }
  return matrix;
}

using Solver = std::function<bool(int n, const std::vector<double>& a)>;

void solve(benchmark::State& state, const Solver& solver) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<double>& a = matrix_of(n);
  for (auto _ : state) {
    if (!solver(n, a)) {
      state.SkipWithError("not there");
      break;
    }
  }
}

// Runs a pair of routines with the signatures of tred2e and tql2e.
template <class Reduce, class Iterate>
bool run_pair(int n, const std::vector<double>& a, Reduce reduce, Iterate iterate) {
  std::vector<double> d(static_cast<std::size_t>(n)), e(d.size()), z(a.size());
  int ierr = 0;
  reduce(n, n, a.data(), d.data(), e.data(), z.data());
  iterate(n, n, d.data(), e.data(), z.data(), ierr);
  return ierr == 0;
}

bool solve_with_kernels(const flib::Kernels& kernels, int n, const std::vector<double>& a) {
  return run_pair(
      n, a, [&](auto... arguments) { flib::tred2e(kernels, arguments...); },
      [&](int nm, int order, double* d, double* e, double* z, int& ierr) {
        flib::tql2e(kernels, nm, order, d, e, z, ierr);
      });
}

bool solve_plainly(int n, const std::vector<double>& a) {
  return run_pair(n, a, plain::tred2e, plain::tql2e);
}

void project(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const models::Molecule m = models::make_molecule(n / 3);
  const std::vector<double> mass(static_cast<std::size_t>(n / 3), models::carbon_mass);
  std::vector<double> hess = m.k;
  int info = 0;
  for (auto _ : state) flib::projtrm_rot(n / 3, m.x.data(), mass.data(), hess.data(), info);
}

// Numbers of the size that reports and animations hold.
std::vector<double> sample_numbers() {
  std::mt19937 random(3);
  std::normal_distribution<double> number(0.0, 0.3);
  std::vector<double> numbers(10000);
  for (double& value : numbers) value = number(random);
  return numbers;
}

// The time is per number.
template <class Format>
void format(benchmark::State& state, Format format_number) {
  const std::vector<double> numbers = sample_numbers();
  char text[64];
  std::size_t i = 0;
  for (auto _ : state) {
    format_number(text, numbers[i++ % numbers.size()]);
    benchmark::DoNotOptimize(text);
  }
}

// A folder for the files of a benchmark, removed at its end.
class Folder {
 public:
  Folder()
      : path_(std::filesystem::temp_directory_path() /
              ("zandor-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  std::string file(const char* name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

void read_forces(benchmark::State& state) {
  const Folder folder;
  constexpr int atoms = 300;
  io::open_replaced(unit, folder.file("forces"));
  const std::vector<double> numbers = sample_numbers();
  for (std::size_t a = 0; a < atoms; ++a) {
    io::output(unit).integer(static_cast<long long>(a), 7);
    for (std::size_t k = 0; k < 3; ++k) io::output(unit).fixed(numbers[3 * a + k], 16, 10);
    io::output(unit).end_line();
  }
  io::close(unit);
  double value = 0.0;
  for (auto _ : state) {
    io::open_existing(unit, folder.file("forces"));
    for (int a = 0; a < atoms; ++a) {
      io::FreeForm row(unit);
      row.skip_words(1, {"atom"});
      for (int k = 0; k < 3; ++k) row.finite_real(value, {"force"});
    }
    io::close(unit);
  }
}

void search_text(benchmark::State& state, bool any_case) {
  const Folder folder;
  io::open_replaced(unit, folder.file("text"));
  for (int i = 0; i < 130000; ++i) {
    io::output(unit).text(" SCF Done:  E(RHF) =  -382.308266602     A.U. after   ").integer(i, 9);
    io::output(unit).text(" cycles so far\n");
  }
  io::close(unit);
  io::Line line;
  for (auto _ : state) {
    io::open_existing(unit, folder.file("text"));
    if (any_case) {
      flib::search_word_free_ignorecase_tline(unit, "oniom", line, 0);
    } else {
      flib::search_word_free(unit, "Center Atomic Forces", line);
    }
    io::close(unit);
  }
}

void register_solver(const std::string& name, const Solver& solver) {
  benchmark::RegisterBenchmark(("eigenpairs: " + name).c_str(), solve, solver)
      ->Arg(90)
      ->Arg(300)
      ->Arg(900)
      ->Arg(1500)
      ->Unit(benchmark::kMillisecond);
}

void register_all() {
  register_solver("tred2e+tql2e", [](int n, const auto& a) {
    return solve_with_kernels(flib::best_kernels(), n, a);
  });
  for (const flib::Kernels* const* k = flib::usable_kernels(); *k != nullptr; ++k) {
    const flib::Kernels& kernels = **k;
    register_solver(std::string("with ") + kernels.name,
                    [&kernels](int n, const auto& a) { return solve_with_kernels(kernels, n, a); });
  }
  register_solver("plain", solve_plainly);
  register_solver("Eigen", bench::solve_with_eigen);
  register_solver("dsyev", bench::solve_with_dsyev);
  register_solver("dsyevd", bench::solve_with_dsyevd);
  benchmark::RegisterBenchmark("projtrm_rot", project)
      ->Arg(90)
      ->Arg(300)
      ->Arg(900)
      ->Arg(1500)
      ->Unit(benchmark::kMillisecond);
  const auto add_format = [](const char* name, auto format_number) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) { format(state, format_number); });
  };
  add_format("format: fixed 16.10", [](char* out, double v) { io::fixed_field(out, v, 16, 10); });
  add_format("format: snprintf %16.10f",
             [](char* out, double v) { std::snprintf(out, 64, "%16.10f", v); });
  add_format("format: sci 15.6", [](char* out, double v) { io::sci_field(out, v, 15, 6); });
  add_format("format: snprintf %15.6E",
             [](char* out, double v) { std::snprintf(out, 64, "%15.6E", v); });
  benchmark::RegisterBenchmark("read: forces of 300 atoms", read_forces)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("search: 10 MB", search_text, false)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("search in any case: 10 MB", search_text, true)
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  register_all();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

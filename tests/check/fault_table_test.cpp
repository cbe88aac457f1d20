// Faults made on purpose, in every job where they make sense: found, and the job named?
// The counts stand in docs/checks.md.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "job_folder.hpp"

namespace {

using namespace job_folder;

constexpr int natom = 4;
constexpr int n6 = 6 * natom;

struct Count {
  int cases = 0, found = 0, named = 0;
};

class FaultTable : public testing::Test {
 protected:
  void open(const std::string& folder) {
    folder_ = folder;
    copy_here(folder);
    clean_ = lines_of(look(jobs_));
  }

  std::string name(int i) const { return std::string(jobs_.job(i).sgn_name.content()); }
  bool computed(int i) const { return i >= 0 && i <= n6 && jobs_.job(i).is_calc; }
  std::vector<int> computed_jobs() const {
    std::vector<int> jobs;
    for (int i = 1; i <= n6; ++i) {
      if (computed(i)) jobs.push_back(i);
    }
    return jobs;
  }
  bool has_dipole(int i) const {
    const double* const mu = jobs_.run.tdip.column(i);
    return mu[0] != 0.0 || mu[1] != 0.0 || mu[2] != 0.0;
  }

  // Looks, counts and mends. Named: one of the files is blamed (of a pair of signs both), and no
  // more than two jobs are.
  void look_and_mend(const std::string& fault, const std::vector<std::string>& files,
                     std::vector<int> wanted) {
    Count& count = counts_[fault];
    ++count.cases;
    const check::Findings findings = look();
    std::set<int> blamed;
    bool found = false;
    std::set<std::string> named;
    for (const check::Finding& finding : findings.list) {
      if (finding.severity == check::Severity::note) continue;
      if (clean_.find(check::line_of(finding)) != std::string::npos) continue;
      found = true;
      for (const std::string& file : files) {
        if ((finding.file + " " + finding.text).find(file) != std::string::npos) named.insert(file);
      }
      blamed.insert(finding.rerun.begin(), finding.rerun.end());
    }
    for (const int job : wanted) blamed.erase(job);
    count.found += found ? 1 : 0;
    const std::size_t enough = fault == "pair of dipole signs" ? files.size() : 1;
    count.named += named.size() >= enough && blamed.size() <= 1 ? 1 : 0;
    mend("files.out");
    for (const std::string& file : files) mend(file);
  }
  void look_and_mend(const std::string& fault, int i) { look_and_mend(fault, {name(i)}, {i}); }

  void mend(const std::string& file) const {
    const std::filesystem::path good = folder_ + "/" + file;
    if (exists(good)) copy_file(good, file, std::filesystem::copy_options::overwrite_existing);
  }

  void check_counts() const {
    std::cout << "| fault | cases | found | named |\n|---|---|---|---|\n";
    for (const auto& [fault, count] : counts_) {
      std::cout << "| " << fault << " | " << count.cases << " | " << count.found << " | "
                << count.named << " |\n";
      EXPECT_EQ(count.found, count.cases) << fault;
      EXPECT_GE(count.named, 0.95 * count.cases) << fault;
    }
  }

  void spoil_forces(int i);
  void spoil_files(int i);
  void spoil_dipoles();
  void spoil_pairs();
  void spoil_reference();
  void spoil_forces_of_all();
  void spoil_masses();
  void spoil_all();

  support::TempFolder temp_;
  std::string folder_;
  std::string clean_;
  check::JobData jobs_;
  std::map<std::string, Count> counts_;
};

void FaultTable::spoil_forces(int i) {
  const std::vector<double> reference = forces_of(name(0));
  const std::vector<double> forces = forces_of(name(i));
  const auto replace = [&](const std::string& fault, const std::vector<double>& with) {
    set_forces(name(i), with);
    look_and_mend(fault, i);
  };
  replace("forces of the reference", reference);
  const int partner = i % 2 == 0 ? i - 1 : i + 1;
  if (computed(partner)) replace("forces of the partner", forces_of(name(partner)));
  if (computed(i + 2)) replace("forces of the next coordinate", forces_of(name(i + 2)));
  std::vector<double> half = forces;
  std::vector<double> noisy = forces;
  std::vector<double> exchanged = forces;
  std::mt19937 random(static_cast<unsigned>(i));
  for (std::size_t k = 0; k < half.size(); ++k) {
    half[k] = (forces[k] + reference[k]) / 2.0;
    noisy[k] += 1e-4 * (2.0 * static_cast<double>(random()) / 4294967295.0 - 1.0);
  }
  std::vector<double> pushed = forces;
  pushed[3] += 1e-3;
  std::swap_ranges(exchanged.begin(), exchanged.begin() + 3, exchanged.begin() + 3);
  replace("half the step", half);
  replace("noise of 1e-4", noisy);
  replace("forces of atoms 1 and 2 exchanged", exchanged);
  replace("1e-3 more on one atom", pushed);
  for (const int decimals : {4, 5}) {
    set_forces(name(i), forces, decimals);
    look_and_mend("forces with 4 or 5 decimals", i);
  }
  Lines lines = read_lines(name(i));
  const auto coordinate = static_cast<std::size_t>((i - 1) / 2);
  std::string& row = lines[forces_at(lines) + coordinate / 3];
  std::size_t point = 0;
  for (std::size_t k = 0; k <= coordinate % 3; ++k) point = row.find('.', point + 1);
  row.erase(point, 1);
  write_lines(name(i), lines);
  look_and_mend("decimal point lost", i);
}

void FaultTable::spoil_files(int i) {
  std::filesystem::remove(name(i));
  look_and_mend("file missing", i);
  support::write_file(name(i), "");
  look_and_mend("file empty", i);
  const std::string text = support::read_file(name(i));
  support::write_file(name(i), text.substr(0, text.rfind(" end of job") - 60));
  look_and_mend("file cut", i);
  Lines lines = read_lines(name(i));
  for (const std::size_t row : {geometry_at(lines), forces_at(lines)}) {
    std::swap(lines[row], lines[row + 1]);
    std::swap_ranges(lines[row].begin(), lines[row].begin() + 8, lines[row + 1].begin());
  }
  write_lines(name(i), lines);
  look_and_mend("atoms 1 and 2 exchanged", i);
}

void FaultTable::spoil_dipoles() {
  int last = 0;
  for (const int i : computed_jobs()) {
    if (!has_dipole(i)) continue;
    turn_dipole(name(i));
    look_and_mend("dipole sign", i);
    if (last > 0) {
      turn_dipole(name(last));
      turn_dipole(name(i));
      look_and_mend("pair of dipole signs", {name(last), name(i)}, {last, i});
    }
    last = i;
  }
}

void FaultTable::spoil_pairs() {
  for (int i = 1; i < n6; i += 2) {
    if (!computed(i) || !computed(i + 1)) continue;
    std::filesystem::rename(name(i), "x");
    std::filesystem::rename(name(i + 1), name(i));
    std::filesystem::rename("x", name(i + 1));
    look_and_mend("files of + and - exchanged", {name(i), name(i + 1)}, {i, i + 1});
    const std::vector<double> forces = forces_of(name(i));
    set_forces(name(i), forces_of(name(i + 1)));
    set_forces(name(i + 1), forces);
    look_and_mend("forces of + and - exchanged", {name(i), name(i + 1)}, {i, i + 1});
  }
}

void FaultTable::spoil_reference() {
  const std::string com(jobs_.run.com_name.content());
  for (int axis = 0; axis < 3; ++axis) {
    Lines lines = read_lines(com);
    for (std::size_t k = lines.size() - natom - 1; k < lines.size() - 1; ++k) {
      std::istringstream row(lines[k]);
      std::string symbol;
      double x[3] = {};
      row >> symbol >> x[0] >> x[1] >> x[2];
      std::swap(x[(axis + 1) % 3], x[(axis + 2) % 3]);
      x[(axis + 1) % 3] *= -1.0;
      std::ostringstream turned;
      turned << symbol << std::fixed << " " << x[0] << " " << x[1] << " " << x[2];
      lines[k] = turned.str();
    }
    write_lines(com, lines);
    look_and_mend("input turned by 90 degrees", {com}, {});
  }
  support::edit_file("files.out", "0.005000", "0.009449");
  support::edit_file("control.inp", "  dx = 0.005\n", "");
  look_and_mend("step in Bohr", {"0.529"}, {});
  mend("control.inp");
}

void FaultTable::spoil_forces_of_all() {
  const auto change = [&](const std::string& fault, const std::string& said, double factor,
                          int decimals) {
    std::vector<std::string> files = {said};
    for (int i = 0; i <= n6; ++i) {
      if (!computed(i)) continue;
      std::vector<double> forces = forces_of(name(i));
      for (double& force : forces) force *= factor;
      set_forces(name(i), forces, decimals);
      files.push_back(name(i));
    }
    look_and_mend(fault, files, {});
  };
  change("gradients for forces", "gradients for forces", -1.0, 10);
  change("all forces in eV/Angstrom", "eV/Angstrom", 51.422, 10);
  change("all forces with 4 decimals", "print more decimals", 1.0, 4);
}

void FaultTable::spoil_masses() {
  const Lines good = read_lines(name(0));
  for (std::size_t atom = 0; atom < natom; ++atom) {
    Lines lines = good;
    std::string& row = lines[geometry_at(lines) + atom];
    std::istringstream items(row);
    std::string number, symbol, z, mass, rest;
    items >> number >> symbol >> z >> mass;
    std::getline(items, rest);
    row = " " + number + " " + symbol + " " + z +
          (mass[0] == '1' && mass[1] == '.' ? " 12.0" : " 1.008") + rest;
    write_lines(name(0), lines);
    look_and_mend("mass of another element", {"atom " + number + " has the mass"}, {});
    mend(name(0));
  }
}

void FaultTable::spoil_all() {
  for (const int i : computed_jobs()) {
    spoil_forces(i);
    spoil_files(i);
  }
  spoil_pairs();
  spoil_dipoles();
  spoil_reference();
  spoil_forces_of_all();
  spoil_masses();
}

TEST_F(FaultTable, on_formaldehyde_with_all_jobs_computed) {
  open(PROJECT_FOLDER "/examples/formaldehyde-s1");
  spoil_all();
  check_counts();
}

TEST_F(FaultTable, on_formaldehyde_with_derived_jobs) {
  open(PROJECT_FOLDER "/examples/formaldehyde-s1-c2v");
  spoil_all();
  Lines lines = read_lines("files.out");
  for (int i = 1; i <= n6; ++i) {
    if (computed(i)) continue;
    for (const int source : computed_jobs()) {
      if (source == jobs_.job(i).calc_m) continue;
      Lines wrong = lines;
      std::string& line = wrong[static_cast<std::size_t>(jobs_.job(i).list_line - 1)];
      line = " " + std::to_string(i) + " " + check::base_name(jobs_.job(i)) + " F " +
             std::to_string(source) + " " + std::to_string(jobs_.job(i).iops);
      write_lines("files.out", wrong);
      look_and_mend("wrong source job", {check::job_text(jobs_, i)}, {});
    }
  }
  check_counts();
}

TEST_F(FaultTable, on_ammonia_with_a_threefold_axis) {
  open(PROJECT_FOLDER "/examples/ammonia-s1-c3v");
  Lines lines = read_lines("files.out");
  for (const int k : {2, 4, 5, 6}) {
    // The next rotation or mirror plane is another element of the group.
    Lines wrong = lines;
    const auto row = static_cast<std::size_t>(7 + 4 * k);
    const std::size_t other = k == 2 ? row + 4 : k == 6 ? row - 8 : row + 4;
    std::copy_n(lines.begin() + static_cast<long>(other), 3,
                wrong.begin() + static_cast<long>(row));
    write_lines("files.out", wrong);
    look_and_mend(k == 2 ? "operation transposed" : "another operation",
                  {"operation " + std::to_string(k)}, {});
  }
  for (const int i : computed_jobs()) spoil_forces(i);
  check_counts();
}

}  // namespace

#include "job_folder.hpp"

#include <fstream>
#include <iomanip>
#include <sstream>

namespace job_folder {

namespace {

std::size_t behind(const Lines& lines, const std::string& header, std::size_t captions) {
  for (std::size_t k = 0; k < lines.size(); ++k) {
    if (lines[k].find(header) != std::string::npos) return k + 1 + captions;
  }
  ADD_FAILURE() << "no line holds '" << header << "'";
  return 0;
}

}  // namespace

Lines read_lines(const std::string& name) {
  std::ifstream file(name);
  EXPECT_TRUE(file) << name;
  Lines lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

void write_lines(const std::string& name, const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  support::write_file(name, text);
}

std::size_t forces_at(const Lines& sign_file) {
  return behind(sign_file, "Center Atomic Forces", 0);
}
std::size_t geometry_at(const Lines& sign_file) { return behind(sign_file, "Coordinates (Ang", 1); }
std::size_t dipole_at(const Lines& sign_file) {
  return behind(sign_file, "transition electric dipole", 0);
}

std::vector<double> forces_of(const std::string& name) {
  const Lines lines = read_lines(name);
  std::vector<double> forces;
  for (std::size_t k = forces_at(lines); k < lines.size(); ++k) {
    std::istringstream row(lines[k]);
    double number = 0.0, x = 0.0, y = 0.0, z = 0.0;
    if (!(row >> number >> x >> y >> z)) break;
    forces.insert(forces.end(), {x, y, z});
  }
  return forces;
}

void set_forces(const std::string& name, const std::vector<double>& forces, int decimals) {
  Lines lines = read_lines(name);
  for (std::size_t a = 0; 3 * a < forces.size(); ++a) {
    std::ostringstream row;
    row << std::fixed << std::setprecision(decimals) << a + 1;
    for (std::size_t k = 0; k < 3; ++k) row << " " << forces[3 * a + k];
    lines[forces_at(lines) + a] = row.str();
  }
  write_lines(name, lines);
}

Dipole dipole_of(const std::string& name) {
  const Lines lines = read_lines(name);
  std::istringstream row(lines[dipole_at(lines)]);
  std::string word;
  Dipole dipole{};
  row >> word >> word >> dipole[0] >> dipole[1] >> dipole[2];
  return dipole;
}

void set_dipole(const std::string& name, const Dipole& dipole, int decimals) {
  Lines lines = read_lines(name);
  std::ostringstream row;
  row << " S0->S1 1" << std::fixed << std::setprecision(decimals);
  for (const double x : dipole) row << " " << x;
  lines[dipole_at(lines)] = row.str();
  write_lines(name, lines);
}

void scale_dipole(const std::string& name, double factor) {
  const Dipole m = dipole_of(name);
  set_dipole(name, {m[0] * factor, m[1] * factor, m[2] * factor});
}

void copy_here(const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      std::filesystem::copy(entry, entry.path().filename(),
                            std::filesystem::copy_options::overwrite_existing);
    }
  }
}

check::Findings look(check::JobData& jobs, const std::vector<std::string>& only) {
  check::read_job_data("control.inp", jobs);
  return check::run_checks(jobs, {}, only);
}

check::Findings look(const std::vector<std::string>& only) {
  check::JobData jobs;
  return look(jobs, only);
}

std::string lines_of(const check::Findings& findings, bool notes) {
  std::string text;
  for (const check::Finding& finding : findings.list) {
    if (notes || finding.severity != check::Severity::note) text += check::line_of(finding) + "\n";
  }
  return text;
}

}  // namespace job_folder

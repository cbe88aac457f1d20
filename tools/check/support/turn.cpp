#include "check/support/turn.hpp"

#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "analysis/prepared_dipoles.hpp"
#include "check/support/dipoles.hpp"
#include "check/support/findings.hpp"
#include "io/process.hpp"
#include "io/units.hpp"
#include "io/values.hpp"

namespace check {

namespace {

namespace fs = std::filesystem;

constexpr int unit = 14;
constexpr std::string_view separators = " \t,\r\n";

std::string content_of(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file) io::fatal_stop({name}, "cannot read");
  return text;
}

// Turns the number that begins at `at`, within its columns where there is room. False where the
// text there is not that number.
bool turn_number(std::string& text, std::size_t at, double expected) {
  const std::size_t end = std::min(text.find_first_of(separators, at), text.size());
  double value = 0.0;
  if (!io::parse_real(std::string_view(text).substr(at, end - at), value) || value != expected) {
    return false;
  }
  if (value == 0.0) return true;
  if (text[at] == '-') {
    text[at] = ' ';
  } else if (text[at] == '+') {
    text[at] = '-';
  } else if (at > 1 && text[at - 1] == ' ' && text[at - 2] == ' ') {
    text[at - 1] = '-';
  } else {
    text.insert(at, "-");
  }
  return true;
}

std::size_t next_item(const std::string& text, std::size_t at) {
  return std::min(text.find_first_not_of(separators, at), text.size());
}

bool turn_dipole(std::string& text, const double* dipole) {
  std::size_t at = text.find('\n', text.find(zandor::dipole_header));
  for (int item = 0; item < 5; ++item) {
    at = next_item(text, at);
    if (item > 1 && !turn_number(text, at, dipole[item - 2])) return false;
    at = std::min(text.find_first_of(separators, next_item(text, at)), text.size());
  }
  return true;
}

bool turn_density(std::string& text, long long line, double value) {
  std::size_t at = 0;
  for (long long k = 1; k < line; ++k) at = text.find('\n', at) + 1;
  return turn_number(text, next_item(text, text.find('=', at) + 1), value);
}

std::string turned_file(const JobData& jobs, int job) {
  const std::string name(jobs.sign_name(job));
  std::string text = content_of(name);
  const SignHeader& header = jobs.sign_file(job).header;
  const double* const dipole = job == 0 ? jobs.run.dipole0.data() : jobs.run.tdip.column(job);
  if (!turn_dipole(text, dipole) ||
      (header.tden_maxval &&
       !turn_density(text, header.lines[SignHeader::size_count + 1], *header.tden_maxval))) {
    io::fatal_stop({name},
                   "expected transition dipole and tden_maxval to be spelled plainly, "
                   "found another spelling: turn their sign by hand");
  }
  return text;
}

// Files wait with an open descriptor until all are complete.
void allow_many_files() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

std::string write_turned(const JobData& jobs, const Thresholds& limits, const std::string& folder) {
  std::error_code error;
  const bool is_there = fs::exists(fs::symlink_status(folder, error));
  if (is_there && !(fs::is_directory(folder, error) && fs::is_empty(folder, error))) {
    io::fatal_stop({folder}, "expected behind --turn a folder that is new or empty, found another");
  }
  const std::vector<int> turned = signs_to_turn(jobs, limits);
  if (turned.empty()) return "no sign has to be turned, nothing is written";
  std::vector<std::pair<std::string, std::string>> files;
  std::set<std::string> names;
  for (const int job : turned) {
    const std::string name(jobs.sign_name(job));
    if (names.insert(name).second) files.emplace_back(folder + "/" + name, turned_file(jobs, job));
  }
  if (!is_there && !fs::create_directory(folder, error)) {
    io::fatal_stop({folder}, "cannot make the folder: ", error.message());
  }
  allow_many_files();
  const auto stop = io::collect([&] {
    io::begin_results();
    for (const auto& [name, text] : files) {
      io::open_replaced(unit, name);
      io::output(unit).text(text);
      io::close(unit);
    }
    io::put_results_in_place();
  });
  if (stop) {
    if (!is_there) fs::remove(folder, error);
    io::fatal_stop({stop->file, stop->line}, stop->message);
  }
  return io::joined(counted(std::ssize(files), "sign file"), " written to ", io::printable(folder),
                    ", with the sign turned: ", analysis::job_names(jobs.run, turned));
}

}  // namespace check

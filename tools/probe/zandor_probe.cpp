// zandor_probe: says of quantum-chemistry files which program wrote them, and what sizes they hold.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/qm_file_type.hpp"
#include "flib/search_word.hpp"
#include "io/process.hpp"
#include "io/text.hpp"
#include "io/units.hpp"
#include "options/options.hpp"

const char* const io::program_name = "zandor_probe";

namespace {

// What the probes say of a file, in the order of the output.
using Record = nlohmann::ordered_json;

// Exit statuses; the larger outranks the smaller.
constexpr int recognised = 0;
constexpr int not_recognised = 1;
constexpr int not_read = 2;

constexpr int unset = std::numeric_limits<int>::min();

// "1.0" of the heading " VERSION 1.0"; the heading has been found before.
std::string version_of_report(const std::string& name) {
  constexpr int unit = 13;
  constexpr int last_column = 8;
  io::Line line;
  io::open_existing(unit, name);
  flib::search_word(unit, 2, last_column, "VERSION", line);
  io::close(unit);
  const std::string_view text = line.content();
  return std::string(
      io::without_leading_blanks(text.substr(std::min<std::size_t>(text.size(), last_column))));
}

// Adds type, version and class code, and gives the type.
std::string recognise(const std::string& name, Record& record) {
  io::Line type_line, version_line;
  int info = -1;
  flib::qm_file_type(name, type_line, version_line, info);
  std::string type(type_line.content());
  // The library gives the line below the one with the version, deliberately.
  const std::string version =
      type == "ZANDORCE" ? version_of_report(name) : std::string(version_line.content());
  if (!type.empty()) record["type"] = type;
  if (!version.empty()) record["version"] = version;
  record["info"] = info;
  return type;
}

// Adds the counts that a probe has found.
void add_counts(Record& record, int info, std::vector<std::pair<const char*, int>> counts) {
  for (const auto& [name, count] : counts) {
    if (info == 0 && count != unset) record[name] = count;
  }
}

// Asks every probe that suits the file.
void ask_probes(const std::string& name, Record& record) {
  const bool log = recognise(name, record) == "GAUSSIAN LOG";
  bool oniom = false;
  int info = 0;
  flib::qm_file_ifoniom(name, oniom, info);
  record["oniom"] = oniom;
  int natom = unset;
  flib::qm_file_natom(name, natom, info);
  add_counts(record, info, {{"natom", natom}});
  if (oniom) {
    int nqm = unset, nqmmm = unset;
    flib::qm_file_natom_oniom_qm(name, nqm, nqmmm, info);
    add_counts(record, info, {{"nqm", nqm}, {"nqmmm", nqmmm}});
  }
  if (log) {
    int ni = unset, na = unset, nci = unset, nae = unset, nfc = unset, nfv = unset;
    flib::qm_file_nci(name, ni, na, nci, nae, nfc, nfv, info);
    add_counts(record, info,
               {{"ni", ni}, {"na", na}, {"nci", nci}, {"nae", nae}, {"nfc", nfc}, {"nfv", nfv}});
  } else {
    // For a log this probe would wait for a record from standard input.
    int na = unset, nb = unset, nbasis = unset, nbsuse = unset;
    flib::qm_file_nbasis_nbsuse(name, na, nb, nbasis, nbsuse, info);
    add_counts(record, info,
               {{"nalpha", na}, {"nbeta", nb}, {"nbasis", nbasis}, {"nbsuse", nbsuse}});
  }
}

void require_readable_name(const std::string& name, const std::string& short_name) {
  if (short_name.size() > io::line_capacity || short_name.ends_with(' ')) {
    io::fatal_stop({name},
                   "expected a file name of at most 200 characters that does not end in a "
                   "blank, found another");
  }
  struct stat status {};
  if (::stat(short_name.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
      !S_ISDIR(status.st_mode)) {
    // Every probe reads the file from its beginning.
    io::fatal_stop({name}, "expected a regular file, found a pipe or a device");
  }
}

// Fills the record and the line that the recognition printed, which is empty for a recognised file.
// A longer path than the library's routines take, of 200 characters, is asked from within its
// folder.
std::optional<io::Stop> probe_file(const std::string& name, Record& record, std::string& warning) {
  const std::size_t slash = name.rfind('/');
  const bool within = name.size() > io::line_capacity && slash != name.npos && slash > 0;
  const int before = within ? ::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
  // Every probe recognises the file anew and would print its warning once more.
  const io::SinkScope sink({.print_line = [&warning](std::string_view line) {
    if (warning.empty()) warning = line;
  }});
  const auto stop = io::collect([&] {
    if (within && (before < 0 || ::chdir(name.substr(0, slash).c_str()) != 0)) {
      io::fatal_stop({name}, "expected a file that can be read, found: ", strerror(errno));
    }
    const std::string short_name = within ? name.substr(slash + 1) : name;
    require_readable_name(name, short_name);
    record["file"] = name;
    ask_probes(short_name, record);
  });
  // The folder is where it was, unless somebody has closed it meanwhile: the next name tells.
  if (::fchdir(before) == 0) ::close(before);
  return stop;
}

std::string shown(const Record& value) {
  if (value.is_boolean()) return value.get<bool>() ? "T" : "F";
  if (value.is_string()) return io::printable(value.get<std::string>());
  return value.dump();
}

void print(const Record& record, bool as_json, bool first) {
  if (as_json) {
    std::cout << record.dump(-1, ' ', false, Record::error_handler_t::replace) << '\n';
    return;
  }
  if (!first) std::cout << '\n';
  for (const auto& [key, value] : record.items()) std::cout << key << " = " << shown(value) << '\n';
}

// Asks about one file and prints what was found; the result is its exit status.
int report_file(const std::string& name, bool as_json, bool first) {
  if (name == "-") {
    io::report({name}, "expected the name of a file, found '-' (standard input is not read)");
    return not_read;
  }
  Record record;
  std::string warning;
  if (const auto stop = probe_file(name, record, warning)) {
    io::report(*stop);
    return not_read;
  }
  print(record, as_json, first);
  if (!std::cout.flush()) io::fatal_stop({"standard output"}, "cannot write the results");
  if (warning.empty()) return recognised;
  std::cerr << io::printable(warning) << '\n';
  return not_recognised;
}

int report_files(const std::vector<std::string>& names, bool as_json) {
  int status = recognised;
  bool first = true;
  for (const std::string& name : names) {
    const int of_file = report_file(name, as_json, first);
    first = first && of_file == not_read;
    status = std::max(status, of_file);
  }
  return status;
}

int parse_and_report(int argc, char** argv) {
  CLI::App app(
      "Says of each file which quantum-chemistry program wrote it and what sizes it holds.",
      io::program_name);
  app.footer("Exit status: 0 all files recognised, 1 some not, 2 some could not be read.");
  std::vector<std::string> names;
  bool as_json = false;
  app.add_option("FILE", names, "files to look at")->required();
  app.add_flag("--json", as_json, "one JSON object per line");
  if (!options::parse(app, argc, argv)) return recognised;
  return report_files(names, as_json);
}

}  // namespace

int main(int argc, char** argv) {
  return io::run_program([&] { return parse_and_report(argc, argv); });
}

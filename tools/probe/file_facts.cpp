#include "probe/file_facts.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/qm_file_type.hpp"
#include "flib/search_word.hpp"
#include "io/fatal.hpp"
#include "io/text.hpp"
#include "io/units.hpp"

namespace probe {

namespace {

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

void recognise(const std::string& name, FileFacts& facts) {
  io::Line type;
  io::Line version;
  flib::qm_file_type(name, type, version, facts.info);
  facts.type = type.content();
  facts.version = version.content();
  // The library gives the line below the one with the version, deliberately.
  if (facts.type == "ZANDORCE") facts.version = version_of_report(name);
}

void add_counts(FileFacts& facts, int info, std::vector<std::pair<std::string, int>> counts) {
  for (auto& count : counts) {
    if (info == 0 && count.second != unset) facts.counts.push_back(std::move(count));
  }
}

void ask_probes(const std::string& name, FileFacts& facts) {
  int info = 0;
  flib::qm_file_ifoniom(name, facts.oniom, info);
  int natom = unset;
  flib::qm_file_natom(name, natom, info);
  add_counts(facts, info, {{"natom", natom}});
  if (facts.oniom) {
    int nqm = unset, nqmmm = unset;
    flib::qm_file_natom_oniom_qm(name, nqm, nqmmm, info);
    add_counts(facts, info, {{"nqm", nqm}, {"nqmmm", nqmmm}});
  }
  if (facts.type == "GAUSSIAN LOG") {
    int ni = unset, na = unset, nci = unset, nae = unset, nfc = unset, nfv = unset;
    flib::qm_file_nci(name, ni, na, nci, nae, nfc, nfv, info);
    add_counts(facts, info,
               {{"ni", ni}, {"na", na}, {"nci", nci}, {"nae", nae}, {"nfc", nfc}, {"nfv", nfv}});
  } else {
    // For a log this probe would wait for a record from standard input.
    int na = unset, nb = unset, nbasis = unset, nbsuse = unset;
    flib::qm_file_nbasis_nbsuse(name, na, nb, nbasis, nbsuse, info);
    add_counts(facts, info,
               {{"nalpha", na}, {"nbeta", nb}, {"nbasis", nbasis}, {"nbsuse", nbsuse}});
  }
}

// Goes to the folder of a file, and back.
class FolderOfFile {
 public:
  explicit FolderOfFile(const std::string& name)
      : before_(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (before_ < 0 || ::chdir(name.substr(0, name.rfind('/')).c_str()) != 0) stop(name);
  }
  ~FolderOfFile() {
    // The folder is where it was, unless somebody has closed it meanwhile: the next name tells.
    if (::fchdir(before_) == 0) ::close(before_);
  }
  FolderOfFile(const FolderOfFile&) = delete;
  FolderOfFile& operator=(const FolderOfFile&) = delete;

 private:
  [[noreturn]] static void stop(const std::string& name) {
    io::fatal_stop({name},
                   std::string("expected a file that can be read, found: ") + strerror(errno));
  }
  int before_;
};

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

FileFacts ask_all(const std::string& name, const std::string& short_name) {
  require_readable_name(name, short_name);
  FileFacts facts;
  // Every probe recognises the file anew and would print its warning once more.
  const io::SinkScope sink({.print_line = [&facts](std::string_view line) {
    if (facts.warning.empty()) facts.warning = line;
  }});
  recognise(short_name, facts);
  ask_probes(short_name, facts);
  return facts;
}

}  // namespace

FileFacts probe_file(const std::string& name) {
  // The library's routines take names of 200 characters: a longer path is asked from within its
  // folder.
  const std::size_t slash = name.rfind('/');
  if (name.size() <= io::line_capacity || slash == std::string::npos || slash == 0) {
    return ask_all(name, name);
  }
  const FolderOfFile folder(name);
  return ask_all(name, name.substr(slash + 1));
}

}  // namespace probe

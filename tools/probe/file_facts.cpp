#include "file_facts.hpp"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/qm_file_type.hpp"
#include "io/fatal.hpp"
#include "io/text.hpp"

namespace probe {

namespace {

constexpr int unset = std::numeric_limits<int>::min();

[[noreturn]] void stop_at_system(const char* what) {
  io::fatal_stop(std::string("cannot ") + what + ": " + strerror(errno));
}

std::string read_all(int descriptor) {
  std::string text;
  char block[4096];
  ssize_t got = 0;
  while ((got = ::read(descriptor, block, sizeof block)) > 0) {
    text.append(block, static_cast<std::size_t>(got));
  }
  return text;
}

void recognise(const std::string& name, FileFacts& facts) {
  // The library prints its warning on standard output, which here belongs to the results: the first
  // one is caught, those of the later probes go nowhere.
  int ends[2];
  if (::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) < 0) stop_at_system("catch the warning");
  ::close(ends[1]);
  io::Line type;
  io::Line version;
  flib::qm_file_type(name, type, version, facts.info);
  if (std::freopen("/dev/null", "w", stdout) == nullptr) stop_at_system("open /dev/null");
  facts.type = type.content();
  facts.version = version.content();
  facts.warning = read_all(ends[0]);
  facts.warning.resize(facts.warning.find_last_not_of('\n') + 1);
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

// The name by which the library's routines find the file: they take 200 characters without trailing
// blanks, so a longer path is asked from within its folder.
std::string name_for_library(const std::string& name) {
  std::string short_name = name;
  const std::size_t slash = name.rfind('/');
  if (name.size() > io::line_capacity && slash != std::string::npos && slash > 0) {
    if (::chdir(name.substr(0, slash).c_str()) != 0) {
      io::fatal_stop({name},
                     std::string("expected a file that can be read, found: ") + strerror(errno));
    }
    short_name = name.substr(slash + 1);
  }
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
  return short_name;
}

// The child: asks the probes and sends what they say through the pipe.
[[noreturn]] void run_child(const std::string& name, int to_parent) {
  const std::string short_name = name_for_library(name);
  FileFacts facts;
  recognise(short_name, facts);
  ask_probes(short_name, facts);
  const std::vector<std::uint8_t> message = nlohmann::json::to_cbor(
      {facts.type, facts.version, facts.info, facts.oniom, facts.warning, facts.counts});
  const bool sent =
      ::write(to_parent, message.data(), message.size()) == static_cast<ssize_t>(message.size());
  ::_exit(sent ? 0 : 2);
}

std::optional<FileFacts> unpack(const std::string& message) {
  const nlohmann::json values = nlohmann::json::from_cbor(message, true, false);
  if (values.is_discarded()) return std::nullopt;
  FileFacts facts;
  values.at(0).get_to(facts.type);
  values.at(1).get_to(facts.version);
  values.at(2).get_to(facts.info);
  values.at(3).get_to(facts.oniom);
  values.at(4).get_to(facts.warning);
  values.at(5).get_to(facts.counts);
  return facts;
}

}  // namespace

std::optional<FileFacts> probe_file(const std::string& name) {
  int ends[2];
  if (::pipe(ends) != 0) stop_at_system("make a pipe");
  const pid_t child = ::fork();
  if (child < 0) stop_at_system("start a process");
  if (child == 0) {
    ::close(ends[0]);
    run_child(name, ends[1]);
  }
  ::close(ends[1]);
  const std::string message = read_all(ends[0]);
  ::close(ends[0]);
  int status = 0;
  if (::waitpid(child, &status, 0) != child) stop_at_system("wait for a process");
  if (WIFSIGNALED(status)) {
    io::report({name},
               std::string("the probe was ended by the signal ") + strsignal(WTERMSIG(status)));
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  std::optional<FileFacts> facts = unpack(message);
  if (!facts) io::report({name}, "the probe sent nothing that can be read");
  return facts;
}

}  // namespace probe

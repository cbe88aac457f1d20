// The recognition of a file and all size probes, on any bytes; what stands on standard input
// follows the file in the input, behind a line "=== stdin". A label is one of those that are known,
// and the test for layered jobs agrees with a plain look for "oniom".
#include <algorithm>
#include <limits>

#include "flib/qm_file_ifoniom.hpp"
#include "flib/qm_file_natom.hpp"
#include "flib/qm_file_natom_oniom_qm.hpp"
#include "flib/qm_file_nbasis_nbsuse.hpp"
#include "flib/qm_file_nci.hpp"
#include "flib/qm_file_type.hpp"
#include "harness.hpp"
#include "io/text.hpp"
#include "io/values.hpp"

namespace {

constexpr std::string_view separator = "\n=== stdin\n";
constexpr int unset = std::numeric_limits<int>::min();

constexpr std::string_view labels[] = {
    "GAUSSIAN LOG", "GAUSSIAN MAT", "GAUSSIAN FCHK",  "CHEMSHELL", "MOLPRO",    "TURBOMOLE",
    "GAUSSIAN RWF", "QRX",          "TURBOMOLE CTRL", "ZANDORCE",  "PWOUT",     "VASP",
    "NWCHEM",       "CIF",          "WIEN2K_1",       "WIEN2K_sp", "GAMESS_US", "QCHEM",
    "ORCA HESS",    "ORCA OUT",     "TERACHEM",       "BDF OUT",   "BDF UMV",   "BDF HESS",
};

// Whether a line says "oniom" within the first 200 characters.
bool says_oniom(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string head(text.substr(0, std::min(end, io::line_capacity)));
    std::transform(head.begin(), head.end(), head.begin(), io::lowered);
    if (head.find("oniom") != std::string::npos) return true;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return false;
}

void require_status(int info, const char* probe) { fuzz::require(info == 0 || info == -1, probe); }

void ask_type(const std::string& name) {
  io::Line type("before"), version("before");
  int info = unset;
  const auto stop = fuzz::run([&] { flib::qm_file_type(name, type, version, info); });
  if (stop) return;
  const bool known =
      std::find(std::begin(labels), std::end(labels), type.content()) != std::end(labels);
  fuzz::require(known || type.content() == "before", "an unknown label");
  fuzz::require(info >= -1 && info <= 4, "an unknown class code");
}

void ask_oniom(const std::string& name, std::string_view text) {
  bool ifoniom = false;
  int info = unset;
  const auto stop = fuzz::run([&] { flib::qm_file_ifoniom(name, ifoniom, info); });
  fuzz::require(stop || ifoniom == says_oniom(text), "oniom overlooked or imagined");
}

void ask_sizes(const std::string& name) {
  int a = unset, b = unset, c = unset, d = unset, e = unset, f = unset, info = unset;
  if (!fuzz::run([&] { flib::qm_file_natom(name, a, info); })) {
    require_status(info, "natom");
    fuzz::require(info == -1 || a != unset, "no number of atoms");
  }
  if (!fuzz::run([&] { flib::qm_file_natom_oniom_qm(name, a, b, info); })) {
    require_status(info, "natom_oniom_qm");
    fuzz::require(a == 0 || a <= b, "more atoms in the layer than in all");
  }
  if (!fuzz::run([&] { flib::qm_file_nbasis_nbsuse(name, a, b, c, d, info); })) {
    require_status(info, "nbasis_nbsuse");
  }
  if (!fuzz::run([&] { flib::qm_file_nci(name, a, b, c, d, e, f, info); })) {
    require_status(info, "nci");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const fuzz::MemoryFile file, standard_input;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::size_t end = text.find(separator);
  if (end != std::string_view::npos) {
    standard_input.set(text.substr(end + separator.size()));
    text = text.substr(0, end);
  } else {
    standard_input.set("NBsUse 60\n");
  }
  standard_input.become_standard_input();
  file.set(text);
  ask_type(file.name());
  ask_oniom(file.name(), text);
  ask_sizes(file.name());
  return 0;
}

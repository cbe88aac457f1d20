// The readers, one for each kind of output: a source of its own in this folder and a row of the
// table in readers.cpp.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "collect/output_data.hpp"
#include "collect/output_lines.hpp"

namespace collect {

// What is asked of an output.
struct Request {
  int natom = 0;
  int root = 0;  // state, as the program counts; 0: the one that the calculation followed
};

struct Reader {
  const char* name;   // as messages and pages call it
  const char* label;  // of flib::qm_file_type; null where that does not know the program
  const char* mark;   // a text that only these outputs hold in their head; null: the label tells
  void (*read)(const std::string& file, const Request& request, JobOutput& output);
};

// The reader for a file, by what stands in it; null where it is of none of these kinds.
const Reader* find_reader(const std::string& file);

// Each takes the results of a calculation that ended well, converged, and gave geometry, gradient
// and transition dipole of as many atoms and of the state asked for. Anything else is a fatal stop
// with file and line that says what was looked for.
void read_nwchem(const std::string& file, const Request& request, JobOutput& output);
void read_openmolcas(const std::string& file, const Request& request, JobOutput& output);
void read_fchk(const std::string& file, const Request& request, JobOutput& output);
void read_gaussian_log(const std::string& file, const Request& request, JobOutput& output);
void read_neutral_json(const std::string& file, const Request& request, JobOutput& output);

// What the readers share: stops unless as many atoms were found as are wanted, and unless a block
// was found at all; `heading` is the line that was looked for.
void need_atoms(const std::string& file, const Request& request, std::size_t found,
                const std::string& what);
void need(bool found, const std::string& file, const std::string& heading);
// Stops unless the state asked for, if any, is the one that the gradient belongs to.
void need_root(const std::string& file, const Request& request, int found);

// What an output tells of the transition from the ground state to one state, atomic units; empty
// where it does not.
struct Transition {
  std::optional<double> ground_energy, energy;  // of the ground state and of this one
  std::optional<double> oscillator_strength;
  std::vector<double> dipole, velocity, magnetic;  // x y z
  std::vector<double> quadrupole;                  // xx xy xz yy yz zz
  std::vector<double> density;                     // over the basis functions, in any order
  LeadingElement leading;
};

// Gives the output these results of its state; the dipole has to be there.
void fill_transition(const Transition& transition, JobOutput& output);

// Reads a log line by line. A file to which a program has written twice counts from its last start.
template <class Log>
void read_log(const std::string& file, const Request& request, JobOutput& output) {
  OutputLines lines(file);
  Log log(file, request);
  while (lines.next()) {
    if (lines.holds(Log::first_line)) log = Log(file, request);
    if (!lines.is_blank()) log.take(lines);
  }
  log.check();
  log.fill(output);
}

// Notes a line that tells that something did not converge, and stops there once all has been read.
using Failure = std::optional<io::Stop>;
void note_failure(const OutputLines& lines, Failure& failure);
void stop_at(const Failure& failure);

// The element of a label, a symbol and perhaps a number: 1 for "H3"; 0 where it is none.
int element_of_label(std::string_view label);

}  // namespace collect

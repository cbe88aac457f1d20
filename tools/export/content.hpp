// What every format writes: the vibrational analysis of one job directory, at full precision, and
// how it is read.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "flib/array.hpp"

namespace analysis {
struct DipoleChoices;
struct MassChange;
}  // namespace analysis

namespace exporting {

// One of the two lists of modes, projected or unprojected. Modes count from 1; what belongs to mode
// k stands at [k - 1].
struct ModeList {
  std::vector<double> frequencies;     // cm-1, imaginary ones negative
  std::vector<double> reduced_masses;  // u
  std::vector<double> rigid_weights;   // 0..1: share of translations and rotations
  std::vector<bool> rigid;             // those with the largest rigid weights
  // 3 x natom x 3 natom: displacement of an atom in a mode, of unit Cartesian length.
  flib::Array<double, 3> displacements;
  // dmu/dQ in e/sqrt(m_e), three components per mode, and the strengths of the 0-1 transitions (0
  // where there is none, analysis/herzberg_teller.hpp); empty where they are not known.
  std::vector<double> dipole_derivatives, strengths;
};

// What was changed, assumed or doubted: a sentence.
struct Note {
  std::string text;
  bool warning = false;  // results may be wrong
};

struct Content {
  std::string folder;  // name of the job directory
  std::string control_file;
  std::vector<std::string> input_files;  // everything that was read, the control file first
  std::vector<Note> notes;
  std::string changed_masses;  // the note on masses; empty where none was changed

  std::vector<std::string> symbols;  // printable, none of them empty
  std::vector<int> atomic_numbers;
  std::vector<double> masses;    // u
  std::vector<double> geometry;  // x, y, z of every atom, Bohr
  // Rows of a rotation: the principal axes of inertia, the smallest moment across the view, the
  // largest one to the viewer.
  std::array<double, 9> view{};
  // What the reference's sign file tells of its state, as far as it does: Hartree, and the gradient
  // of the energy (Hartree/Bohr, as the geometry), empty where the file holds no forces.
  std::optional<double> ground_energy, energy, excitation_energy, oscillator_strength;
  std::vector<double> gradient;
  double step = 0.0;  // Bohr
  bool symmetry_used = false;
  flib::Array<double, 2> hessian;  // 3 natom x 3 natom, Hartree/Bohr**2, symmetric
  std::array<double, 3> dipole{};  // e a0
  // Derivatives of the dipole, e: of its three components (fastest) along the three axes of every
  // atom; empty where signs or characters are not known.
  std::vector<double> dipole_gradient;

  // Either list is empty where it was not asked for. Projected: the rigid motions are taken out
  // exactly; vibrations have the numbers that they have in the report, rigid motions (frequency 0)
  // the rest. Unprojected: the modes of the force constants as they are, ascending.
  ModeList projected, unprojected;
};

// Reads and analyses the job directory that is the working folder; errors are those of the phases.
//
// The modes are those of the force constants at full precision. The report's own, from a matrix
// with a shifted diagonal, are the same to about 0.001 cm-1, near zero to a few cm-1.
//
// Each list of modes takes time and memory, and is filled where `lists` asks for it.
//
// Dipole derivatives stay empty where they mean nothing (PreparedDipoles::refusal); that, and signs
// that seem to have turned, are warnings and notes of the content.
enum class Lists { projected, unprojected, both };
Content load_content(const std::string& control_file,
                     const std::vector<analysis::MassChange>& mass_changes,
                     const analysis::DipoleChoices& dipoles, Lists lists);

// One line for formats with a place for one: the program, the job directory, changed masses.
std::string title(const Content& content);

std::vector<double> in_angstrom(std::vector<double> bohr);

// Frequencies, reduced masses and displacements of the modes that are no rigid motions.
ModeList vibrations(const ModeList& list);

}  // namespace exporting

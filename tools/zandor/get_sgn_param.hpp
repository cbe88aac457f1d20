// Reader of the sizes and the phase reference of an excited-state calculation.
#pragma once

#include <array>
#include <string_view>

namespace zandor {

// With `ref` reads the keyword header of a sign file; without it asks the job's own output files,
// MAIN.log and MAIN.fchk, which hold no phase reference. A figure that they do not hold stays as it
// was.
//   finp         name of the sign file, or any file name of the job: its main name counts (in)
//   natom        number of atoms; of the high layer for an ONIOM job without `ref` (out)
//   nbasis       number of basis functions; of molecular orbitals with `ref` (out)
//   nbsuse       number of independent functions; not touched with `ref` (out)
//   mi, ma       orbital-space counts of the excitation space (out)
//   mci          number of configurations (out)
//   nfc, nfv     frozen core and frozen virtual orbitals (out)
//   tden_maxloc  row and column of the largest transition-density element; 0 without `ref` (out)
//   tden_maxval  that element with its sign; 0 without `ref` (out)
// A keyword that is missing or stands before the previous one ends the run through miss_keyword; a
// file that cannot be read and a value that is no number are fatal stops.
void get_sgn_param(const bool& ref, std::string_view finp, int& natom, int& nbasis, int& nbsuse,
                   int& mi, int& ma, int& mci, int& nfc, int& nfv, std::array<int, 2>& tden_maxloc,
                   double& tden_maxval);

}  // namespace zandor

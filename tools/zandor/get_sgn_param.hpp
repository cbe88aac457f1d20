// Reader of the sizes and the phase reference of an excited-state calculation.
#pragma once

#include <array>
#include <string_view>

namespace zandor {

// Reads the keyword header of a sign file.
//   ref          true; (in)
//   finp         name of the sign file (in)
//   natom        number of atoms (out)
//   nbasis       number of molecular orbitals (out)
//   nbsuse       not touched
//   mi, ma       orbital-space counts of the excitation space (out)
//   mci          number of configurations (out)
//   nfc, nfv     frozen core and frozen virtual orbitals (out)
//   tden_maxloc  row and column of the largest transition-density element (out)
//   tden_maxval  that element with its sign (out)
// A keyword that is missing or stands before the previous one ends the run through miss_keyword; a
// file that cannot be read and a value that is no number are fatal stops.
void get_sgn_param(const bool& ref, std::string_view finp, int& natom, int& nbasis, int& nbsuse,
                   int& mi, int& ma, int& mci, int& nfc, int& nfv, std::array<int, 2>& tden_maxloc,
                   double& tden_maxval);

}  // namespace zandor

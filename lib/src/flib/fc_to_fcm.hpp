// Mass weighting of force constants.
#pragma once

namespace flib {

// Converts between Cartesian force constants and their mass-weighted form.
//   n3         order of the matrices, three times the number of atoms (in)
//   sqtmass    n3 values: square root of the mass of the atom that owns each coordinate (in)
//   fc         n3 x n3, Cartesian force constants; read with direction 1, written with -1
//   fcm        n3 x n3, mass-weighted force constants; written with direction 1, read with -1
//   direction  1: fcm(j,i) = fc(j,i) / sqtmass(j) / sqtmass(i); -1: the reverse (in)
//   info       0, or -1 for n3 <= 0, or -2 for another direction; no matrix is touched then (out)
// Only the upper triangle of the matrix that is read counts; the result is exactly symmetric.
void fc_to_fcm(const int& n3, const double* sqtmass, double* fc, double* fcm, const int& direction,
               int& info);

}  // namespace flib

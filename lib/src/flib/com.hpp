// Centre of mass.
#pragma once

namespace flib {

// Moves a geometry so that its centre of mass is at the origin.
//   n     number of atoms (in)
//   mass  n masses, any unit (in)
//   x     3 x n coordinates, any unit (in/out)
//   ier   always 0 (out)
void com(const int& n, const double* mass, double* x, int& ier);

}  // namespace flib

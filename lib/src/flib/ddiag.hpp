// Eigenvalues and eigenvectors of a real symmetric matrix: reduction to tridiagonal form by
// Householder transformations (tred2e) and the QL method (tql2e), after the EISPACK routines tred2
// and tql2 with a fixed machine epsilon. Matrices are stored by columns, indices run from 1.
#pragma once

namespace flib {

struct Kernels;

// Reduces a symmetric matrix to tridiagonal form and accumulates the transformation.
//   nm  rows of the arrays a and z as stored, nm >= n (in)
//   n   order of the matrix (in)
//   a   nm x n; only the lower triangle is read (in)
//   d   n values: the diagonal (out)
//   e   n values: the subdiagonal in e(2..n), e(1) = 0 (out)
//   z   nm x n: the orthogonal transformation; must not overlap a (out)
// Nothing is touched for n < 1. Working storage of order n is obtained from the system.
void tred2e(const int& nm, const int& n, const double* a, double* d, double* e, double* z);

// Finds the eigenvalues and eigenvectors of the tridiagonal matrix that tred2e left in d, e and z.
//   d     n values: the eigenvalues in ascending order (in/out)
//   e     n values: destroyed (in/out)
//   z     nm x n: column k is the eigenvector of d(k), of length 1 (in/out)
//   ierr  0, or the index of the eigenvalue that did not converge in 30 iterations (NaN in the
//         matrix never does): the ones before it are right but not sorted, z holds the vectors as
//         far as they were computed, and with a NaN nothing of use (out)
// For n <= 1 everything stays as it is. Working storage of order n is obtained from the system.
void tql2e(const int& nm, const int& n, double* d, double* e, double* z, int& ierr);

// The same with given kernels instead of the best ones of this processor, bit for bit.
void tred2e(const Kernels& kernels, const int& nm, const int& n, const double* a, double* d,
            double* e, double* z);
void tql2e(const Kernels& kernels, const int& nm, const int& n, double* d, double* e, double* z,
           int& ierr);

}  // namespace flib

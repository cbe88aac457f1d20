// Compiled for the processor at hand, so that Eigen uses all its vector registers.
#include "peers.hpp"

#ifdef HAVE_EIGEN
#include <Eigen/Eigenvalues>
#endif

#ifdef HAVE_LAPACK
extern "C" {
void dsyev_(const char* jobz, const char* uplo, const int* n, double* a, const int* lda, double* w,
            double* work, const int* lwork, int* info);
void dsyevd_(const char* jobz, const char* uplo, const int* n, double* a, const int* lda, double* w,
             double* work, const int* lwork, int* iwork, const int* liwork, int* info);
}
#endif

namespace bench {

bool solve_with_eigen([[maybe_unused]] int n, [[maybe_unused]] const std::vector<double>& a) {
#ifdef HAVE_EIGEN
  const Eigen::Map<const Eigen::MatrixXd> matrix(a.data(), n, n);
  return Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(matrix).info() == Eigen::Success;
#else
  return false;
#endif
}

bool solve_with_dsyev([[maybe_unused]] int n, [[maybe_unused]] const std::vector<double>& a) {
#ifdef HAVE_LAPACK
  std::vector<double> vectors = a, values(a.size());
  std::vector<double> work(static_cast<std::size_t>(n) * 66);
  const int size = static_cast<int>(work.size());
  int info = 0;
  dsyev_("V", "L", &n, vectors.data(), &n, values.data(), work.data(), &size, &info);
  return info == 0;
#else
  return false;
#endif
}

bool solve_with_dsyevd([[maybe_unused]] int n, [[maybe_unused]] const std::vector<double>& a) {
#ifdef HAVE_LAPACK
  std::vector<double> vectors = a, values(a.size());
  std::vector<double> work(1 + 66 * static_cast<std::size_t>(n) + 2 * a.size());
  std::vector<int> iwork(3 + 5 * static_cast<std::size_t>(n));
  const int size = static_cast<int>(work.size());
  const int isize = static_cast<int>(iwork.size());
  int info = 0;
  dsyevd_("V", "L", &n, vectors.data(), &n, values.data(), work.data(), &size, iwork.data(), &isize,
          &info);
  return info == 0;
#else
  return false;
#endif
}

}  // namespace bench

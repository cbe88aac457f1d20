#include "model_molecule.hpp"

#include <cmath>
#include <iomanip>
#include <random>
#include <sstream>

#include "flib/units_of_measure.hpp"
#include "support/support.hpp"

namespace model_molecule {

namespace {

constexpr double bohr = flib::angstrom_per_bohr;

std::string name(int job) { return job == 0 ? "ref" : "d" + std::to_string(job); }

template <class Vector>
void print_row(std::ostringstream& out, int width, int decimals, const Vector& vector) {
  out << std::fixed << std::setprecision(decimals);
  for (int k = 0; k < 3; ++k) out << std::setw(width) << vector(k);
  out << "\n";
}

std::string label(const Model& model, Eigen::Index a) {
  if (!model.labels.empty()) return model.labels[static_cast<std::size_t>(a)];
  return a % 2 == 0 ? "C 6 12.000000" : "H 1 1.007825";
}

void write_job_list(const Model& model, const Printing& printing) {
  std::ostringstream out;
  out << " Number of atoms " << model.x.cols() << "\n Number of files 0\n step " << printing.step
      << "\nBegin_zand_info\n operations\n Number of operations 0\n -\n -\n atoms\n";
  for (Eigen::Index a = 0; a < model.x.cols(); ++a) {
    out << a + 1 << " " << label(model, a).substr(0, 3) << "\n";
  }
  out << "\n jobs\n number name computed\n";
  for (int job = 0; job <= 6 * model.x.cols(); ++job) {
    out << job << " " << name(job) << " T " << job << " 1\n";
  }
  support::write_file("files.out", out.str());
}

struct Values {
  Eigen::Matrix3Xd forces;  // Hartree/Bohr
  Eigen::Vector3d dipole;   // atomic units
};

Values values_at(const Model& model, const Eigen::Matrix3Xd& x) {
  Values values{Eigen::Matrix3Xd::Zero(3, x.cols()), Eigen::Vector3d::Zero()};
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    for (Eigen::Index b = 0; b < a; ++b) {
      const Eigen::Vector3d d = (x.col(a) - x.col(b)) / bohr;
      const double r = d.norm();
      const double r0 = (model.x.col(a) - model.x.col(b)).norm() / bohr;
      const double decay = std::exp(-0.8 * (r - r0));
      const double slope = 2.0 * 0.5 * std::exp(-0.4 * r0) * 0.8 * decay * (1.0 - decay);
      values.forces.col(a) -= slope / r * d;
      values.forces.col(b) += slope / r * d;
      values.dipole += model.charges(a, b) * std::exp(-0.3 * r) * d;
    }
  }
  return values;
}

}  // namespace

std::string sign_file(const Model& model, const Printing& printing, int job) {
  Eigen::Matrix3Xd x = model.x;
  const bool positive = (job % 2 == 0) == (printing.disp_sign == 1);
  if (job > 0) x((job - 1) / 2) += positive ? printing.step : -printing.step;
  const Values values = values_at(model, x);
  std::ostringstream out;
  out << " natom = " << x.cols() << "\n nmo = 30\n mi = 8\n ma = 22\n mci = 2\n NFC = 0\n NFV = 0\n"
      << " tden_maxloc = 9 8\n tden_maxval = 0.7\n\n"
      << " Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)\n caption\n";
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    out << a + 1 << " " << label(model, a);
    print_row(out, 16, 10, x.col(a));
  }
  out << "\n Ground to excited state transition electric dipole moments (Au)\n S0->S1 1";
  print_row(out, 12, printing.dipole_decimals, values.dipole);
  out << "\n Center Atomic Forces (Hartrees/Bohr)\n";
  for (Eigen::Index a = 0; a < x.cols(); ++a) {
    out << a + 1;
    print_row(out, 18, printing.force_decimals, values.forces.col(a));
  }
  return out.str() + " end\n";
}

Model random_model(unsigned seed) {
  std::mt19937 random(seed);
  const auto uniform = [&random](double low, double high) {
    return low + (high - low) * static_cast<double>(random()) / 4294967295.0;
  };
  const auto natom = static_cast<Eigen::Index>(3 + seed % 6);
  Model model{Eigen::Matrix3Xd(3, natom), Eigen::MatrixXd(natom, natom), {}};
  for (Eigen::Index a = 0; a < natom; ++a) {
    bool is_apart = false;
    while (!is_apart) {
      for (int k = 0; k < 3; ++k) model.x(k, a) = std::round(uniform(-1.8, 1.8) * 1e8) / 1e8;
      const auto others = model.x.leftCols(a).colwise() - model.x.col(a);
      is_apart = (others.colwise().squaredNorm().array() > 1.0).all();
    }
    for (Eigen::Index b = 0; b < natom; ++b) model.charges(a, b) = uniform(-0.4, 0.4);
  }
  return model;
}

void write_jobs(const Model& model, const Printing& printing) {
  support::write_file("control.inp", "&control symm=.false. disp_sign=" +
                                         std::to_string(printing.disp_sign) + " /\n");
  write_job_list(model, printing);
  for (int job = 0; job <= 6 * model.x.cols(); ++job) {
    support::write_file("coord-" + name(job) + ".sgn", sign_file(model, printing, job));
  }
  std::ostringstream com;
  com << "# td\n\nmodel\n\n0 1\n";
  for (Eigen::Index a = 0; a < model.x.cols(); ++a) {
    com << label(model, a).front();
    print_row(com, 14, 8, model.x.col(a));
  }
  support::write_file("coord-ref.com", com.str());
  support::write_file("coord-ref.log", " Entering Gaussian System, Link 0=g16\n");
}

}  // namespace model_molecule

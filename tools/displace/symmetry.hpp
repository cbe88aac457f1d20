// Symmetry operations of a molecule, about the centroid of its atoms.
#pragma once

#include <Eigen/Dense>
#include <string>
#include <vector>

namespace displace {

// A geometry whose centroid is the origin; atoms with the same label may take each other's place.
struct Shape {
  Eigen::Matrix3Xd x;  // Angstrom
  std::vector<int> labels;
};

struct Operation {
  Eigen::Matrix3d matrix;
  std::vector<int> images;  // at [a - 1] the atom that it carries onto atom a, from 1
};

// A group, the identity first.
using Group = std::vector<Operation>;

Group only_identity(const Shape& shape);

// Those of the 48 operations that turn the axes into each other, signs included, that bring every
// atom within the tolerance of one like it. They are a group: where those found are none, the
// tolerance is halved until they are.
Group axis_operations(const Shape& shape, double tolerance);

// Moves the atoms to where the operations, each a turn of axes into axes, carry them exactly onto
// each other: the mean of all images. The result is the largest move, Angstrom.
double symmetrise(const Group& group, Eigen::Matrix3Xd& x);

// All operations of a molecule that is not linear, whatever its axes, and the geometry symmetrised
// over them. They bring every atom within the tolerance of one like it, and are a group: where
// those found are none, the tolerance is halved until they are.
Group symmetrise_all(Shape& shape, double tolerance);

// A unit vector along the molecule when it is linear within the tolerance, else zero.
Eigen::Vector3d line_of(const Shape& shape, double tolerance);

// The axes of all rotations and the normals of all mirrors, one of each pair of opposite unit
// vectors. Of a rotation followed by an inversion that of the rotation.
std::vector<Eigen::Vector3d> directions_of(const Group& group);

// Schoenflies symbol, as C3v; of a linear molecule Cinfv or Dinfh.
std::string symbol_of(const Group& group);
std::string symbol_of_linear(const Shape& shape, double tolerance);

// "C3(1,1,1)", "sigma(0,0,1)" with the normal, for operations that turn axes into axes.
std::string caption_of(const Eigen::Matrix3d& matrix);

}  // namespace displace

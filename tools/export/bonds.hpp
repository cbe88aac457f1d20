// Which atoms are bonded, by their distance.
#pragma once

#include "export/content.hpp"

namespace exporting {

// Covalent radius in Angstrom (Cordero et al., Dalton Trans. 2008, 2832); 1.5 beyond elements 1 to
// 96.
double covalent_radius(int atomic_number);

// Pairs of atoms (from 0), one after the other, that are closer than 1.2 times the sum of their
// radii.
std::vector<std::size_t> bonded_atoms(const Content& content);

}  // namespace exporting

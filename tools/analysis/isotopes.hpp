// Element symbols and the masses of common isotopes.
#pragma once

#include <string_view>

namespace analysis {

// The atomic number of a symbol in any letter case; 0 for a word that is no element.
int element_number(std::string_view symbol);

// The mass (amu) nearest to `mass` among the isotopes of an element, H to Xe and heavier ones that
// are met; 0 where the table holds none.
double nearest_isotope(int atomic_number, double mass);

// Whether a mass (amu) is the average of an element that has several isotopes.
bool is_average_mass(int atomic_number, double mass);

// The mass (amu) of the most abundant isotope; 0 where the table holds none.
double usual_mass(int atomic_number);

}  // namespace analysis

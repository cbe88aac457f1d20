#include "flib/get_free_fid.hpp"

#include "io/units.hpp"

namespace flib {

void get_free_fid(int& fid) {
  fid = 100;
  while (io::is_open(fid)) ++fid;
}

}  // namespace flib

// Free unit handles.
#pragma once

namespace flib {

// Sets `fid` to the lowest handle from 100 up that no open file has. It is not reserved: two calls
// without an open in between give the same handle.
void get_free_fid(int& fid);

}  // namespace flib

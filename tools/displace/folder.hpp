// Putting a job directory in place, whole or not at all.
#pragma once

#include <string>
#include <vector>

#include "displace/contents.hpp"

namespace displace {

// Writes the files into a hidden folder, which then becomes `folder`; or, where the folder is there
// and empty, into one within it, from which they are put in place one after another, files.out
// last. With `force` a folder that zandor_displace wrote may hold files: the inputs of its list are
// removed or replaced, all else is kept. Whatever fails is a fatal stop that leaves the folder as
// it was. Interrupts wait until it is done.
void write_folder(const std::string& folder, const std::vector<File>& files, bool force);

}  // namespace displace

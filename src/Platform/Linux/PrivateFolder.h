#pragma once

#include "Support/FileDescriptor.h"

#include <string>
#include <vector>

#include <sys/types.h>

/// Folders in which nobody but one user can put or reach anything.
namespace PrivateFolder {

/// Opens the first of `paths` that is such a folder of `user`, or becomes one by making it. A
/// folder or link that somebody else put there is passed over. Invalid when there is none.
FileDescriptor open(const std::vector<std::string>& paths, uid_t user);

/// The path of a file in an open folder. It is short, as names of sockets must be, and stays true
/// when the folder is renamed. Only for this process.
std::string pathIn(const FileDescriptor& folder, const char* name);

} // namespace PrivateFolder

#pragma once

/// Making files in ways that not every operating system has. No Qt: the capture tool uses it.
namespace Platform {

/// Opens a folder in which files are to be made, and which need not be readable where the system
/// can do that. A descriptor, or -1 with errno.
int openFolder(const char* path);

/// A new file in an open folder that has no name, for its owner to read and to write; nothing stays
/// of it unless it gets one. A descriptor, or -1 where the system or the folder's file system has
/// no such files.
int openNameless(int folder);

/// Gives such a file a name that nothing in the folder has. False with errno.
bool nameNameless(int file, int folder, const char* name);

} // namespace Platform

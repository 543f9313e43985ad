// Taking an application off the client, and the client off the machine.
#ifndef VELNOR_INSTALL_UNINSTALL_H
#define VELNOR_INSTALL_UNINSTALL_H

#include <cstdint>

/// vn_uninstall behind its check of the arguments: returns 1 on success, 0 on failure. `appName`
/// may be null: the registry is left alone then, and the client removed whoever uses it.
int32_t _vn_uninstall(const char* appName, bool keepIdentity);

/// Deletes `path` through the shell, which expands a "~" or a pattern in it: for constants only. At
/// most 1017 characters of it are used.
///
/// With `keepIdentity` the folder at `path` stays as it is. What is deleted then is in the folder
/// "installer.txt" of the current directory: everything but hidden files and, unless it is in a
/// folder that goes, a file "guid.ini" (in any letter case).
///
/// Returns the shell's wait status; -1 when no command could be run.
int32_t _vn_recursiveDelete(const char* path, bool keepIdentity);

#endif

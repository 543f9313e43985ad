// Where the client is installed, and the user at home.
#ifndef VELNOR_SUPPORT_PATHS_H
#define VELNOR_SUPPORT_PATHS_H

#include <cstdint>

namespace velnor {

/// Size in bytes of the buffers that formatPath fills.
inline constexpr uint32_t kPathSize = 1024;

/// Formats a path into `path`, which holds kPathSize bytes. False, with the text cut off in `path`,
/// when it does not fit with its terminator.
bool formatPath(char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The environment's HOME, which is one only as an absolute path; else null.
const char* homeVariable();

}  // namespace velnor

/// Copies the install directory, "/Applications/Velnor", with its terminator into `buffer` of
/// `size` bytes. Returns its length, 20; 0 with code 4 when fewer than 21 bytes are given.
int32_t _vn_getInstallPath(char* buffer, uint32_t size);

/// Path of the file `name` in the install directory; `name` is not checked. Owned by the caller;
/// null with code 4 when there is no memory.
char* _vn_getInstallPathForFile(const char* name);

#endif

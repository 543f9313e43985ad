// Where the client is installed.
#ifndef VELNOR_SUPPORT_PATHS_H
#define VELNOR_SUPPORT_PATHS_H

#include <cstdint>

namespace velnor {

/// Size of the buffers that hold a path, in bytes, and so the limit of every path that the engine
/// forms: one that does not fit with its terminator is refused.
inline constexpr uint32_t kPathSize = 1024;

/// Formats a path into `path`, which holds kPathSize bytes. False, with nothing usable in `path`,
/// when the text does not fit.
bool formatPath(char* path, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace velnor

/// Copies the install directory, "/Applications/Velnor", with its terminator into `buffer` of
/// `size` bytes. Returns its length, 20; 0 with code 4 when fewer than 21 bytes are given.
int32_t _vn_getInstallPath(char* buffer, uint32_t size);

/// Path of the file `name` in the install directory; `name` is not checked. Owned by the caller;
/// null with code 4 when there is no memory.
char* _vn_getInstallPathForFile(const char* name);

#endif

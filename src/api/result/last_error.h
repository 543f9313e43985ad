// The calling thread's last error: one InstallResult code, set by every function of the library.
#ifndef VELNOR_API_RESULT_LAST_ERROR_H
#define VELNOR_API_RESULT_LAST_ERROR_H

#include <cstdint>

/// Stores `code` for the calling thread. Returns 0, or the error number of the thread-specific data
/// functions (pthread_key_create(3), pthread_setspecific(3)), in which case nothing is stored.
int _vn_setLastError(uint32_t code);

/// The calling thread's code; 0 on a thread that never set one.
uint32_t _vn_getLastError();

#endif

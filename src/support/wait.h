// Sleeping in whole seconds.
#ifndef VELNOR_SUPPORT_WAIT_H
#define VELNOR_SUPPORT_WAIT_H

#include <cstdint>

/// Waits `seconds` seconds. Returns 0 after a full wait and -1 when a signal ended it early. Sets
/// no code.
int32_t _vn_sleep(uint32_t seconds);

#endif

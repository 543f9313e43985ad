// How the operations end.
#ifndef VELNOR_API_OUTCOME_H
#define VELNOR_API_OUTCOME_H

#include <cstdint>

#include "velnor/capi.h"

namespace velnor {

/// Leaves `code` and returns 0 for success, else -1. When the code 4 is there already it stays, and
/// the result is -1: a text that there was no memory for looks like one that the client never sent.
int32_t conclude(InstallResult code);

/// The same for a download or pause request: success when `reply` holds null under `url`.
int32_t concludeFor(const char* url, const char* reply);

/// Leaves code 1 and returns -1.
int32_t refuseArguments();

}  // namespace velnor

#endif

// How the operations end: what a reply means, and the last error that it leaves.
#ifndef VELNOR_API_OUTCOME_H
#define VELNOR_API_OUTCOME_H

#include <cstdint>

#include "support/text_extraction.h"
#include "velnor/capi.h"

namespace velnor {

/// Leaves `code` and returns 0 for success, else -1.
int32_t conclude(InstallResult code);

/// Leaves code 1 and returns -1.
int32_t refuseArguments();

/// Ends a download or pause request: success when `reply` holds null under `url`, and 4 without
/// memory for a look at it.
int32_t concludeFor(const char* url, const JSONReply& reply);

/// The code for a reply that should have given a file's attributes: 13 for "File not found." under
/// `url`, 1 for "Invalid URL.", 4 without memory, else 3.
InstallResult attributesFailure(const JSONReply& reply, const char* url);

}  // namespace velnor

/// The code for a reply to a download or pause request for `url` that did not hold null under it: 1
/// for an "error" text or "Invalid URL."; 13 and 22 for the client's other texts; 4 without memory;
/// else 3.
InstallResult _vn_responseCheck(const char* url, const char* reply);

#endif

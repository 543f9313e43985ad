// What a reply that brought no success means.
#ifndef VELNOR_API_RESPONSE_CHECK_H
#define VELNOR_API_RESPONSE_CHECK_H

#include <cstdint>

#include "support/text_extraction.h"
#include "velnor/capi.h"

/// The code for a reply to a download or pause request for `url` that did not hold null under it: 1
/// for an "error" text or "Invalid URL."; 13 and 22 for the client's other texts; else 3.
InstallResult _vn_responseCheck(const char* url, const char* reply);

namespace velnor {

/// The code for a reply that should have given a file's attributes: 13 for "File not found." under
/// `url`, 1 for "Invalid URL.", else 3.
InstallResult attributesFailure(const JSONReply& reply, const char* url);

}  // namespace velnor

#endif

// The connection to the client that runs, and the requests on it.
#ifndef VELNOR_API_HANDLE_H
#define VELNOR_API_HANDLE_H

#include <cstdint>

#include "velnor/capi.h"

struct ApiHandle {
    char* userAgent;  // owned
    int32_t socket;   // -1 when not connected
};

/// Asks the client whether it is there. Returns 0 when it answered, else 1 with the transport's
/// codes.
int32_t _vn_ping(const char* userAgent);

/// Sends a GET request for `requestPath`, connecting first when the handle is not connected.
/// Returns the reply's body, whatever its status, owned by the caller; null on failure, and then
/// the connection is given up. A null path fails at once.
///
/// `cid` is not used: the path holds it.
///
/// Codes left: 2 when the client cannot be connected to; 4 and 5 as _vn_downloadPathFromSocket. A
/// path that is null or too long, or that could not be sent, leaves none.
char* _vn_makeAPIRequest(ApiHandle* handle, int32_t cid, const char* requestPath);

#endif

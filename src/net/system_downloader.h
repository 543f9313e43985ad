// Fetching one file into memory through the system's HTTP stack.
#ifndef VELNOR_NET_SYSTEM_DOWNLOADER_H
#define VELNOR_NET_SYSTEM_DOWNLOADER_H

#include <cstdint>

#include "net/http_attempts.h"
#include "velnor/capi.h"

/// Fetches `url` ("http://" or "https://", ASCII) with the given "User-Agent" and returns its body
/// with one NUL byte behind it, owned by the caller, gzip undone; null on failure. Two attempts:
/// with the system's proxies, answering a 407 once with the keychain's credentials, then directly.
///
/// `outSize` receives the number of bytes without the NUL; it may be null, but then a gzip body
/// fails. It is 0 after a body that could not be inflated, and otherwise left alone on failure.
/// `context`, `progressFrom` and `progressTo` (percent) are accepted and not used: the installer
/// reports fixed steps, and this downloader none in between.
///
/// Waits about 15 s for the connection and 15 s for the first bytes of each attempt, and without
/// limit for the rest of a body. Codes left: 4 without memory, 1 for a gzip body of 10 bytes or
/// less; no other failure sets one. Logs nothing.
char* _vn_downloadVelnorURL(const char* userAgent, const char* url, uint32_t* outSize,
                            InstallContext* context, uint32_t progressFrom, uint32_t progressTo);

namespace velnor {

/// The same, and stores in `*last` how the attempt ended that tells most: the last one, unless it
/// had no answer and the one before it had. Without its body. Where nothing was sent it is left
/// alone.
char* downloadWebUrl(const char* userAgent, const char* url, uint32_t* outSize, Answer* last);

}  // namespace velnor

#endif

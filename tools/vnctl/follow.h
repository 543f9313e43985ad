// Watching a download until it comes to rest.
#ifndef VELNOR_TOOLS_VNCTL_FOLLOW_H
#define VELNOR_TOOLS_VNCTL_FOLLOW_H

#include "vnctl/client.h"

namespace vnctl {

/// Asks the client about the download four times a second, and shows each answer unless told to be
/// quiet, until the download is complete, paused or has failed. A client that goes away is given
/// time to come back. Returns the FileStatus before the last. Throws Failure when the client does
/// not come back, or no longer knows the download.
int32_t follow(Download& download, bool isQuiet);

}  // namespace vnctl

#endif

// Watching a download until the client is done with it.
#ifndef VELNOR_TOOLS_VNCTL_FOLLOW_H
#define VELNOR_TOOLS_VNCTL_FOLLOW_H

#include <string>

#include "vnctl/client.h"

namespace vnctl {

/// Asks the client about the download four times a second until it is complete, paused or has
/// failed. Unless told to be quiet, shows each answer: a bar with rate and remaining time, or lines
/// now and then where the output is no terminal. A client that goes away is given time to come
/// back. Returns the FileStatus before the last. Throws Failure when the client does not come back,
/// or no longer knows the download.
int32_t follow(Download& download, bool isQuiet);

/// From now on SIGINT ends the program with `message` on standard error and the exit status of an
/// interruption, even while a silent client is waited for. Not where SIGINT is ignored already. To
/// be called once.
void explainInterrupt(std::string message);

}  // namespace vnctl

#endif

// Ctrl-C while a download is watched.
#ifndef VELNOR_TOOLS_VNCTL_INTERRUPT_H
#define VELNOR_TOOLS_VNCTL_INTERRUPT_H

#include <string>

namespace vnctl {

/// From now on SIGINT ends the program with `message` on standard error and the exit status of an
/// interruption, even while a silent client is waited for. Not where SIGINT is ignored already. To
/// be called once.
void explainInterrupt(std::string message);

}  // namespace vnctl

#endif

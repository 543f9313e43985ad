// What bubblewrap would keep from a world, as far as a process without privileges can keep it.
#ifndef SANDBOX_PROOT_CONFINE_H
#define SANDBOX_PROOT_CONFINE_H

#include <string>
#include <vector>

namespace keeper {

/// From here on this process and its children write only in these folders and files, where the
/// kernel can see to that, and gain nothing by running a program.
void allowWritingOnlyIn(const std::vector<std::string>& paths);

/// Refuses the system calls that proot is too old to know: it lets them through with paths that
/// mean something else outside. The C library and the tools then do without them.
void refuseCallsUnknownToProot();

}  // namespace keeper

#endif

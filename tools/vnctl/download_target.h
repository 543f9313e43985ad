// Which file a download writes, so that none of the user's own gets lost.
#ifndef VELNOR_TOOLS_VNCTL_DOWNLOAD_TARGET_H
#define VELNOR_TOOLS_VNCTL_DOWNLOAD_TARGET_H

#include <string>

#include "vnctl/client.h"

namespace vnctl {

/// The absolute path for `download`: `path` as targetPath takes it; without it, where the client
/// has the download already. Throws Failure when a file is there that is not this download's,
/// unless `mayReplace`, and when it is this download's and complete.
std::string chooseTarget(Download& download, const std::string& path, bool mayReplace);

}  // namespace vnctl

#endif

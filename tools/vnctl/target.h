// Where a download's file is to be, so that none of the user's own gets lost.
#ifndef VELNOR_TOOLS_VNCTL_TARGET_H
#define VELNOR_TOOLS_VNCTL_TARGET_H

#include <string>

#include "vnctl/client.h"

namespace vnctl {

/// The last segment of the URL's path as the name of a file, decoded where that gives a name; empty
/// when there is none.
std::string fileNameOf(const std::string& url);

/// True when `path` names a folder, so that the file's name is still to be found.
bool isFolder(const std::string& path);

struct Target {
    std::string path;         // absolute
    bool isComplete = false;  // this download's file is there, and whole
};

/// Where the file for `download` is to be: `path`, in which a folder, or nothing for the current
/// one, gets the name from the URL; without a path, where the client has the download already.
/// Throws Failure when there is no name, or no such folder, and when a file is there that is not
/// this download's, unless `mayReplace`.
Target chooseTarget(Download& download, const std::string& path, bool mayReplace);

}  // namespace vnctl

#endif

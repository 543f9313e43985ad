// Where a download's file is to be.
#ifndef VELNOR_TOOLS_VNCTL_TARGET_PATH_H
#define VELNOR_TOOLS_VNCTL_TARGET_PATH_H

#include <string>

namespace vnctl {

/// True for what begins with "http://" or "https://", in any case of letters.
bool isWebUrl(const std::string& url);

/// The last segment of the URL's path as the name of a file, decoded where that gives a name; empty
/// when there is none.
std::string fileNameOf(const std::string& url);

/// True when `path` names a folder, so that the file's name is still to be found.
bool isFolder(const std::string& path);

/// `path` made absolute. A folder, or nothing for the current one, gets the name from `url`. Throws
/// Failure when there is no name, or no such folder.
std::string targetPath(const std::string& path, const std::string& url);

}  // namespace vnctl

#endif

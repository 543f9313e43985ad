// A file that is out of the way while the client may have its proof written in its place.
#ifndef VELNOR_TOOLS_VNCTL_KEPT_FILE_H
#define VELNOR_TOOLS_VNCTL_KEPT_FILE_H

#include <string>

namespace vnctl {

/// From construction to destruction the file at `path` is in a folder of its own beside it; then it
/// is put back, over whatever has taken its place. SIGINT, SIGTERM and SIGHUP put it back too
/// before they end the program. Nothing happens where there is no regular file. One at a time.
class KeptFile {
  public:
    /// Throws Failure when it cannot be moved.
    explicit KeptFile(const std::string& path);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;
};

}  // namespace vnctl

#endif

// A file that is to survive whatever the client has written over it.
#ifndef VELNOR_TOOLS_VNCTL_KEPT_FILE_H
#define VELNOR_TOOLS_VNCTL_KEPT_FILE_H

#include <sys/types.h>

#include <string>

namespace vnctl {

/// From construction to destruction there is a copy of the file at `path` beside it, and the file
/// stays where it is. At the end, and when the program is killed by whatever signal, the copy takes
/// the file's place if that has been written to or is gone, and is deleted otherwise. A process of
/// its own sees to that. Nothing happens where there is no regular file.
class KeptFile {
  public:
    /// Throws Failure when there is no room for the copy.
    explicit KeptFile(const std::string& path);
    ~KeptFile();
    KeptFile(const KeptFile&) = delete;
    KeptFile& operator=(const KeptFile&) = delete;

  private:
    pid_t guard_ = -1;
    int lifeline_ = -1;  // closed with this program
};

}  // namespace vnctl

#endif

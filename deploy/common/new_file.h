// A file that exists as a whole or not at all.
#ifndef VELNOR_DEPLOY_COMMON_NEW_FILE_H
#define VELNOR_DEPLOY_COMMON_NEW_FILE_H

#include <sys/types.h>

#include <string>
#include <string_view>

namespace deploy {

/// A file being made. Unless it is kept, it is removed when this goes. What fails throws
/// std::system_error with a message that names the file.
class NewFile {
  public:
    /// Creates `path`, which must not exist, with the permissions `mode` less the umask.
    NewFile(std::string path, mode_t mode);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    /// Writes the whole content, down to the disk, and closes the file.
    void write(std::string_view content);

    /// Lets the file stay.
    void keep() { isKept_ = true; }

    /// Lets the file stay in the place of `target`, which it replaces at once and as a whole.
    void replace(const std::string& target);

  private:
    [[noreturn]] void fail() const;

    std::string path_;
    int fd_;
    bool isKept_ = false;
};

}  // namespace deploy

#endif

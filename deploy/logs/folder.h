// The logs in a folder of the log server.
#ifndef VELNOR_DEPLOY_LOGS_FOLDER_H
#define VELNOR_DEPLOY_LOGS_FOLDER_H

#include <dirent.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace logs {

/// What became of a file. Gone: somebody has removed it meanwhile.
enum class Reading : uint8_t { Read, NoLogFile, Gone, Failed };

/// A folder that cannot be read; the message names it.
struct FolderError : std::runtime_error {
    explicit FolderError(const std::string& path);
};

class Folder {
  public:
    /// Throws FolderError.
    explicit Folder(std::string path);
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    /// The name of the next file, in no order, valid until the next call; null after the last one.
    /// Throws FolderError.
    const char* next();
    void rewind();

    /// Hands the bytes of the file to `take`, piece by piece. Opens nothing but a regular file of
    /// this very folder, and waits for nothing.
    Reading read(const char* name, const std::function<void(std::string_view)>& take) const;

  private:
    std::string path_;
    DIR* entries_;
};

/// The GUID in a log's name, "GUID.log" in lower case; empty when `name` is none.
std::string_view machineOf(std::string_view name);

}  // namespace logs

#endif

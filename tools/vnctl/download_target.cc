// Asking the client, and looking at the disk.
#include "vnctl/download_target.h"

#include <filesystem>

#include "vnctl/failure.h"
#include "vnctl/printable.h"
#include "vnctl/target_path.h"

namespace vnctl {
namespace {

// A download that the client does not know leaves the record empty.
void lookUp(Download& download) {
    const uint32_t code = download.ask();
    const bool isAnswer = code == INSTALL_ERROR_OK || code == INSTALL_ERROR_FILE_NOT_FOUND ||
                          code == INSTALL_ERROR_DOWNLOAD_RESET;
    if (!isAnswer) throw failureOf(code);
}

bool isSameFile(const char* known, const std::string& path) {
    std::error_code missing;
    return known != nullptr && (path == known || std::filesystem::equivalent(path, known, missing));
}

bool isDone(const FileAttributes& file) {
    return file.status == FILE_STATUS_COMPLETE || file.status == FILE_STATUS_MOVING;
}

bool isTaken(const std::string& path) {
    std::error_code unknown;
    return std::filesystem::exists(std::filesystem::symlink_status(path, unknown));
}

}  // namespace

std::string chooseTarget(Download& download, const std::string& path, bool mayReplace) {
    lookUp(download);
    const FileAttributes& known = download.record();
    const bool staysThere = path.empty() && known.path != nullptr;
    std::string target = staysThere ? known.path : targetPath(path, download.url());
    if (!isTaken(target)) return target;
    // Not even asked for again: the client may want its challenge to be written over the file.
    const bool isOurs = isSameFile(known.path, target);
    if (isOurs && isDone(known)) throw failureOf(INSTALL_ERROR_ALREADY_DOWNLOADED);
    if (isOurs || mayReplace) return target;
    throw Failure(INSTALL_ERROR_DISK, printable(target) +
                                          " exists. Choose another file with --path, or let it be "
                                          "replaced with --force.");
}

}  // namespace vnctl

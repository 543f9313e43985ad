#include "vnctl/target.h"

#include <algorithm>
#include <filesystem>

#include "program/text.h"
#include "support/encodings.h"
#include "velnor/capi.h"
#include "vnctl/failure.h"

namespace vnctl {
namespace {

bool isHexDigit(char c) {
    return std::string("0123456789abcdefABCDEF").find(c) != std::string::npos;
}

std::string percentDecoded(const std::string& text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && isHexDigit(text[i + 1]) &&
            isHexDigit(text[i + 2])) {
            result += static_cast<char>(_vn_convertHexDigitToInt(text[i + 1]) * 16 +
                                        _vn_convertHexDigitToInt(text[i + 2]));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

// A name that stays in its folder, and that can be typed.
bool isFileName(const std::string& name) {
    const auto isUnsafe = [](char c) { return c == '/' || (c >= 0 && c < ' ') || c == '\x7f'; };
    return !name.empty() && name != "." && name != ".." &&
           std::none_of(name.begin(), name.end(), isUnsafe);
}

}  // namespace

std::string fileNameOf(const std::string& url) {
    const std::string plain = url.substr(0, url.find_first_of("?#"));
    const size_t scheme = plain.find("://");
    const size_t slash = plain.rfind('/');
    const bool hasPath = scheme != std::string::npos && slash > scheme + 2;
    std::string segment = hasPath ? plain.substr(slash + 1) : "";
    std::string name = percentDecoded(segment);
    if (isFileName(name)) return name;
    return isFileName(segment) ? segment : "";
}

bool isFolder(const std::string& path) {
    std::error_code unknown;
    return path.empty() || path.back() == '/' || std::filesystem::is_directory(path, unknown);
}

namespace {

// `path` made absolute, with the name from `url` in a folder.
std::string absolutePath(const std::string& path, const std::string& url) {
    std::filesystem::path file = path;
    if (isFolder(path)) file /= fileNameOf(url);
    if (!file.has_filename()) {
        throw Failure(INSTALL_ERROR_INVALIDARGUMENT,
                      "The URL does not end with a file name. Name the file with --path.");
    }
    std::error_code error;
    const auto folder =
        std::filesystem::canonical(file.has_parent_path() ? file.parent_path() : ".", error);
    if (error) {
        throw Failure(INSTALL_ERROR_DISK, "The folder " +
                                              program::printable(file.parent_path().string()) +
                                              " cannot be used: " + error.message());
    }
    return (folder / file.filename()).string();
}

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

Target chooseTarget(Download& download, const std::string& path, bool mayReplace) {
    lookUp(download);
    const FileAttributes& known = download.record();
    const bool staysThere = path.empty() && known.path != nullptr;
    Target target{staysThere ? known.path : absolutePath(path, download.url())};
    if (!isTaken(target.path)) return target;
    const bool isOurs = isSameFile(known.path, target.path);
    target.isComplete = isOurs && isDone(known);
    if (isOurs || mayReplace) return target;
    throw Failure(INSTALL_ERROR_DISK, program::printable(target.path) +
                                          " exists. Choose another file with --path, or let it be "
                                          "replaced with --force.");
}

}  // namespace vnctl

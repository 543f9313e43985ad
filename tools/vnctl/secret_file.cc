#include "vnctl/secret_file.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "api/request_path.h"
#include "velnor/capi.h"
#include "vnctl/failure.h"

namespace vnctl {
namespace {

void warnWhenOthersCanRead(const std::string& path) {
    struct stat file {};
    if (stat(path.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return;
    if ((file.st_mode & (S_IRGRP | S_IROTH)) == 0) return;
    std::cerr << "vnctl: warning: other users can read " << path << "; chmod 600 prevents it"
              << std::endl;
}

Failure malformed(const std::string& path, const std::string& whatIsWrong) {
    return {INSTALL_ERROR_INVALIDARGUMENT, "The first line of " + path + " " + whatIsWrong,
            kWrongUsage};
}

std::string firstLine(std::istream& stream, const std::string& path) {
    // More than that would not fit into a request.
    std::array<char, velnor::kLongestRequest + 1> line{};
    errno = 0;
    stream.getline(line.data(), line.size());
    if (errno != 0) {
        throw Failure(INSTALL_ERROR_DISK, "Cannot read " + path + ": " + std::strerror(errno));
    }
    if (stream.fail() && !stream.eof()) {
        throw malformed(path, "is too long.");
    }
    std::string text = line.data();
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

std::string readFirstLine(const std::string& path) {
    if (path == "-") return firstLine(std::cin, "standard input");
    warnWhenOthersCanRead(path);
    std::ifstream file(path);
    if (!file) {
        throw Failure(INSTALL_ERROR_DISK, "Cannot read " + path + ": " + std::strerror(errno));
    }
    return firstLine(file, path);
}

}  // namespace

std::string readSecret(const std::string& path) {
    std::string secret = readFirstLine(path);
    if (!secret.empty()) return secret;
    throw malformed(path, "is empty.");
}

Login readLogin(const std::string& path) {
    const std::string line = readSecret(path);
    const size_t colon = line.find(':');
    if (colon == std::string::npos || line.size() > velnor::kLongestLogin) {
        throw malformed(path, "must be user:password, of at most " +
                                  std::to_string(velnor::kLongestLogin) + " bytes.");
    }
    return {line.substr(0, colon), line.substr(colon + 1)};
}

}  // namespace vnctl

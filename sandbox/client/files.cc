// Files written, moved and digested.
#include "files.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr size_t kBlock = 256 * 1024;

/// Calls `take` with one block after the other. False when it was told to stop, the file cannot be
/// read, or `take` says so.
template <class Take>
bool readBlocks(const std::string& path, const std::stop_token& stop, const Take& take) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> block(kBlock);
    while (file && !stop.stop_requested()) {
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        if (!take(block.data(), static_cast<size_t>(file.gcount()))) return false;
    }
    return file.eof();
}

int copyFile(const std::string& from, const std::string& to, const std::stop_token& stop) {
    PartFile copy(to);
    copy.clear();
    const bool whole = readBlocks(from, stop, [&copy](const char* data, size_t size) {
        copy.append(data, size);
        return copy.error() == 0;
    });
    copy.sync();
    if (whole && copy.error() == 0) return 0;
    unlink(to.c_str());
    if (copy.error() != 0) return copy.error();
    return stop.stop_requested() ? ECANCELED : EIO;
}

/// Where a chain of symbolic links leads, also when nothing is there yet.
std::string behindLinks(fs::path path) {
    constexpr int kMostLinks = 40;
    std::error_code none;
    for (int link = 0; link < kMostLinks && fs::is_symlink(path, none); ++link)
        path = path.parent_path() / fs::read_symlink(path, none);
    return path;
}

std::string hexOf(const unsigned char* bytes, size_t size) {
    std::string text;
    char pair[3];
    for (size_t i = 0; i < size; ++i) {
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(bytes[i]));
        text += pair;
    }
    return text;
}

}  // namespace

PartFile::PartFile(const std::string& path) {
    std::error_code ignored;  // opening the file tells
    fs::create_directories(fs::path(path).parent_path(), ignored);
    fd_ = open(path.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0644);
    struct stat entry {};
    if (check(fd_ >= 0) && check(fstat(fd_, &entry) == 0)) size_ = entry.st_size;
}

PartFile::~PartFile() {
    if (fd_ >= 0) close(fd_);
}

bool PartFile::check(bool success) {
    if (!success && error_ == 0) error_ = errno;
    return success;
}

void PartFile::append(const char* data, size_t size) {
    while (size > 0 && error_ == 0) {
        const ssize_t written = write(fd_, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (!check(written >= 0)) return;
        data += written;
        size -= static_cast<size_t>(written);
        size_ += written;
    }
}

void PartFile::clear() {
    if (error_ == 0 && check(ftruncate(fd_, 0) == 0)) size_ = 0;
}

void PartFile::demandRoom(int64_t bytes) {
    struct statvfs volume {};
    if (error_ != 0 || !check(fstatvfs(fd_, &volume) == 0)) return;
    const uint64_t blocks = (static_cast<uint64_t>(bytes) + volume.f_frsize - 1) / volume.f_frsize;
    if (blocks > volume.f_bavail) error_ = ENOSPC;
}

void PartFile::sync() {
    // Not every kind of file can be synchronised.
    if (error_ == 0) check(fsync(fd_) == 0 || errno == EINVAL);
}

int64_t sizeOf(const std::string& path) {
    std::error_code none;
    const auto size = fs::file_size(path, none);
    return none ? 0 : static_cast<int64_t>(size);
}

int moveFile(const std::string& from, const std::string& to, const std::stop_token& stop) {
    const std::string target = behindLinks(to);
    if (std::rename(from.c_str(), target.c_str()) == 0) return 0;
    if (errno != EXDEV) return errno;
    const int failure = copyFile(from, target, stop);
    if (failure == 0) unlink(from.c_str());
    return failure;
}

std::optional<Md5> md5Of(const std::string& path, const std::stop_token& stop) {
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                          EVP_MD_CTX_free);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    const bool whole = context && EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) == 1 &&
                       readBlocks(path, stop, [&context](const char* data, size_t size) {
                           return EVP_DigestUpdate(context.get(), data, size) == 1;
                       });
    if (!whole || EVP_DigestFinal_ex(context.get(), digest, &length) != 1) return std::nullopt;
    unsigned char base64[4 * ((EVP_MAX_MD_SIZE + 2) / 3) + 1];
    const int size = EVP_EncodeBlock(base64, digest, static_cast<int>(length));
    return Md5{hexOf(digest, length), std::string(base64, base64 + size)};
}

// The files of a download on the disk. What fails says so by an errno; 0 is success.
#ifndef SANDBOX_CLIENT_FILES_H
#define SANDBOX_CLIENT_FILES_H

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>

/// The beginning of a file, as far as it has come.
class PartFile {
  public:
    /// Makes the file and its folder where there are none. What is there already stays.
    explicit PartFile(const std::string& path);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    int error() const { return error_; }
    int64_t size() const { return size_; }

    // Each does nothing after an error.
    void append(const char* data, size_t size);
    void clear();
    /// ENOSPC where so much more does not fit.
    void demandRoom(int64_t bytes);
    /// Sees to it that all is on the disk.
    void sync();

  private:
    bool check(bool success);

    int fd_ = -1;
    int error_ = 0;
    int64_t size_ = 0;
};

int64_t sizeOf(const std::string& path);

/// Moves a file, by a copy to another file system, also through a symbolic link at `to`. ECANCELED
/// when it was told to stop: then nothing has moved.
int moveFile(const std::string& from, const std::string& to, const std::stop_token& stop);

struct Md5 {
    std::string hex;
    std::string base64;
};

/// Nothing when the file cannot be read, or when it was told to stop.
std::optional<Md5> md5Of(const std::string& path, const std::stop_token& stop);

#endif

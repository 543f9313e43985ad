// Files as tests write, read and look for them.
#include "harness/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace harness {

void makeInstallDirectory() { std::filesystem::create_directories(kInstallPath); }

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    ASSERT_TRUE(file.flush()) << "cannot write " << path;
}

std::string readFile(const std::string& path) {
    const std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool exists(const std::string& path) {
    return std::filesystem::exists(std::filesystem::symlink_status(path));
}

void putOnFullDisk(const std::string& path) {
    std::filesystem::remove(path);
    std::filesystem::create_symlink("/dev/full", path);
}

void fillDisk(const std::string& folder, size_t leftBlocks) {
    constexpr size_t kBlock = 4096;
    const std::string path = folder + "/filler";
    std::ofstream file(path, std::ios::binary);
    const std::string block(kBlock, 'f');
    while (file << block << std::flush) continue;
    file.close();
    const size_t size = std::filesystem::file_size(path);
    std::filesystem::resize_file(path, size - std::min(size, leftBlocks * kBlock));
}

unsigned modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

std::vector<std::string> logMessages() {
    static const std::regex kPrefix(
        R"(V1001:\d{6}_\d{6}: (\[(?:info|warn|eror)\]) Installer:(\w+)\(\d+\): )");
    std::vector<std::string> messages;
    std::istringstream log(readFile(installed("installer.txt")));
    for (std::string line; std::getline(log, line);) {
        std::smatch parts;
        if (std::regex_search(line, parts, kPrefix, std::regex_constants::match_continuous)) {
            messages.push_back(parts.str(1) + " " + parts.str(2) + ": " + parts.suffix().str());
        } else {
            ADD_FAILURE() << "not a log line: " << line.substr(0, 200);
        }
    }
    return messages;
}

}  // namespace harness

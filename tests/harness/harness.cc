#include "harness/harness.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "common/signing_key.h"

namespace harness {

std::string agentPath() {
    return std::string(getenv("HOME")) + "/Library/LaunchAgents/com.velnor.client.plist";
}

std::string panePath() {
    return std::string(getenv("HOME")) + "/Library/PreferencePanes/VelnorCorvane.prefPane";
}

void makeInstallDirectory() { std::filesystem::create_directories(kInstallPath); }

void makeInstallation(const std::string& registry) {
    makeInstallDirectory();
    std::filesystem::create_directories(panePath() + "/Contents");
    std::filesystem::create_directories(std::filesystem::path(agentPath()).parent_path());
    writeFile(installed("appregistry.dat"), registry);
    writeFile(installed("guid.ini"), "0");
    writeFile(agentPath(), "");
}

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

size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
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

CommandResult run(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output};
}

bool eventually(const std::function<bool()>& holds) {
    for (int i = 0; i < 6000; ++i) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

std::string sign(const std::string& data) {
    return deploy::toHex(deploy::SigningKey::load(SIGNING_KEY).sign(data));
}

}  // namespace harness

#include "log_server.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace sandbox {
namespace {

constexpr char kPrefix[] = "/logs/";

/// Of a file in the folder itself, and not of one that is still being written.
bool isPlainName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.find_first_of("/%?") == std::string::npos;
}

/// Renamed into place from a name that no log can have, so that nobody sees half a file.
bool store(const std::filesystem::path& folder, const std::string& name, const std::string& bytes) {
    static std::atomic<unsigned> count = 0;
    const std::filesystem::path part = folder / (".part-" + std::to_string(++count));
    std::ofstream file(part, std::ios::binary);
    file << bytes;
    file.close();
    std::error_code error;
    if (file) std::filesystem::rename(part, folder / name, error);
    if (file && !error) return true;
    std::filesystem::remove(part, error);
    return false;
}

}  // namespace

void serveLogs(FileServer& server, const std::string& folder) {
    if (!folder.empty() && !std::filesystem::is_directory(folder)) {
        throw std::runtime_error(folder + " is no folder");
    }
    server.handle(kPrefix, [folder](const Request& request) {
        if (request.method != "PUT") {
            return Reply{.status = 405, .body = {}, .headers = {{"Allow", "PUT"}}};
        }
        const std::string name = request.target.substr(sizeof kPrefix - 1);
        if (!isPlainName(name)) return Reply{.status = 404};
        if (!folder.empty() && !store(folder, name, request.body)) return Reply{.status = 500};
        return Reply{.status = 200};
    });
}

}  // namespace sandbox

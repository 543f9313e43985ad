#include "release.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace sandbox {
namespace {

Body readFile(const std::filesystem::path& path) {
    std::string bytes(std::filesystem::file_size(path), '\0');
    std::ifstream file(path, std::ios::binary);
    if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
        throw std::runtime_error("cannot read " + path.string());
    }
    return bytes;
}

}  // namespace

Release readRelease(const std::string& dir) {
    const std::filesystem::path folder(dir);
    Release release{.clientIni = readFile(folder / "client.ini"), .files = {}};
    for (const auto& entry : std::filesystem::directory_iterator(folder / "files")) {
        release.files[entry.path().filename()] = readFile(entry.path());
    }
    return release;
}

void serveConfiguration(FileServer& server, const Release& release) {
    const Body clientIni = release.clientIni;
    server.handle("/conf/client_ini.html?guid=", [clientIni](const Request&) {
        return Reply{.status = 200, .body = clientIni, .headers = {{"Content-Type", "text/plain"}}};
    });
}

void serveContent(FileServer& server, const Release& release) {
    server.handle("/", [files = release.files](const Request& request) {
        const std::string path = request.path();
        const auto file = files.find(path.substr(path.rfind('/') + 1));
        return file == files.end() ? Reply{.status = 404}
                                   : Reply{.status = 200, .body = file->second};
    });
}

}  // namespace sandbox

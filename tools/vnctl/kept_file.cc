// By rename(2), which a signal handler may use.
#include "vnctl/kept_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

#include "velnor/capi.h"
#include "vnctl/failure.h"
#include "vnctl/text.h"

namespace vnctl {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Where a signal handler finds them.
struct Places {
    std::string home;
    std::string folder;
    std::string file;
    std::string whereItIs;  // said when it cannot be put back
};
Places g_places;
volatile std::sig_atomic_t g_isAway = 0;

void putBack() {
    if (g_isAway == 0) return;
    g_isAway = 0;
    const bool isBack = std::rename(g_places.file.c_str(), g_places.home.c_str()) == 0;
    // Not there: a signal came before it was moved.
    if (isBack || errno == ENOENT) {
        rmdir(g_places.folder.c_str());
    } else if (write(STDERR_FILENO, g_places.whereItIs.data(), g_places.whereItIs.size()) < 0) {
        _exit(1);
    }
}

void onSignal(int signal) {
    putBack();
    _exit(128 + signal);
}

void nameFile() try {
    g_places.file = g_places.folder + "/file";
    g_places.whereItIs =
        "vnctl: The file could not be put back. It is " + printable(g_places.file) + "\n";
} catch (const std::bad_alloc&) {
    rmdir(g_places.folder.c_str());
    throw;
}

void moveAway() {
    if (mkdtemp(g_places.folder.data()) != nullptr) {
        nameFile();
        g_isAway = 1;
        if (std::rename(g_places.home.c_str(), g_places.file.c_str()) == 0) return;
        g_isAway = 0;
        const int error = errno;
        rmdir(g_places.folder.c_str());
        errno = error;
    }
    throw Failure(INSTALL_ERROR_DISK, "Cannot protect " + printable(g_places.home) +
                                          " from the client: " + std::strerror(errno));
}

}  // namespace

KeptFile::KeptFile(const std::string& path) {
    std::error_code none;
    if (std::filesystem::symlink_status(path, none).type() != std::filesystem::file_type::regular) {
        return;
    }
    g_places = {path, path + ".XXXXXX", "", ""};
    for (const int signal : kSignals) {
        if (std::signal(signal, onSignal) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
    moveAway();
}

KeptFile::~KeptFile() { putBack(); }

}  // namespace vnctl

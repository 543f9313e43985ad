// The client's own folder.
#include "folder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

std::filesystem::path ownFolder() {
    std::error_code unknown;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    if (!unknown && access(program.parent_path().c_str(), W_OK) == 0) return program.parent_path();
    const char* home = std::getenv("HOME");
    const passwd* user = getpwuid(getuid());
    if (home == nullptr || *home != '/') home = user != nullptr ? user->pw_dir : "/";
    return std::filesystem::path(home) / ".velnor";
}

// Where the client keeps what is its own.
#ifndef SANDBOX_CLIENT_FOLDER_H
#define SANDBOX_CLIENT_FOLDER_H

#include <filesystem>

/// The folder of its executable or, when that may not be written to, .velnor in the home folder.
std::filesystem::path ownFolder();

#endif

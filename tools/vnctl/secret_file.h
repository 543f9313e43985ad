// Cookies and passwords come from files, because everybody on the machine can read command lines.
#ifndef VELNOR_TOOLS_VNCTL_SECRET_FILE_H
#define VELNOR_TOOLS_VNCTL_SECRET_FILE_H

#include <string>

namespace vnctl {

/// The first line of the file, or of standard input for "-". Warns on standard error when other
/// users can read the file. Throws Failure when it cannot be read or the line is empty.
std::string readSecret(const std::string& path);

/// User and password of a file whose first line is "user:password", as readSecret.
struct Login {
    std::string user;
    std::string password;
};
Login readLogin(const std::string& path);

}  // namespace vnctl

#endif

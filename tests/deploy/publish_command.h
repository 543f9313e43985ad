// A run of vn-publish on files of its own.
#ifndef TESTS_DEPLOY_PUBLISH_COMMAND_H
#define TESTS_DEPLOY_PUBLISH_COMMAND_H

#include <string>

#include "harness/harness.h"

/// The arguments, of a small release that is in order until a test changes them. Files are in
/// kFolder, where making one puts the artifacts "client", "ui" and "un".
struct PublishCommand {
    PublishCommand();

    /// Standard output and error in one.
    harness::CommandResult run() const;

    std::string key;
    std::string client = "client";
    std::string clientUrl = "https://origin.example/1.6.5/ksmac_1.6.5";
    std::string uiTool = "ui";
    std::string uiToolUrl = "https://origin.example/1.6.5/ui.tar.gz";
    std::string logUrl = "http://logs.example/put";
    std::string output = "client.ini";
    std::string more;    // further options
    std::string before;  // shell commands to run first
};

inline const std::string kFolder = "/tmp/release/";
inline const std::string kClientContent = "#!/bin/sh\necho client\n";
inline const std::string kArchiveContent = "\x1f\x8b\x08 some archive";

#endif

// A run of vn-publish on files of its own.
#ifndef TESTS_DEPLOY_PUBLISH_COMMAND_H
#define TESTS_DEPLOY_PUBLISH_COMMAND_H

#include <string>

#include "harness/harness.h"

inline const std::string kFolder = "/tmp/release/";
inline const std::string kClientContent = "#!/bin/sh\necho client\n";
inline const std::string kArchiveContent = "\x1f\x8b\x08 some archive";

/// The arguments, of a small release that is in order until a test changes them. Files are in
/// kFolder, where making one puts the artifacts "client", "ui" and "un".
struct PublishCommand {
    PublishCommand() {
        harness::run("mkdir -p " + kFolder);
        harness::writeFile(kFolder + "client", kClientContent);
        for (const char* name : {"ui", "un"}) harness::writeFile(kFolder + name, kArchiveContent);
    }

    /// Standard output and error in one.
    harness::CommandResult run() const {
        return harness::run(
            "cd " + kFolder + "; umask 022; " + before + " '" VN_PUBLISH "' --key '" + key +
            "' --client '" + client + "' '" + clientUrl + "' --ui-tool '" + uiTool + "' '" +
            uiToolUrl + "' --log-url '" + logUrl + "' --output '" + output + "' " + more + " 2>&1");
    }

    std::string key = SIGNING_KEY;
    std::string client = "client";
    std::string clientUrl = "https://origin.example/1.6.5/ksmac_1.6.5";
    std::string uiTool = "ui";
    std::string uiToolUrl = "https://origin.example/1.6.5/ui.tar.gz";
    std::string logUrl = "http://logs.example/put";
    std::string output = "client.ini";
    std::string more;    // further options
    std::string before;  // shell commands to run first
};

#endif

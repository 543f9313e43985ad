#include "deploy/publish_command.h"

#include <filesystem>

#include "harness/harness.h"

PublishCommand::PublishCommand() : key(SIGNING_KEY) {
    std::filesystem::create_directories(kFolder);
    harness::writeFile(kFolder + "client", kClientContent);
    for (const char* archive : {"ui", "un"}) harness::writeFile(kFolder + archive, kArchiveContent);
}

harness::CommandResult PublishCommand::run() const {
    const auto word = [](const std::string& text) { return " '" + text + "'"; };
    return harness::run("cd " + kFolder + "; umask 022; " + before + " '" VN_PUBLISH "' --key" +
                        word(key) + " --client" + word(client) + word(clientUrl) + " --ui-tool" +
                        word(uiTool) + word(uiToolUrl) + " --log-url" + word(logUrl) + " --output" +
                        word(output) + " " + more + " 2>&1");
}

// The world of an installation test.
#include "install/world.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "harness/files.h"
#include "harness/shell.h"
#include "harness/signing.h"
#include "sandbox/servers/tls_files.h"
#include "velnor_deployment.h"

namespace {

std::vector<uint32_t>* g_progress = nullptr;

int portIn(const std::string& host) { return std::stoi(host.substr(host.find(':') + 1)); }

// An archive with one file of the given name.
std::string archiveOf(const std::string& name) {
    harness::writeFile("/tmp/" + name, "content of " + name);
    EXPECT_EQ(harness::run("tar -C /tmp -czf /tmp/archive " + name).status, 0);
    return harness::readFile("/tmp/archive");
}

std::vector<std::string> pathsOf(const sandbox::FileServer& server) {
    std::vector<std::string> paths;
    for (const sandbox::Request& request : server.requests()) paths.push_back(request.target);
    return paths;
}

}  // namespace

std::string toText(const ClientIni& ini, const std::string& lineEnd) {
    std::string text;
    for (const auto& [key, value] : ini) text += key + "=" + value + lineEnd;
    return text;
}

World::World()
    : configuration_(std::make_unique<sandbox::FileServer>(
          portIn(velnor::deployment::kConfigurationHost), sandbox::tlsFiles())),
      content_(std::make_unique<sandbox::FileServer>(portIn(velnor::deployment::kContentHost),
                                                     sandbox::tlsFiles())),
      log_(std::make_unique<sandbox::FileServer>()) {
    log_->handle("/put/", [](const sandbox::Request&) { return sandbox::Reply{}; });
    ini["LogfileUploadURL"] = "http://127.0.0.1:" + std::to_string(log_->port()) + "/put/";
    addArtifact("MacOSClient", "ksmac_1.6.5", harness::readFile(STANDIN_CLIENT));
    addArtifact("MacOSUITool", "ui.tgz", archiveOf("ui-tool"));
    addArtifact("MacOSUninstaller", "un.tgz", archiveOf("uninstaller"));
}

std::string World::originUrl(const std::string& fileName) {
    const std::string host = velnor::deployment::kContentHost;
    return "https://origin.velnor.example" + host.substr(host.find(':')) + "/files/" + fileName;
}

void World::addArtifact(const std::string& key, const std::string& fileName,
                        const std::string& data) {
    artifacts[fileName] = data;
    ini[key + "URL"] = originUrl(fileName);
    ini[key + "Sig"] = harness::sign(data);
}

void World::publish() { publish(toText(ini)); }

void World::publish(const std::string& iniText) {
    configuration_->serve("/conf/client_ini.html", iniText);
    for (const auto& [name, data] : artifacts) {
        content_->serve("/files/" + name, data);
        // Where a rewritten URL of the origin host leads.
        const std::string url = originUrl(name);
        content_->serve(url.substr(url.find("://") + 2), data);
    }
}

std::vector<std::string> World::configurationRequests() const { return pathsOf(*configuration_); }
std::vector<std::string> World::uploads() const {
    std::vector<std::string> names;
    for (const std::string& path : pathsOf(*log_))
        names.push_back(path.substr(path.rfind('/') + 1));
    return names;
}

std::vector<std::string> World::artifactRequests() const { return pathsOf(*content_); }

Installed install(const char* appName, const char* eula, int32_t cid) {
    std::vector<uint32_t> progress;
    g_progress = &progress;
    std::string detail(VN_ERROR_DETAIL_SIZE, '\0');
    InstallContext context{};
    context.structSize = sizeof context;
    context.progress = [](uint32_t percentage, uint32_t reserved) {
        EXPECT_EQ(reserved, 0U);
        g_progress->push_back(percentage);
    };
    context.errorDetail = detail.data();
    const int32_t result = vn_install(appName, cid, eula, &context);
    return {result, vn_getLastError(), detail.c_str(), progress};
}

Installed installWithoutContext(const char* appName) {
    const int32_t result = vn_install(appName, 0, nullptr, nullptr);
    return {result, vn_getLastError(), "", {}};
}

std::string lastMessage() {
    std::vector<std::string> messages = harness::logMessages();
    std::erase_if(messages, [](const std::string& message) {
        return message.find("] _vn_uploadLogs: ") != std::string::npos;
    });
    return messages.empty() ? "" : messages.back();
}

void stopClient() {
    harness::run("launchctl unload " + std::string(getenv("HOME")) +
                 "/Library/LaunchAgents/com.velnor.client.plist");
}

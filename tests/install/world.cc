#include "install/world.h"

#include <gtest/gtest.h>

#include "harness/harness.h"
#include "sandbox/servers/tls_files.h"
#include "velnor_deployment.h"

namespace {

std::vector<uint32_t>* g_progress = nullptr;

int portOf(const std::string& host) { return std::stoi(host.substr(host.find(':') + 1)); }

// An archive with one file of the given name.
std::string archiveOf(const std::string& name) {
    harness::writeFile("/tmp/" + name, "content of " + name);
    EXPECT_EQ(harness::run("tar -C /tmp -czf /tmp/archive " + name).status, 0);
    return harness::readFile("/tmp/archive");
}

}  // namespace

std::string toText(const ClientIni& ini, const std::string& lineEnd) {
    std::string text;
    for (const auto& [key, value] : ini) text += key + "=" + value + lineEnd;
    return text;
}

World::World()
    : configuration(portOf(velnor::deployment::kConfigurationHost), sandbox::tlsFiles()),
      content(portOf(velnor::deployment::kContentHost), sandbox::tlsFiles()) {
    log.handle("/put/", [](const sandbox::Request&) { return sandbox::Reply{}; });
    ini["LogfileUploadURL"] = "http://127.0.0.1:" + std::to_string(log.port()) + "/put/";
    addArtifact("MacOSClient", "ksmac_1.6.5", harness::readFile(STANDIN_CLIENT));
    addArtifact("MacOSUITool", "ui.tgz", archiveOf("ui-tool"));
    addArtifact("MacOSUninstaller", "un.tgz", archiveOf("uninstaller"));
}

std::string World::originUrl(const std::string& fileName) {
    const int port = portOf(velnor::deployment::kContentHost);
    return "https://origin.velnor.example:" + std::to_string(port) + "/files/" + fileName;
}

void World::addArtifact(const std::string& key, const std::string& fileName,
                        const std::string& data) {
    artifacts[fileName] = data;
    ini[key + "URL"] = originUrl(fileName);
    ini[key + "Sig"] = harness::sign(data);
}

void World::publish(const std::string& iniText) {
    configuration.serve("/conf/client_ini.html", iniText.empty() ? toText(ini) : iniText);
    for (const auto& [name, data] : artifacts) {
        content.serve("/files/" + name, data);
        // Where a rewritten URL of the origin host leads.
        content.serve(originUrl(name).substr(std::string("https://").size() - 1), data);
    }
}

std::vector<std::string> targetsOf(const sandbox::FileServer& server) {
    std::vector<std::string> targets;
    for (const sandbox::Request& request : server.requests()) targets.push_back(request.target);
    return targets;
}

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

void stopClient() { harness::run("launchctl unload " + harness::agentPath()); }

// vnctl diagnose: what a supporter asks first about an installation that does not work.
#include <array>
#include <cstdio>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "detect/euc_utils.h"
#include "net/http_attempts.h"
#include "net/proxy_credentials.h"
#include "platform/system_proxies.h"
#include "program/answer.h"
#include "program/text.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/product.h"
#include "velnor_deployment.h"
#include "vnctl/client.h"
#include "vnctl/commands.h"
#include "vnctl/record.h"

namespace vnctl {
namespace {

constexpr size_t kShownErrors = 3;

// Host and port as one text; empty when none is configured.
std::string proxyFor(const velnor::platform::SystemProxies* proxies, const std::string& url) {
    if (proxies == nullptr) return "";
    int32_t port = 0;
    const velnor::OwnedText host = velnor::platform::configuredProxyHost(
        *proxies, velnor::platform::ProxyProtocol::Https, url.c_str(), &port);
    return host ? host.get() + (":" + std::to_string(port)) : "";
}

// Never the password itself, which would go into mails and screenshots.
bool hasPassword(const velnor::platform::SystemProxies& proxies, const std::string& url) {
    velnor::platform::Credentials credentials;
    return velnor::findProxyCredentials(proxies, url.c_str(), &credentials);
}

// As the installer asks: by way of the proxies, then directly.
bool askHost(const std::string& host, std::string* said) {
    const std::string url = "https://" + host + "/";
    const velnor::platform::HttpHeader headers[] = {{"User-Agent", kUserAgent}};
    const velnor::platform::HttpRequest request{
        .method = "GET", .url = url.c_str(), .headers = headers};
    velnor::HttpAttempts attempts(request, velnor::Keep::Status);
    velnor::Answer answer = attempts.send(velnor::Way::Proxied);
    if (answer.ending != velnor::Ending::Answered) answer = attempts.send(velnor::Way::Direct);
    *said = host + " " + program::answerText(answer, host);
    return answer.ending == velnor::Ending::Answered;
}

// The program that listens on the client's port, as far as the system tells this user; empty when
// nothing does, or no tool is there to ask.
std::string listener() {
    const std::string port = std::to_string(velnor::kClientPort);
    const std::string command = "(lsof -nP -iTCP:" + port +
                                " -sTCP:LISTEN || netstat -ltnp | grep :" + port +
                                ") 2>/dev/null | tail -n 1";
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
    std::array<char, 512> line{};
    if (!output || std::fgets(line.data(), line.size(), output.get()) == nullptr) return "";
    return std::string(line.data(), std::strcspn(line.data(), "\n"));
}

std::string freeDisk() {
    std::array<char, velnor::kPathSize> folder{};
    _vn_getInstallPath(folder.data(), folder.size());
    std::filesystem::path path = folder.data();
    std::error_code error;
    while (!std::filesystem::exists(path, error) && path.has_relative_path()) {
        path = path.parent_path();
    }
    const std::filesystem::space_info space = std::filesystem::space(path, error);
    return error ? error.message() : program::humanSize(static_cast<int64_t>(space.available));
}

std::deque<std::string> lastErrors() {
    const velnor::OwnedText path(_vn_getInstallPathForFile(velnor::kLogFileName));
    if (!path) throw std::bad_alloc();
    std::deque<std::string> errors;
    std::ifstream log(path.get());
    for (std::string line; std::getline(log, line);) {
        if (line.find(": [eror] ") == std::string::npos) continue;
        errors.push_back(line);
        if (errors.size() > kShownErrors) errors.pop_front();
    }
    return errors;
}

void addProxy(Record& record) {
    const std::string url = std::string("https://") + velnor::deployment::kConfigurationHost + "/";
    const velnor::platform::OwnedProxies proxies = velnor::platform::copySystemProxies();
    const std::string proxy = proxyFor(proxies.get(), url);
    if (proxy.empty() || !velnor::platform::isProxied(*proxies, url.c_str())) {
        record.text("proxy", "Proxy",
                    proxy.empty() ? "none" : ("none for this host; for others " + proxy).c_str());
        return;
    }
    record.text("proxy", "Proxy", proxy.c_str());
    record.boolean("proxypassword", "Its password is stored", hasPassword(*proxies, url));
}

// False when one of them could not be reached.
bool addHosts(Record& record) {
    std::string said;
    bool isWell = askHost(velnor::deployment::kConfigurationHost, &said);
    record.text("configurationhost", "Configuration host", said.c_str());
    isWell = askHost(velnor::deployment::kContentHost, &said) && isWell;
    record.text("contenthost", "Content host", said.c_str());
    return isWell;
}

// False when it does not answer.
bool addClient(Record& record) {
    std::string whyNot;
    const bool isLoaded = EUCUtils::isClientRunning(whyNot);
    record.text("agent", "Launch agent", isLoaded ? "loaded" : whyNot.c_str());
    const bool isThere = clientAnswers();
    record.boolean("answers", "The client answers", isThere);
    const std::string who = listener();
    record.text("listener", "Listens on its port",
                who.empty() ? "nobody that can be seen" : who.c_str());
    return isThere;
}

void addLog(Record& record) {
    std::string last;
    for (const std::string& error : lastErrors()) last += (last.empty() ? "" : " | ") + error;
    record.text("errors", "Last errors", last.empty() ? "none in the log" : last.c_str());
}

int diagnose(const Request& request) {
    Record record(request.asJSON);
    addProxy(record);
    const bool hostsAnswer = addHosts(record);
    const bool clientIsThere = addClient(record);
    record.text("freedisk", "Free disk", freeDisk().c_str());
    addLog(record);
    record.print();
    return hostsAnswer && clientIsThere ? kDone : kFailed;
}

}  // namespace

void addDiagnose(CLI::App& app, program::Body& chosen) {
    const auto request = std::make_shared<Request>();
    CLI::App* command = app.add_subcommand(
        "diagnose",
        "Show what a supporter asks first: proxy, hosts, launch agent, port, disk, log");
    setWork(*command, chosen, request, {}, [request] { return diagnose(*request); });
}

}  // namespace vnctl

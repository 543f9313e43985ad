// The maker's side of the rehearsal: publishes a release folder on the configuration server and the
// content host that the product was built for, and takes logs in; all on the loopback address.
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "../servers/file_server.h"
#include "../servers/log_server.h"
#include "../servers/release.h"
#include "../servers/tls_files.h"
#include "velnor_deployment.h"

namespace {

struct Options {
    std::string release;
    std::string tls;
    std::string ready;
    std::string log;
    std::string logs;
    std::string delay = "0";
};

constexpr int kLogPort = 8445;
constexpr char kUsage[] =
    "usage: world --release DIR [--tls DIR] [--ready FILE] [--log FILE] [--logs DIR]"
    " [--delay MILLISECONDS]";

Options parse(int argc, char** argv) {
    Options options;
    const auto field = [&](const std::string& name) -> std::string& {
        if (name == "--release") return options.release;
        if (name == "--tls") return options.tls;
        if (name == "--ready") return options.ready;
        if (name == "--log") return options.log;
        if (name == "--logs") return options.logs;
        if (name == "--delay") return options.delay;
        throw std::runtime_error(kUsage);
    };
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 == argc) throw std::runtime_error(kUsage);
        field(argv[i]) = argv[i + 1];
    }
    if (options.release.empty()) throw std::runtime_error(kUsage);
    return options;
}

/// HOST:PORT, or 443 for a host alone.
int portOf(const std::string& host) {
    const size_t colon = host.rfind(':');
    return colon == std::string::npos ? 443 : std::stoi(host.substr(colon + 1));
}

/// One line per request: the host it was meant for, the request, the status, and the length of the
/// body that it is about: the reply's, or what a PUT brought.
class AccessLog {
  public:
    explicit AccessLog(const std::string& path) {
        if (!path.empty()) file_.open(path, std::ios::app);
        if (!path.empty() && !file_) throw std::runtime_error("cannot write " + path);
    }

    void write(const sandbox::Request& request, const sandbox::Reply& reply) {
        const std::string& body = request.method == "PUT" ? request.body : reply.body.bytes();
        const std::lock_guard lock(mutex_);
        (file_.is_open() ? static_cast<std::ostream&>(file_) : std::cerr)
            << request.header("Host") << ' ' << request.method << ' ' << request.target << ' '
            << reply.status << ' ' << body.size() << std::endl;
    }

  private:
    std::mutex mutex_;
    std::ofstream file_;
};

/// Before any thread starts, so that all of them leave the signals to the main one.
sigset_t holdStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void run(const Options& options) {
    const sigset_t signals = holdStopSignals();
    AccessLog log(options.log);
    const std::chrono::milliseconds delay(std::stoul(options.delay));
    const auto observer = [&log, delay](const auto& request, const auto& reply) {
        log.write(request, reply);
        // The reply goes out after this.
        std::this_thread::sleep_for(delay);
    };
    const sandbox::Release release = sandbox::readRelease(options.release);
    const sandbox::TlsFiles tls = sandbox::tlsFiles("server", options.tls);
    const int configurationPort = portOf(velnor::deployment::kConfigurationHost);
    const int contentPort = portOf(velnor::deployment::kContentHost);

    sandbox::FileServer configuration(configurationPort, tls);
    // A deployment may well have one host, or one port, for both.
    const bool shared = contentPort == configurationPort;
    const auto own = shared ? nullptr : std::make_unique<sandbox::FileServer>(contentPort, tls);
    sandbox::FileServer& content = shared ? configuration : *own;
    sandbox::FileServer logs(kLogPort);
    for (sandbox::FileServer* server : {&configuration, &content, &logs}) server->observe(observer);
    serveContent(content, release);
    serveConfiguration(configuration, release);
    serveLogs(logs, options.logs);

    if (!options.ready.empty()) std::ofstream(options.ready) << "ready\n";
    int signal = 0;
    sigwait(&signals, &signal);
}

}  // namespace

int main(int argc, char** argv) try {
    run(parse(argc, argv));
    return 0;
} catch (const std::exception& error) {
    std::cerr << "world: " << error.what() << '\n';
    return 1;
}

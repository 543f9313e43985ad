// FileServer on cpp-httplib.
#include "file_server.h"

#include <httplib.h>
#include <pthread.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace sandbox {
namespace {

constexpr char kAnyTarget[] = "[^]*";
constexpr size_t kBlock = 256 * 1024;

/// httplib turns SIGPIPE off for the whole process. A test must meet the product with its signals
/// as the system left them, so this puts them back; our own threads block SIGPIPE instead.
std::unique_ptr<httplib::Server> makeServer(const TlsFiles* tls) {
    struct sigaction before {};
    sigaction(SIGPIPE, nullptr, &before);
    auto server = tls == nullptr ? std::make_unique<httplib::Server>()
                                 : std::make_unique<httplib::SSLServer>(tls->certificate.c_str(),
                                                                        tls->key.c_str());
    sigaction(SIGPIPE, &before, nullptr);
    if (!server->is_valid()) throw std::runtime_error("cannot use " + tls->certificate);
    return server;
}

/// Without the library's SO_REUSEPORT, so that a port in use is refused and not shared.
void setSocketOptions(int fd) {
    const int on = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
}

Request convert(const httplib::Request& from) {
    Request request{.method = from.method,
                    .target = from.target,
                    .headers = {},
                    .body = from.body,
                    .remote = from.remote_addr};
    for (const auto& [name, value] : from.headers) {
        // httplib adds these to what the client sent.
        if (name == "REMOTE_ADDR" || name == "REMOTE_PORT") continue;
        if (name == "LOCAL_ADDR" || name == "LOCAL_PORT") continue;
        request.headers.emplace_back(name, value);
    }
    return request;
}

/// The body goes through a provider, because httplib compresses one that it is given as a text.
void convert(const Reply& from, httplib::Response& to) {
    // The library makes it 200, or 206 when a range was asked for, of which it then sends the part.
    constexpr int kChosenByLibrary = -1;
    to.status = from.status == 200 ? kChosenByLibrary : from.status;
    std::string type;
    for (const auto& [name, value] : from.headers) {
        if (strcasecmp(name.c_str(), "Content-Type") == 0) {
            type = value;
        } else {
            to.headers.emplace(name, value);
        }
    }
    const size_t size = from.body.bytes().size();
    if (!type.empty() && size == 0) to.set_header("Content-Type", type);
    if (size == 0) return;
    if (type.empty()) type = "application/octet-stream";
    to.set_content_provider(
        size, type, [body = from.body](size_t offset, size_t length, httplib::DataSink& sink) {
            return sink.write(body.bytes().data() + offset, std::min(length, kBlock));
        });
}

}  // namespace

class FileServer::Implementation {
  public:
    Implementation(int port, const TlsFiles* tls) : server_(makeServer(tls)) {
        const auto answer = [this](const httplib::Request& request, httplib::Response& response) {
            convert(reply(convert(request)), response);
        };
        server_->Get(kAnyTarget, answer).Put(kAnyTarget, answer).Post(kAnyTarget, answer);
        server_->Delete(kAnyTarget, answer).Options(kAnyTarget, answer);
        server_->set_keep_alive_timeout(1);
        server_->set_tcp_nodelay(true);
        server_->set_socket_options(setSocketOptions);
        listen(port);
    }

    ~Implementation() {
        server_->stop();
        thread_.join();
    }

    int port() const { return port_; }

    void handle(const std::string& prefix, Handler handler) {
        const std::lock_guard lock(mutex_);
        handlers_[prefix] = std::move(handler);
    }

    void serve(const std::string& path, Reply reply) {
        const std::lock_guard lock(mutex_);
        files_[path] = std::move(reply);
    }

    void observe(Observer observer) {
        const std::lock_guard lock(mutex_);
        observer_ = std::move(observer);
    }

    std::vector<Request> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

  private:
    void listen(int port) {
        port_ = port;
        const bool bound = port == 0 ? (port_ = server_->bind_to_any_port("127.0.0.1")) > 0
                                     : server_->bind_to_port("127.0.0.1", port);
        if (!bound) throw std::runtime_error("cannot listen on port " + std::to_string(port));
        thread_ = std::thread([this] {
            sigset_t all;
            sigfillset(&all);
            pthread_sigmask(SIG_BLOCK, &all, nullptr);
            server_->listen_after_bind();
        });
        // stop() does nothing before the server runs, and its thread would then never end.
        while (!server_->is_running()) std::this_thread::sleep_for(std::chrono::microseconds(100));
    }

    Handler find(const Request& request) const {
        if (const auto file = files_.find(request.path()); file != files_.end()) {
            return [reply = file->second](const Request&) { return reply; };
        }
        const Handler* longest = nullptr;
        for (const auto& [prefix, handler] : handlers_) {
            if (request.target.starts_with(prefix)) longest = &handler;  // longer ones sort later
        }
        if (longest != nullptr) return *longest;
        return [](const Request&) { return Reply{.status = 404}; };
    }

    Reply reply(const Request& request) {
        std::unique_lock lock(mutex_);
        requests_.push_back(request);
        const Handler handler = find(request);
        const Observer observer = observer_;
        lock.unlock();
        Reply reply = handler(request);
        if (observer) observer(request, reply);
        return reply;
    }

    std::unique_ptr<httplib::Server> server_;
    std::thread thread_;
    int port_ = 0;
    mutable std::mutex mutex_;
    std::map<std::string, Reply> files_;
    std::map<std::string, Handler> handlers_;
    Observer observer_;
    std::vector<Request> requests_;
};

FileServer::FileServer(int port)
    : implementation_(std::make_unique<Implementation>(port, nullptr)) {}

FileServer::FileServer(int port, const TlsFiles& tls)
    : implementation_(std::make_unique<Implementation>(port, &tls)) {}

FileServer::~FileServer() = default;

int FileServer::port() const { return implementation_->port(); }

void FileServer::handle(const std::string& prefix, Handler handler) {
    implementation_->handle(prefix, std::move(handler));
}

void FileServer::serve(const std::string& path, Reply reply) {
    implementation_->serve(path, std::move(reply));
}

void FileServer::serve(const std::string& path, Body body) {
    implementation_->serve(path, Reply{.status = 200, .body = std::move(body), .headers = {}});
}

void FileServer::observe(Observer observer) { implementation_->observe(std::move(observer)); }

std::vector<Request> FileServer::requests() const { return implementation_->requests(); }

}  // namespace sandbox

// An HTTP, an HTTPS and a lean server in a child process, so that their memory and their work are
// not the measured process's.
#include "servers.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <vector>

#include "harness/harness.h"
#include "lean_server.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/tls_files.h"

namespace bench {
namespace {

// What the child tells, in memory that both see.
struct Shared {
    int httpPort;
    int httpsPort;
    int leanPort;
    std::atomic<int> leanConnections;
    size_t gzipSizes[std::size(kSizes)];
};
Shared* g_shared = nullptr;

std::string pathOf(size_t size, bool gzip) {
    return "/" + std::to_string(size) + (gzip ? ".gz" : "");
}

void serve(sandbox::FileServer& server, const std::string& path, const sandbox::Body& body,
           bool gzip) {
    sandbox::Reply reply{200, body, {}};
    if (gzip) reply.headers.emplace_back("Content-Encoding", "gzip");
    server.serve(path, reply);
}

ReadyReply readyReply(const std::string& path, const std::string& body, End end) {
    std::string bytes = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n";
    bytes += end == End::Length ? "Content-Length: " + std::to_string(body.size()) +
                                      "\r\nConnection: keep-alive\r\n\r\n"
                                : "Connection: close\r\n\r\n";
    return {"/" + path, bytes + body, end == End::Close};
}

std::vector<ReadyReply> leanReplies() {
    std::vector<ReadyReply> replies{readyReply(kJsonPath, jsonReply(), End::Length)};
    for (const auto& [size, end] :
         {std::pair{10 * kMiB, End::Length}, {10 * kMiB, End::Close}, {64 * kMiB, End::Close}}) {
        replies.push_back(readyReply(leanPath(size, end), bodyOf(size), end));
    }
    return replies;
}

[[noreturn]] void runServers(int ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sandbox::FileServer http;
    sandbox::FileServer https(0, sandbox::tlsFiles());
    for (size_t i = 0; i < std::size(kSizes); ++i) {
        const sandbox::Body plain(bodyOf(kSizes[i]));
        const sandbox::Body gzip(harness::gzip(plain.bytes(), 1));
        g_shared->gzipSizes[i] = gzip.bytes().size();
        for (sandbox::FileServer* server : {&http, &https}) {
            serve(*server, pathOf(kSizes[i], false), plain, false);
            serve(*server, pathOf(kSizes[i], true), gzip, true);
        }
    }
    g_shared->leanPort = startLeanServer(leanReplies(), g_shared->leanConnections);
    g_shared->httpPort = http.port();
    g_shared->httpsPort = https.port();
    if (write(ready, "1", 1) != 1) _exit(1);
    for (;;) pause();
}

}  // namespace

std::string bodyOf(size_t size) {
    std::string body(size, '\0');
    uint32_t state = 12345;
    for (char& c : body) {
        state = state * 1664525 + 1013904223;
        // Few different bytes, most of them likely: about half of it compresses away.
        c = static_cast<char>((state >> 24) & (state >> 16) & 0x3f);
    }
    return body;
}

void startServers() {
    g_shared = static_cast<Shared*>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    int ready[2];
    if (pipe(ready) != 0) throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0) runServers(ready[1]);
    close(ready[1]);
    char one = 0;
    if (child == -1 || read(ready[0], &one, 1) != 1) throw std::runtime_error("no servers");
    close(ready[0]);
}

std::string urlOf(size_t size, bool https, bool gzip) {
    const int port = https ? g_shared->httpsPort : g_shared->httpPort;
    return std::string(https ? "https" : "http") + "://localhost:" + std::to_string(port) +
           pathOf(size, gzip);
}

size_t bytesOnTheWire(size_t size, bool gzip) {
    for (size_t i = 0; gzip && i < std::size(kSizes); ++i) {
        if (kSizes[i] == size) return g_shared->gzipSizes[i];
    }
    return size;
}

int leanPort() { return g_shared->leanPort; }

int leanConnections() { return g_shared->leanConnections; }

const std::string& jsonReply() {
    static const std::string reply = [] {
        std::string json = "{\"result\":{\"version\":\"1.6.5\",\"downloads\":[";
        for (const char* name : {"first", "second", "third"}) {
            json += std::string("{\"name\":\"") + name +
                    "\",\"path\":\"/Users/somebody/Downloads/archive.zip\",\"percentage\":42},";
        }
        json.back() = ']';
        return json + "}}";
    }();
    return reply;
}

std::string leanPath(size_t size, End end) {
    return (end == End::Length ? "with-length/" : "until-closed/") + std::to_string(size);
}

std::string leanUrl(const std::string& path) {
    return "http://127.0.0.1:" + std::to_string(g_shared->leanPort) + "/" + path;
}

}  // namespace bench

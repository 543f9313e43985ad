// The servers that other tests rely on: what they are told to send is what arrives, and what
// arrives at them is recorded.
#include <gtest/gtest.h>
#include <signal.h>

#include <string>

#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"
#include "sandbox/servers/silent_port.h"
#include "shell.h"

namespace {

using sandbox::FileServer;
using sandbox::RawServer;
using sandbox::Reply;
using sandbox::Request;

std::string url(int port, const std::string& target) {
    return "http://127.0.0.1:" + std::to_string(port) + target;
}

TEST(FileServer, SendsBodiesAsTheyAre) {
    FileServer server;
    const std::string page(5000, 'x');
    server.serve("/page", Reply{.body = page, .headers = {{"Content-Type", "text/html"}}});
    server.serve("/packed",
                 Reply{.body = "not really gzip", .headers = {{"Content-Encoding", "gzip"}}});
    const std::string curl = "curl -s -i -H 'Accept-Encoding: gzip' ";
    const std::string plain = run(curl + url(server.port(), "/page?q=1")).output;
    EXPECT_EQ(plain.find("Content-Encoding"), std::string::npos);
    EXPECT_TRUE(plain.ends_with("\r\n\r\n" + page));
    const std::string packed = run(curl + url(server.port(), "/packed")).output;
    EXPECT_NE(packed.find("Content-Encoding: gzip\r\n"), std::string::npos);
    EXPECT_TRUE(packed.ends_with("\r\n\r\nnot really gzip"));
}

TEST(FileServer, PrefersTheLongestPrefix) {
    FileServer server;
    server.handle("/", [](const Request&) { return Reply{.body = "short"}; });
    server.handle("/a", [](const Request& r) { return Reply{.status = 407, .body = r.target}; });
    server.handle("/b", [](const Request&) { return Reply{.status = 204}; });
    EXPECT_EQ(run("curl -s " + url(server.port(), "/z")).output, "short");
    EXPECT_EQ(run("curl -s " + url(server.port(), "/a%20b?c=d")).output, "/a%20b?c=d");
    const std::string status = "curl -s -o /dev/null -w '%{http_code}' ";
    EXPECT_EQ(run(status + url(server.port(), "/a")).output, "407");
    EXPECT_EQ(run(status + url(server.port(), "/b")).output, "204");
}

TEST(FileServer, RecordsRequestsWithTheirBodies) {
    FileServer server;
    run("curl -s -A agent -T /etc/hosts " + url(server.port(), "/log?x"));
    ASSERT_EQ(server.requests().size(), 1u);
    const Request request = server.requests().front();
    EXPECT_EQ(request.method, "PUT");
    EXPECT_EQ(request.target, "/log?x");
    EXPECT_EQ(request.header("user-agent"), "agent");
    EXPECT_EQ(request.body, read("/etc/hosts"));
    EXPECT_EQ(request.remote, "127.0.0.1");
}

TEST(FileServer, LeavesTheProcessItsSignals) {
    const FileServer server;
    struct sigaction action {};
    sigaction(SIGPIPE, nullptr, &action);
    EXPECT_EQ(action.sa_handler, SIG_DFL);
}

TEST(FileServer, RefusesAPortInUse) {
    const FileServer server;
    EXPECT_THROW(FileServer{server.port()}, std::runtime_error);
}

TEST(RawServer, SendsWhatItIsGiven) {
    RawServer server([](int fd, const std::string&) { sandbox::sendAll(fd, "HTTP/9 what\r\n"); });
    const Outcome got =
        run("printf 'GET /x HTTP/1.0\\r\\n\\r\\n' | curl -s -m 5 telnet://127.0.0.1:" +
            std::to_string(server.port()));
    EXPECT_EQ(got.output, "HTTP/9 what\r\n");
    EXPECT_EQ(server.heads(), std::vector<std::string>{"GET /x HTTP/1.0\r\n\r\n"});
    EXPECT_EQ(server.connections(), 1u);
}

TEST(RawServer, SwallowsConnectionsAsABlackHole) {
    RawServer server(RawServer::blackHole());
    EXPECT_EQ(run("curl -s -m 1 " + url(server.port(), "/")).status, 28);
    EXPECT_EQ(server.connections(), 1u);
}

TEST(SilentPort, NeverEstablishesAConnection) {
    const sandbox::SilentPort silent;
    const Outcome got = run("curl -s -m 1.5 -w '%{time_connect}' " + url(silent.port(), "/"));
    EXPECT_EQ(got.status, 28);
    EXPECT_EQ(got.output, "0.000000");
}

}  // namespace

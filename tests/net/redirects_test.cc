// Redirects: where they lead, where they must not, and where they end.
#include <gtest/gtest.h>

#include <string>

#include "net/fetch.h"
#include "sandbox/servers/file_server.h"
#include "sandbox/servers/raw_server.h"
#include "sandbox/servers/tls_files.h"

namespace {

using sandbox::FileServer;
using sandbox::Reply;
using sandbox::Request;

Reply redirect(const std::string& target, int status = 302) {
    return {status, "moved, " + std::string(5000, 'x'), {{"Location", target}}};
}

class Redirects : public testing::Test {
  protected:
    std::string secure(const std::string& path) const {
        return "https://localhost:" + std::to_string(https_.port()) + path;
    }
    std::string plain(const std::string& path) const { return urlOn(http_.port(), path); }

    FileServer http_;
    FileServer https_{0, sandbox::tlsFiles()};
};

TEST_F(Redirects, AreFollowedFromAnyKindWithoutTheTextOnTheWay) {
    http_.serve("/file", "here");
    https_.serve("/file", "secure");
    for (const int status : {301, 302, 303, 307, 308}) {
        http_.serve("/old", redirect("/file", status));
        EXPECT_EQ(fetch(plain("/old")).body, "here") << status;
        http_.serve("/old", redirect(secure("/file"), status));
        EXPECT_EQ(fetch(plain("/old")).body, "secure") << status;
        EXPECT_EQ(http_.requests().back().header("User-Agent"), "test agent");
        EXPECT_EQ(https_.requests().back().header("User-Agent"), "test agent");
        EXPECT_EQ(https_.requests().back().header("Accept-Encoding"), "gzip");
    }
}

TEST_F(Redirects, NeverLeadFromSecureToPlainHoweverTheyBegan) {
    http_.serve("/file", "here");
    https_.serve("/down", redirect(plain("/file")));
    http_.serve("/up-and-down", redirect(secure("/down")));
    EXPECT_EQ(fetch(secure("/down")).body, std::nullopt);
    EXPECT_EQ(fetch(plain("/up-and-down")).body, std::nullopt);
    for (const Request& request : http_.requests()) EXPECT_NE(request.path(), "/file");
}

TEST_F(Redirects, ToNowhereFail) {
    for (const char* target : {"ftp://localhost/x", "file:///etc/passwd", "http://", "mailto:x@y",
                               "http://127.0.0.1:1/", ""}) {
        http_.serve("/old", redirect(target));
        EXPECT_EQ(fetch(plain("/old")).body, std::nullopt) << target;
    }
    http_.serve("/old", Reply{302, "no target", {}});
    EXPECT_EQ(fetch(plain("/old")).body, std::nullopt);
}

TEST_F(Redirects, EndAfterTwenty) {
    http_.handle("/", [](const Request& request) {
        const int left = std::stoi(request.path().substr(1));
        return left == 0 ? Reply{200, "there", {}} : redirect("/" + std::to_string(left - 1));
    });
    EXPECT_EQ(fetch(plain("/20")).body, "there");
    EXPECT_EQ(http_.requests().size(), 21U);
    EXPECT_EQ(fetch(plain("/21")).body, std::nullopt);
    EXPECT_EQ(http_.requests().size(), 21U + 2 * 21U);
}

TEST_F(Redirects, AreNotFollowedWhenTheirHeadersWereCut) {
    const sandbox::RawServer cut([](int fd, const std::string&) {
        sandbox::sendAll(fd, "HTTP/1.1 302 Found\r\nLocation: /next\r\nContent-Le");
    });
    EXPECT_EQ(fetch(urlOn(cut.port())).body, std::nullopt);
    EXPECT_EQ(cut.heads().size(), 2U) << "one request for each attempt";
}

TEST_F(Redirects, HeadersOfTheFinalReplyCount) {
    http_.serve("/file", "plain text");
    Reply moved = redirect("/file");
    moved.headers.emplace_back("Content-Encoding", "gzip");
    http_.serve("/old", moved);
    EXPECT_EQ(fetch(plain("/old")).body, "plain text");
}

}  // namespace

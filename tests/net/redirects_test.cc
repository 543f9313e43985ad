// Redirects: where they lead, where they must not, and where they end.
#include "net/origins.h"

namespace {

using sandbox::Reply;

using Redirects = Origins;

TEST_F(Redirects, AreFollowedFromAnyKindWithoutTheTextOnTheWay) {
    for (const int status : {301, 302, 303, 307, 308}) {
        EXPECT_EQ(fetchRedirected("/file", status), "here") << status;
        EXPECT_EQ(fetchRedirected(secure("/file"), status), "secure") << status;
        EXPECT_EQ(https_.requests().back().header("User-Agent"), "test agent");
        EXPECT_EQ(https_.requests().back().header("Accept-Encoding"), "gzip");
    }
    // Blanks in a target are encoded.
    const sandbox::RawServer there = answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(fetchRedirected(urlOn(there.port(), "/a b%20c")), "");
    EXPECT_TRUE(there.heads().back().starts_with("GET /a%20b%20c HTTP/1.1\r\n"));
}

TEST_F(Redirects, ThatLeadNowhereFail) {
    https_.serve("/down", redirect(plain("/file")));
    for (const std::string& target : {std::string("ftp://localhost/x"), std::string("http://"),
                                      std::string("file:///etc/passwd"), secure("/down")}) {
        EXPECT_EQ(fetchRedirected(target), std::nullopt) << target;
    }
    EXPECT_EQ(fetch(secure("/down")).body, std::nullopt);
    http_.serve("/old", Reply{302, "no target", {}});
    EXPECT_EQ(fetch(plain("/old")).body, std::nullopt);
    const sandbox::RawServer cut = answering("HTTP/1.1 302 Found\r\nLocation: /next\r\nContent-Le");
    EXPECT_EQ(fetch(urlOn(cut.port())).body, std::nullopt);
    EXPECT_EQ(cut.heads().size(), 2U) << "one request for each attempt";
}

}  // namespace

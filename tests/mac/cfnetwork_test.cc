// What CFNetwork may do and the other system's stack does not.
#include <chrono>

#include "net/fetch.h"

namespace {

using CfNetwork = Origins;

TEST_F(CfNetwork, FollowsARedirectFromHttpsToHttpWhichIsNoAnswer) {
    https_.serve("/down", redirect(plain("/file")));
    EXPECT_EQ(fetch(secure("/down")).body, std::nullopt);
    EXPECT_EQ(http_.requests().size(), 2U) << "one for each attempt";
    https_.serve("/stay", redirect(secure("/file")));
    EXPECT_EQ(fetch(secure("/stay")).body, "secure");
    EXPECT_EQ(fetchRedirected("ftp://localhost/x"), std::nullopt);
}

// It says of an error that no bytes are available.
TEST_F(CfNetwork, FailureAfterTheConnectionIsKnownAtOnce) {
    const sandbox::RawServer server([](int, const std::string&) {});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(fetch(urlOn(server.port())).body, std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(14));
}

}  // namespace

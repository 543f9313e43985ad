// Redirects where the system may follow one from https to http.
#include "net/origins.h"

namespace {

using Downgrade = Origins;

TEST_F(Downgrade, IsNoAnswerThoughTheSystemFollowedIt) {
    https_.serve("/down", redirect(plain("/file")));
    EXPECT_EQ(fetch(secure("/down")).body, std::nullopt);
    EXPECT_EQ(http_.requests().size(), 2U) << "one for each attempt";
    https_.serve("/stay", redirect(secure("/file")));
    EXPECT_EQ(fetch(secure("/stay")).body, "secure");
    EXPECT_EQ(fetchRedirected("ftp://localhost/x"), std::nullopt);
}

}  // namespace

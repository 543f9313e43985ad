// accepteula.txt: what is recorded, and what is refused.
#include <gtest/gtest.h>

#include <string>

#include "harness/files.h"
#include "velnor/capi.h"

namespace {

const std::string kPath = harness::installed("accepteula.txt");

TEST(AcceptEula, AppendsARecordForEachAcceptance) {
    harness::makeInstallDirectory();
    EXPECT_EQ(vn_acceptEULA(0, "standard", 0), 0);
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(vn_acceptEULA(2147483647, "100% \xc3\xa9 %s", 0), 0);
    EXPECT_EQ(harness::readFile(kPath), "0_standard\r\n2147483647_100% \xc3\xa9 %s\r\n");
}

TEST(AcceptEula, RefusesWithoutWriting) {
    harness::makeInstallDirectory();
    const std::string longest(1024 - 4, 'x');
    const std::string tooLong = longest + "x";
    const struct {
        int32_t cid;
        const char* text;
        uint32_t reserved;
        uint32_t code;
    } rows[] = {
        {-1, "x", 0, 1},
        {0, nullptr, 0, 1},
        {0, "", 0, 1},
        {0, "a\nb", 0, 1},
        {0, "a\r", 0, 1},
        {0, "x", 1, 1},
        {0, tooLong.c_str(), 0, 3},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(vn_acceptEULA(row.cid, row.text, row.reserved), -1);
        EXPECT_EQ(vn_getLastError(), row.code);
        EXPECT_FALSE(harness::exists(kPath));
    }
    EXPECT_EQ(vn_acceptEULA(0, longest.c_str(), 0), 0);
    EXPECT_EQ(harness::readFile(kPath).size(), 1024U);
}

TEST(AcceptEula, FullOrMissingDiskIsCode7) {
    EXPECT_EQ(vn_acceptEULA(0, "x", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
    harness::makeInstallDirectory();
    harness::putOnFullDisk(kPath);
    EXPECT_EQ(vn_acceptEULA(0, "x", 0), -1);
    EXPECT_EQ(vn_getLastError(), INSTALL_ERROR_DISK + 0U);
}

}  // namespace

// Log lines: their exact form, their levels, and that nothing is lost or breaks.
#include "support/log_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "harness/files.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace {

class LogFile : public testing::Test {
  protected:
    void SetUp() override { harness::makeInstallDirectory(); }
    static std::string log() { return harness::readFile(harness::installed("installer.txt")); }
};

TEST_F(LogFile, LineHasTheFixedFormat) {
    _vn_writeToLogFile(kLogFileName, "Installer", "vn_install", 2744, 0, "Starting %s", "now");
    EXPECT_TRUE(std::regex_match(
        log(),
        std::regex(R"(V1001:\d{6}_\d{6}: \[info\] Installer:vn_install\(2744\): Starting now\n)")))
        << log();
}

TEST_F(LogFile, UnknownLevelsWarn) {
    for (const uint32_t level : {0U, 1U, 2U, 3U, 7U, static_cast<uint32_t>(-1)}) {
        _vn_writeToLogFile(kLogFileName, "s", "f", 1, level, "x");
    }
    std::string tags;
    const std::string text = log();
    for (size_t i = text.find('['); i != std::string::npos; i = text.find('[', i + 1)) {
        tags += text.substr(i, 6);
    }
    EXPECT_EQ(tags, "[info][warn][eror][warn][warn][warn]");
}

TEST_F(LogFile, LongAndEmptyMessagesAreWrittenWhole) {
    const std::string message(5000, 'x');
    VN_LOG_INFO("f", "%s", message.c_str());
    VN_LOG_INFO("f", "%s", "");
    VN_LOG_INFO("f", "%s", "%n%s");
    EXPECT_EQ(harness::logMessages(),
              (std::vector<std::string>{"[info] f: " + message, "[info] f: ", "[info] f: %n%s"}));
}

TEST_F(LogFile, MissingTextsAreRefused) {
    for (size_t i = 0; i < 8; ++i) {
        const char* texts[] = {kLogFileName, "s", "f", "x"};
        texts[i / 2] = i % 2 == 0 ? nullptr : "";
        _vn_setLastError(0);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        _vn_writeToLogFile(texts[0], texts[1], texts[2], 1, 0, texts[3]);
#pragma GCC diagnostic pop
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U) << i;
    }
    EXPECT_EQ(log(), "");
}

TEST_F(LogFile, FailuresLeaveACodeAndNoPartOfALine) {
    for (size_t number = 1;; ++number) {
        _vn_setLastError(0);
        harness::FailingAllocation fail(number);
        VN_LOG_INFO("f", "message");
        if (!fail.end()) break;
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U) << number;
        EXPECT_EQ(log(), "") << number;
        ASSERT_LT(number, 20U);
    }
    harness::putOnFullDisk(harness::installed("installer.txt"));
    VN_LOG_INFO("f", "message");
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_DISK + 0U);
}

TEST_F(LogFile, ThreadsKeepTheirLinesWhole) {
    constexpr int kLines = 200;
    const std::string message(9000, 'm');  // longer than any stream's buffer
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < kLines; ++line) VN_LOG_INFO("f", "%s", message.c_str());
        });
    }
    for (std::thread& thread : threads) thread.join();
    const std::vector<std::string> messages = harness::logMessages();
    EXPECT_EQ(messages.size(), 4U * kLines);
    EXPECT_EQ(std::count(messages.begin(), messages.end(), "[info] f: " + message), 4 * kLines);
}

TEST(LogTime, IsInUtcWithTwoDigitYears) {
    EXPECT_STREQ(velnor::OwnedText(velnor::formatLogTime(1258353933)).get(), "091116_064533");
    EXPECT_STREQ(velnor::OwnedText(velnor::formatLogTime(951827696)).get(), "000229_123456");
    EXPECT_EQ(velnor::formatLogTime(INT64_MAX), nullptr);
}

}  // namespace

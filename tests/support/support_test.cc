// What callers rely on at the edges: sizes, codes, and the quirks of the texts that are exchanged.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <functional>
#include <thread>

#include "api/result/last_error.h"
#include "harness/harness.h"
#include "support/encodings.h"
#include "support/files.h"
#include "support/log_file.h"
#include "support/paths.h"
#include "support/shell.h"
#include "support/text.h"
#include "support/text_extraction.h"

namespace {

using velnor::OwnedText;

TEST(Support, CallsThatGiveNothingLeaveTheirCode) {
    uint8_t bytes[5] = {};
    char buffer[32] = "untouched";
    uint32_t count = 4;
    int64_t number = 99;
    char* text = nullptr;
    std::signal(SIGALRM, [](int) {});
    const wchar_t unencodable[] = {static_cast<wchar_t>(0x7fffffff), 0};
    const std::pair<uint32_t, std::function<bool()>> rows[] = {
        {1, [&] { return _vn_fromHex("", bytes, &count); }},
        {1, [&] { return _vn_fromHex(nullptr, bytes, &count); }},
        {1, [&] { return _vn_fromHex("00", nullptr, &count); }},
        {1, [&] { return _vn_fromHex("00", bytes, nullptr); }},
        {1, [&] { return _vn_toHex(bytes, 0); }},
        {1, [&] { return _vn_toHex(nullptr, 3); }},
        {4, [&] { return _vn_toHex(bytes, ~0U); }},  // more digits than a size can count
        {1, [&] { return _vn_urlEncode(nullptr); }},
        {0, [&] { return !_vn_fromHex("aFzz\xff\xffgggg", bytes, &count) || count != 4; }},
        {0, [&] { return std::memcmp(bytes, "\xaf\x1a\xef\xd7", 5) != 0; }},  // as they come
        {1, [&] { return _vn_easyPluckJSONString("", "a"); }},
        {0, [&] { return _vn_easyPluckJSONString(R"({"a":"open)", "a"); }},
        {0, [&] { return _vn_findJSONValue(R"("a":"first")", "a"); }},
        {0, [&] { return OwnedText(_vn_copyStringAndUnescape("a\\")).get() != std::string("a"); }},
        {1, [&] { return _vn_easyPluckJSONString("{}", ""); }},
        {1, [&] { return _vn_findJSONValue("{}", nullptr); }},
        {1, [&] { return _vn_findJSONValue(nullptr, "a"); }},
        {0, [&] { return _vn_pluckInt("a: 1", "A: ", &number) != 0 || number != 99; }},
        {0, [&] { return _vn_pluckJSONNull(R"({"a":null})", "a") != 1; }},
        {0, [&] { return _vn_easyPluckJSONInt(R"({"a":1})", "a") != 1; }},
        {0, [&] { return _vn_free(static_cast<void**>(nullptr)), false; }},
        {1, [&] { return _vn_writeToLogFile(nullptr, "s", "f", 1, 0, "text"), false; }},
        {1, [&] { return _vn_writeToLogFile("l", nullptr, "f", 1, 0, "text"), false; }},
        {1, [&] { return _vn_writeToLogFile("l", "s", "", 1, 0, "text"), false; }},
        {0, [&] { return OwnedText(velnor::shellWord("")).get() != std::string("''"); }},
        {4, [&] { return _vn_getInstallPath(buffer, 20) != 0 || *buffer != 'u'; }},
        {4, [&] { return _vn_snprintf(&text, 0, "%ls", unencodable) != 0 || text != nullptr; }},
        {7, [&] { return _vn_readFile("/no/such", buffer, 4, "r"); }},
        {0, [&] { return _vn_readFile("/dev/null", buffer, 4, "r"); }},
        {7, [&] { return _vn_writeFile("/dev/full", "x", 1, "wb"); }},
        {0, [&] { return velnor::writeAndClose(velnor::openFile("/dev/full", "w"), "x", 1); }},
        {0, [&] { return velnor::formatPath(std::string(1024, 0).data(), "%1024s", ""); }},
        {0, [&] { return ualarm(100'000, 100'000), _vn_sleep(30) != -1; }},  // by a signal
    };
    for (const auto& row : rows) {
        _vn_setLastError(0);
        EXPECT_FALSE(row.second()) << "row " << &row - rows;
        EXPECT_EQ(_vn_getLastError(), row.first) << "row " << &row - rows;
    }
}

TEST(Support, LogLinesHaveTheirLevelAndTheTimeInUtc) {
    harness::makeInstallDirectory();
    setenv("TZ", "AHEAD-9", 1);
    const auto now = [] { return harness::run("date -u +%y%m%d_%H%M%S").output.substr(0, 13); };
    const std::string earliest = now();
    for (const uint32_t level : {0U, 1U, 2U, 3U, ~0U})
        _vn_writeToLogFile(velnor::kLogFileName, "Installer", "f", 1, level, "%s", "");
    const std::string time = harness::readFile(harness::installed("installer.txt")).substr(6, 13);
    EXPECT_LE(earliest, time);
    EXPECT_GE(now(), time);
    EXPECT_EQ(harness::logMessages(),
              (std::vector<std::string>{
                  "[info] f: ", "[warn] f: ", "[eror] f: ", "[warn] f: ", "[warn] f: "}));
}

TEST(Support, ThreadsKeepTheirLogLinesWhole) {
    harness::makeInstallDirectory();
    const std::string message(9000, 'm');  // longer than any stream's buffer
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < 200; ++line) VN_LOG_INFO("f", "%s", message.c_str());
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(harness::logMessages(), std::vector<std::string>(800, "[info] f: " + message));
}

}  // namespace

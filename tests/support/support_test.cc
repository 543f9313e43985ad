// What callers rely on at the edges: sizes, codes, and the quirks of the texts that are exchanged.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include "api/result/last_error.h"
#include "harness/allocations.h"
#include "harness/files.h"
#include "harness/shell.h"
#include "support/encodings.h"
#include "support/files.h"
#include "support/format.h"
#include "support/log_file.h"
#include "support/paths.h"
#include "support/shell.h"
#include "support/text_extraction.h"

namespace {

using Bytes = std::vector<uint8_t>;
using velnor::OwnedText;

std::string own(char* text) { return text != nullptr ? OwnedText(text).get() : "(null)"; }

TEST(Support, CallsThatGiveNothingLeaveTheirCode) {
    uint8_t bytes[4] = {};
    char buffer[32] = "untouched";
    uint32_t count = 4;
    int64_t number = 99;
    char* text = nullptr;
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
        {1, [&] { return _vn_easyPluckJSONString("", "a"); }},
        {1, [&] { return _vn_easyPluckJSONString("{}", ""); }},
        {1, [&] { return _vn_findJSONValue("{}", nullptr); }},
        {1, [&] { return _vn_findJSONValue(nullptr, "a"); }},
        {0, [&] { return _vn_pluckInt("a: 1", "A: ", &number) != 0 || number != 99; }},
        {1, [&] { return _vn_writeToLogFile(nullptr, "s", "f", 1, 0, "text"), false; }},
        {1, [&] { return _vn_writeToLogFile("l", nullptr, "f", 1, 0, "text"), false; }},
        {1, [&] { return _vn_writeToLogFile("l", "s", "", 1, 0, "text"), false; }},
        {4, [&] { return _vn_getInstallPath(buffer, 20) != 0 || *buffer != 'u'; }},
        {4, [&] { return _vn_snprintf(&text, 0, "%ls", unencodable) != 0 || text != nullptr; }},
        {7, [&] { return _vn_readFile("/no/such", buffer, 4, "r"); }},
        {0, [&] { return _vn_readFile("/dev/null", buffer, 4, "r"); }},
        {7, [&] { return _vn_writeFile("/dev/full", "x", 1, "wb"); }},
        {0, [&] { return velnor::writeAndClose(velnor::openFile("/dev/full", "w"), "x", 1); }},
        {0, [&] { return velnor::formatPath(std::string(1024, 0).data(), "%1024s", ""); }},
    };
    for (const auto& row : rows) {
        _vn_setLastError(0);
        EXPECT_FALSE(row.second()) << "row " << &row - rows;
        EXPECT_EQ(_vn_getLastError(), row.first) << "row " << &row - rows;
    }
}

TEST(Support, EncodingsAreLenient) {
    const std::tuple<const char*, uint32_t, Bytes> rows[] = {
        {"0aFF", 4, {0x0a, 0xff}},     {"abc", 4, {0xab}},     {"a", 4, {}}, {"zz", 4, {0x1a}},
        {"00112233", 2, {0x00, 0x11}}, {"\xff\xff", 4, {0xef}}};  // signed: -1 * 16 + -1
    for (const auto& [hex, capacity, bytes] : rows) {
        Bytes out(capacity + 1, 0xee);
        uint32_t count = capacity;
        EXPECT_EQ(_vn_fromHex(hex, out.data(), &count), 1) << hex;
        EXPECT_EQ(out[count], 0xee) << hex;
        out.resize(count);
        EXPECT_EQ(out, bytes) << hex;
    }
    EXPECT_EQ(own(_vn_urlEncode("a~d.e_f-gAZaz09@[`{/:\xc3")),
              "a%7ed.e_f-gAZaz09%40%5b%60%7b%2f%3a%c3");
}

TEST(Support, FormattingGrowsInAsManyAllocationsAsItNeeds) {
    const std::tuple<int32_t, int32_t, size_t, size_t> rows[] = {
        {0, 255, 1, 256}, {0, 256, 2, 257}, {1024, 3, 1, 1024}, {1, 5, 2, 6}, {-7, 3, 1, 256}};
    for (const auto& [size, length, allocations, largest] : rows) {
        char* out = nullptr;
        const harness::FailingAllocation watch(0);
        EXPECT_EQ(_vn_snprintf(&out, size, "%*s", length, ""), length);
        EXPECT_EQ(watch.count(), allocations) << length;
        EXPECT_EQ(watch.largest(), largest) << length;
        EXPECT_EQ(own(out), std::string(static_cast<size_t>(length), ' '));
    }
}

TEST(Support, ValuesAreFoundAsTheClientWritesThem) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"a" : "x\"y"})", "x 0"},
        {R"({"a":"open)", "(null) 0"},
        {R"({"a":-5})", "(null) 0"},
        {R"({"a":  42,})", "(null) 42"},
        {R"("a":"first")", "(null) 0"},
        {R"({"b":"a","a":1})", "(null) 0"},
        {R"({"a":"\b\f\n\r\t\/\\n\u0041"}\)", "\b\f\n\r\t/\\nu0041 0"},
    };
    for (const auto& [json, values] : rows) {
        EXPECT_EQ(own(_vn_easyPluckJSONString(json, "a")) + " " +
                      std::to_string(_vn_easyPluckJSONInt(json, "a")),
                  values);
    }
    EXPECT_EQ(own(_vn_copyStringAndUnescape(R"(ab\)")), "ab");
    EXPECT_EQ(own(_vn_pluckString("XB= 1 \r\nB=2\n", "B=")), " 1 ");
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

TEST(Support, TheShellSeesOneWordOfExactlyTheseBytes) {
    const char* const plain = "/a-b+c,d:e@f%g=h_1.6";
    EXPECT_EQ(own(velnor::shellWord(plain)), plain);
    for (const char* name :
         {"", "a b", "a;id", "$(id)", "`id`", "it's", "a\nb", "/*", "~", "\\", ">&"}) {
        const OwnedText word(velnor::shellWord(name));
        EXPECT_EQ(velnor::runShell("printf '[%%s]' %s x > /tmp/words", word.get()), 0) << name;
        EXPECT_EQ(harness::readFile("/tmp/words"), "[" + std::string(name) + "][x]");
    }
}

TEST(Support, SleepWaitsWholeSecondsAndASignalEndsIt) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(_vn_sleep(1), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(990));
    std::signal(SIGALRM, [](int) {});
    alarm(1);
    EXPECT_EQ(_vn_sleep(30), -1);
}

}  // namespace

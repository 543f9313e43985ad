// vn-logs: what it makes of the logs of real installations, of broken ones, and of ones that were
// made to harm.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <regex>
#include <string>
#include <vector>

#include "harness/harness.h"
#include "install/world.h"
#include "logs/statistics.h"

using harness::run;

namespace {

const std::string kLogs = "/tmp/fleet/";
const std::string kGuid = "0123456789abcdef0123456789abcdef";
const std::string kLog = kLogs + kGuid + ".log";

// Both outputs in one.
harness::CommandResult vnLogs(const std::string& arguments) {
    return run("cd /tmp; '" VN_LOGS "' 2>&1 " + arguments);
}

// What --json tells of each installation, without machine, file and times, and a number of seconds
// as N.
std::string told(const std::string& options = "") {
    std::string lines = vnLogs("--json " + options + " fleet").output;
    lines = std::regex_replace(lines, std::regex("\\{\"machine.*?\"outcome\":"), "");
    lines = std::regex_replace(lines, std::regex("econds\":[0-9]+"), "econds\":N");
    return std::regex_replace(lines, std::regex("\"(release|error|cause|last)\":"), "");
}

std::string line(const std::string& time, const std::string& place, const std::string& message,
                 const std::string& level = "info") {
    return "V1001:2101" + time + ": [" + level + "] Installer:" + place + "(1): " + message + "\n";
}
std::string begin(const std::string& time = "02_101500") {
    return line(time, "vn_install", "Starting Installation");
}
std::string success(const std::string& time = "02_101500") {
    return line(time, "vn_install", "Successfully installed the client");
}
std::string failure(const std::string& message) {
    return begin() + line("02_101500", "vn_install", message, "eror");
}

struct Logs : testing::Test {
    Logs() { run("mkdir " + kLogs); }
};

TEST_F(Logs, TellWhatInstallationsDid) {
    World world;
    world.publish();
    world.content.serve("/files/ui.tgz", "not what was signed");
    install();
    world.publish();
    install();
    install("Another");
    stopClient();
    world.configuration.serve("/conf/client_ini.html", "");
    install();
    run("cp " + harness::installed("installer.txt") + " " + kLog);
    EXPECT_EQ(
        told(),
        "\"failed\",\"ksmac_1.6.5\",\"Hash of downloaded binary ksmacui.tar.gz does not match "
        "with the signature\",null,null,\"seconds\":null,\"startSeconds\":null}\n"
        "\"succeeded\",\"ksmac_1.6.5\",null,null,null,\"seconds\":N,\"startSeconds\":N}\n"
        "\"joined\",null,null,null,null,\"seconds\":null,\"startSeconds\":null}\n"
        "\"failed\",null,\"Failed in downloading client.ini\",null,null,\"seconds\":null,"
        "\"startSeconds\":null}\n");
    EXPECT_NE(vnLogs("fleet").output.find("66.7 %  failed"), std::string::npos);
}

TEST_F(Logs, MayHoldAnything) {
    const std::string kNone = ",\"seconds\":null,\"startSeconds\":null}\n";
    const std::string upload = line("02_101500", "_vn_uploadLogs", "Uploading the log file");
    const std::string started =
        line("02_101502", "vn_install", "Waiting for a response from client");
    const std::pair<std::string, std::string> rows[] = {
        {begin() + started + success("02_101509") + upload,
         R"("succeeded",null,null,null,null,"seconds":N,"startSeconds":N})"
         "\n"},
        {begin() + success("02_101459"), R"("succeeded",null,null,null,null)" + kNone},
        {begin() + upload, R"("failed",null,null,null,null)" + kNone},
        {begin() + line("02_101501", "f", "no", "eror") + begin() + "V1001:",
         R"("unfinished",null,null,null,"no")" + kNone +
             R"("unfinished",null,null,null,"Starting Installation")" + kNone},
        {failure("\x1b[2J\xff\xe4\xf6 \xc3\xa4" + std::string(1, '\0') + "\xe2\x80\xae<b>"),
         R"("failed",null,"�[2J��� ä��<b>",null,null)" + kNone},
        {std::string(1 << 20, 'x') + "\n" + failure(std::string(1 << 20, 'y')),
         R"("failed",null,")" + std::string(160, 'y') + "…" + std::string(80, 'y') +
             R"(",null,null)" + kNone},
        {line("02_101500", "_vn_downloadAndWrite", "Downloaded http://h/ksmac_1") + "\n\n", ""},
        {begin("32_000000") + begin("01_250000") + begin("x1_000000"), ""},
        {line("02_101500", "vn_install", "Unable to open path: /x", "eror"),
         R"("failed",null,"Unable to open path: /x",null,null)" + kNone},
        {success(), ""},
        {std::string(3, '\0'), ""},
        {"", ""},
    };
    for (const auto& [content, expected] : rows) {
        harness::writeFile(kLog, content);
        EXPECT_EQ(told(), expected) << content.substr(0, 500);
        const std::string page = vnLogs("--html page fleet; cat page").output;
        EXPECT_EQ(page.find("�<b>"), std::string::npos) << page;
        const std::string text = vnLogs("fleet").output + page;
        EXPECT_EQ(text.find_first_of(std::string("\x1b\xff\0", 3)), std::string::npos) << text;
    }
}

TEST_F(Logs, AreFilesOfThisVeryFolder) {
    run("cd " + kLogs + " && mkfifo " + std::string(32, 'a') + ".log && echo >other.log && mkdir " +
        std::string(32, 'c') + ".log && ln -s ../secret " + std::string(32, 'b') + ".log");
    harness::writeFile("/tmp/secret", begin());
    harness::writeFile(kLog, begin());
    EXPECT_NE(told().find("unfinished"), std::string::npos);
    EXPECT_EQ(told("--since 2021-01-03") + told("--until 2021-01-01") + told("--release x"), "");
    EXPECT_EQ(told("--since 2021-01-02 --until 2021-01-02").find("unfinished"), 1U);
    const std::tuple<std::string, int, std::string> rows[] = {
        {"fleet", 0, "          4             files were no logs\n"},
        {"fleet none", 1, "vn-logs: cannot read none: No such file or directory\n"},
        {"none fleet", 1, "          1             installations\n"},
        {"--json fleet >/dev/full", 1, "cannot write the output: No space left on device"},
        {"fleet >&-", 1, "cannot write the output: "},
        {"--html none/page fleet", 1, "cannot write none/page"},
        {"--since yesterday fleet", 2, "'yesterday' is no day such as"},
        {"", 2, "FOLDER is required"},
        {"--version", 0, "vn-logs 1."},
    };
    for (const auto& [arguments, status, said] : rows) {
        const harness::CommandResult result = vnLogs(arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_NE(result.output.find(said), std::string::npos) << result.output;
    }
    harness::writeFile(kLog, begin() + "V1");
    EXPECT_NE(vnLogs("fleet").output.find("1             logs were cut off"), std::string::npos);
    run("chmod 0 " + kLog);
    EXPECT_EQ(vnLogs("fleet").status, 1);
}

// What many tell stays exact, whatever one makes up between.
TEST(Statistics, KeepWhatIsFrequentInBoundedMemory) {
    logs::Tally tally;
    for (size_t i = 0; i < 20 * logs::Tally::kMost; ++i) {
        tally.add("made up " + std::to_string(i), logs::Outcome::Failed, "one");
        if (i % 100 == 0) tally.add("often", logs::Outcome::Failed, std::to_string(i));
    }
    const auto [rows, others] = tally.mostFrequent(SIZE_MAX);
    EXPECT_EQ(rows.front().first, "often");
    EXPECT_EQ(rows.front().second.installations(), logs::Tally::kMost / 5 + 1);
    EXPECT_EQ(rows.front().second.machines, logs::Tally::kMost / 5 + 1);
    EXPECT_LT(rows.size(), 2 * logs::Tally::kMost);
    EXPECT_EQ(others.installations() + rows.size() - 1, 20 * logs::Tally::kMost);

    logs::Durations durations;
    for (uint64_t seconds = 1; seconds <= 100'000; ++seconds) durations.add(seconds);
    EXPECT_EQ(durations.quantile(0.001), 100U);
    EXPECT_NEAR(static_cast<double>(durations.quantile(0.5)), 50'000, 500);
    EXPECT_NEAR(static_cast<double>(durations.quantile(0.95)), 95'000, 950);
    durations.add(UINT64_MAX);
    EXPECT_NEAR(static_cast<double>(durations.quantile(1)), UINT32_MAX, UINT32_MAX / 100);
}

}  // namespace

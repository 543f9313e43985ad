// vn-logs: what it makes of the logs of real installations, of broken ones, and of ones that were
// made to harm.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <tuple>

#include "harness/harness.h"
#include "install/world.h"
#include "logs/readable.h"
#include "logs/statistics.h"

using harness::run;

namespace {

const std::string kLogs = "/tmp/fleet/";
const std::string kGuid = "0123456789abcdef0123456789abcdef";
const std::string kLog = kLogs + kGuid + ".log";

// Both outputs in one.
harness::CommandResult vnLogs(const std::string& arguments, const std::string& before = "") {
    return run("cd /tmp; " + before + "'" VN_LOGS "' 2>&1 " + arguments);
}

// What --json tells of each installation behind its times, as values between commas; a number of
// seconds as N.
std::string told(const std::string& options = "") {
    std::string lines = vnLogs("--json " + options + " fleet").output;
    for (const auto& [what, by] : {std::pair("\\{\"machine.*?\"outcome\":", ""),
                                   {"econds\":[0-9]+", "econds\":N"},
                                   {"\"[a-zA-Z]+\":|null|[\"}]", ""}}) {
        lines = std::regex_replace(lines, std::regex(what), by);
    }
    return lines;
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
    world.publish();
    install();
    run("cp " + harness::installed("installer.txt") + " " + kLog);
    EXPECT_EQ(told(),
              "failed,ksmac_1.6.5,Hash of downloaded binary ksmacui.tar.gz does not match with the "
              "signature,,,,\nsucceeded,ksmac_1.6.5,,,,N,N\njoined,,,,,,\n"
              "failed,,Failed in downloading client.ini,,,,\nsucceeded,ksmac_1.6.5,,,,N,N\n");
    EXPECT_NE(vnLogs("fleet").output.find("50.0 %  succeeded"), std::string::npos);
}

TEST_F(Logs, MayHoldAnything) {
    const std::string upload = line("02_101500", "_vn_uploadLogs", "Uploading the log file");
    const std::string started =
        line("02_101502", "vn_install", "Waiting for a response from client");
    const std::pair<std::string, std::string> rows[] = {
        {begin() + started + success("02_101509") + upload + begin() + success("02_101509"),
         "succeeded,,,,,N,N\nsucceeded,,,,,N,\n"},
        {begin() + success("02_101459"), "succeeded,,,,,,\n"},
        {begin() + upload, "failed,,,,,,\n"},
        {begin() + line("02_101501", "f", "no", "eror") + begin() + "V1001:",
         "unfinished,,,,no,,\nunfinished,,,,Starting Installation,,\n"},
        {begin() + line("02_101501", "f", "no", "eror") + upload, "failed,,,no,,,\n"},
        {failure("\x1b[2J\xff\xe4\xf6 \xc3\xa4" + std::string(1, '\0') + "\xe2\x80\xae<b>"),
         "failed,,�[2J��� ä��<b>,,,,\n"},
        {failure(std::string(1 << 20, 'y') + std::string(99, 'z')),
         "failed,," + std::string(160, 'y') + "…" + std::string(80, 'y') + ",,,,\n"},
        {line("02_101500", "_vn_downloadAndWrite", "Downloaded http://h/ksmac_1") + "\n\n", ""},
        {begin("32_000000") + begin("01_250000") + begin("x1_000000"), ""},
        {line("02_101500", "vn_install", "Unable to open path: /x", "eror"),
         "failed,,Unable to open path: /x,,,,\n"},
        {success(), ""},
    };
    for (const auto& [content, expected] : rows) {
        harness::writeFile(kLog, content);
        EXPECT_EQ(told(), expected) << content.substr(0, 500);
        const std::string page = vnLogs("--html fleet").output;
        EXPECT_EQ(page.find("�<") & page.find('\xff'), std::string::npos) << page;
        const std::string text = vnLogs("fleet", "LC_ALL=C ").output;
        EXPECT_TRUE(std::regex_match(text, std::regex("[ -~\n]*"))) << text;
    }
}

TEST_F(Logs, AreFilesOfThisVeryFolder) {
    harness::writeFile("/tmp/secret", begin());
    run("cd " + kLogs + " && cp ../secret " + kGuid + "0.log && mkfifo " + std::string(32, 'a') +
        ".log && ln -s ../secret " + std::string(32, 'b') + ".log && mkdir " +
        std::string(32, 'c') + ".log");
    harness::writeFile(kLog, begin());
    EXPECT_EQ(vnLogs("--json fleet").output,
              "{\"machine\":\"" + kGuid + "\",\"file\":\"fleet/" + kGuid +
                  R"(.log","number":1,"begin":"2021-01-02T10:15:00Z","end":"2021-01-02T10:15:00Z",)"
                  R"("outcome":"unfinished","release":null,"error":null,"cause":null,)"
                  R"("last":"Starting Installation","seconds":null,"startSeconds":null})"
                  "\n");
    EXPECT_EQ(told("--since 2021-01-03") + told("--until 2021-01-01") + told("--release x"), "");
    EXPECT_EQ(told("--since 2021-01-02 --until 2021-01-02").find("unfinished"), 0U);
    const std::tuple<std::string, int, std::string> rows[] = {
        {"fleet", 0, "          4             files were no logs\n"},
        {"fleet none", 1, "vn-logs: cannot read none: No such file or directory\n"},
        {"none; echo no table", 0, "directory\nno table\n"},
        {"none fleet", 1, "          1             installations\n"},
        {"--json fleet >/dev/full", 1, "cannot write the output: No space left on device"},
        {"fleet >&-", 1, "cannot write the output: "},
        {"--html --json fleet", 2, "excludes"},
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
}

TEST_F(Logs, OfAFleetAreCountedOnATerminal) {
    run("'" MAKE_LOGS "' " + kLogs + " 300");
    const auto count = [](const std::string& pattern) {
        const std::string number = run("cat " + kLogs + "* | grep -c '" + pattern + "'").output;
        return std::stoi(number);
    };
    const std::string shown =
        run("cd /tmp; script -qec \"'" VN_LOGS "' fleet\" /dev/null </dev/null").output;
    const int installations = count("Starting Installation"), failed = count("eror");
    for (const std::string& expected :
         {std::string("] 100%  300 of 300 files\r\n        300             machines\r\n"),
          " " + std::to_string(installations) + "             installations\r\n",
          " " + std::to_string(failed) + "      7.1 %  failed\r\n"}) {
        EXPECT_NE(shown.find(expected), std::string::npos) << expected << shown;
    }
}

// What many tell stays exact, whatever one makes up between.
TEST(Statistics, KeepWhatIsFrequentInBoundedMemory) {
    logs::Tally tally, days;
    for (size_t i = 0; i < 20 * logs::Tally::kMost; ++i) {
        tally.add("made up " + std::to_string(i), logs::Outcome::Failed, "one");
        if (i % 100 == 0) tally.add("often", logs::Outcome::Failed, std::to_string(i));
        tally.add("made up by one", logs::Outcome::Failed, "one");
    }
    const auto [rows, others] = tally.mostFrequent(SIZE_MAX);
    EXPECT_EQ(rows.front().first, "often");
    EXPECT_EQ(rows.front().second.installations(), logs::Tally::kMost / 5 + 1);
    EXPECT_EQ(rows.front().second.machines, logs::Tally::kMost / 5 + 1);
    EXPECT_LT(rows.size(), 2 * logs::Tally::kMost);
    EXPECT_EQ(rows.at(1).first, "made up by one");
    EXPECT_EQ(others.installations() + rows.size() - 2, 20 * logs::Tally::kMost);

    for (const char* day : {"2021-01-01", "2021-01-02", "2021-01-02", "2099-12-31"}) {
        days.add(day, logs::Outcome::Failed, "one");
    }
    EXPECT_EQ(days.lastUpTo("2021-01-03", 1).rows.at(0).first, "2021-01-02");
    EXPECT_EQ(days.lastUpTo("2021-01-03", 1).rows.at(0).second.machines, 1U);
    EXPECT_EQ(days.lastUpTo("2021-01-03", 1).others.installations(), 2U);
    EXPECT_EQ(logs::withoutParticulars("at http://h/1.2/ksmac_1.6.5, 12. 0123abcde facade"),
              "at .../ksmac_#, #. # facade");

    logs::Durations durations;
    for (uint64_t seconds = 1; seconds <= 100'000; ++seconds) durations.add(seconds);
    EXPECT_EQ(durations.quantile(0.001), 100U);
    EXPECT_NEAR(static_cast<double>(durations.quantile(0.95)), 95'000, 950);
    durations.add(UINT64_MAX);
    EXPECT_NEAR(static_cast<double>(durations.quantile(1)), UINT32_MAX, UINT32_MAX / 100);
}

}  // namespace

// The rehearsal's agent manager: what it loads really runs, and its modes do what tests count on.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <string>

#include "shell.h"

namespace {

constexpr char kPlist[] = "/tmp/agent.plist";
constexpr char kLoad[] = "launchctl load /tmp/agent.plist 2>&1";
constexpr char kUnload[] = "launchctl unload /tmp/agent.plist 2>&1";
constexpr char kList[] = "launchctl list test.agent 2>/dev/null";

/// An agent whose program writes its process number to /tmp/started and then does as told.
void writeAgent(const std::string& then, bool onDemand = false) {
    write(kPlist, R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
    <key>Label</key><string>test.agent</string>
    <key>Nice</key><integer>-18</integer>
    <key>OnDemand</key>)" +
                      std::string(onDemand ? "<true/>" : "<false/>") +
                      R"(
    <key>ProgramArguments</key><array><string>/bin/sh</string><string>-c</string>
        <string>echo $$ &gt;&gt; /tmp/started; )" +
                      then + R"(</string></array>
    <key>RunAtLoad</key><true/>
</dict></plist>)");
}

long starts() {
    const std::string text = read("/tmp/started");
    return std::count(text.begin(), text.end(), '\n');
}

bool isAlive(int pid) { return kill(pid, 0) == 0; }

TEST(Launchctl, LoadsListsAndUnloads) {
    writeAgent("exec sleep 60");
    EXPECT_NE(run(kList).status, 0);
    EXPECT_EQ(run(kLoad).status, 0);
    ASSERT_TRUE(eventually([] { return starts() == 1; }));
    const int pid = std::stoi(read("/tmp/started"));
    const Outcome listed = run(kList);
    EXPECT_EQ(listed.status, 0);
    EXPECT_NE(listed.output.find("\"Label\" = \"test.agent\""), std::string::npos);
    EXPECT_NE(listed.output.find("\"PID\" = " + std::to_string(pid) + ";"), std::string::npos);
    EXPECT_EQ(run(kUnload).status, 0);
    EXPECT_FALSE(isAlive(pid));
    EXPECT_NE(run(kList).status, 0);
    EXPECT_EQ(run(kList).output, "");
}

TEST(Launchctl, RefusesASecondCopy) {
    writeAgent("exec sleep 60");
    ASSERT_EQ(run("launchctl load -S Aqua /tmp/agent.plist").status, 0);
    const Outcome again = run(kLoad);
    EXPECT_NE(again.status, 0);
    EXPECT_NE(again.output.find("already loaded"), std::string::npos);
    EXPECT_TRUE(eventually([] { return starts() == 1; }));
}

TEST(Launchctl, LoadsOnceWhenAskedSeveralTimesAtOnce) {
    writeAgent("exec sleep 60");
    run("for i in 1 2 3 4 5 6; do launchctl load /tmp/agent.plist 2>/dev/null && echo $i >> "
        "/tmp/won & "
        "done; wait");
    const std::string won = read("/tmp/won");
    EXPECT_EQ(std::count(won.begin(), won.end(), '\n'), 1);
    EXPECT_TRUE(eventually([] { return starts() == 1; }));
}

TEST(Launchctl, KeepsAnAgentAliveThatIsNotOnDemand) {
    writeAgent("exit 3");
    ASSERT_EQ(run(kLoad).status, 0);
    EXPECT_TRUE(eventually([] { return starts() >= 3; }));
    EXPECT_LE(starts(), 5);  // a start a second, not a storm
    EXPECT_NE(run(kList).output.find("\"LastExitStatus\" = 768;"), std::string::npos);
    ASSERT_EQ(run(kUnload).status, 0);
    const long before = starts();
    run("sleep 1.5");
    EXPECT_EQ(starts(), before);
}

TEST(Launchctl, LeavesAnAgentOnDemandEnded) {
    writeAgent("exit 0", true);
    ASSERT_EQ(run(kLoad).status, 0);
    ASSERT_TRUE(eventually([] { return starts() == 1; }));
    run("sleep 1.5");
    EXPECT_EQ(starts(), 1);
    EXPECT_EQ(run(kList).status, 0);
    EXPECT_EQ(run(kList).output.find("\"PID\""), std::string::npos);
}

TEST(Launchctl, KillsAProgramThatDoesNotListen) {
    writeAgent("trap '' TERM; while :; do sleep 1; done");
    ASSERT_EQ(run(kLoad).status, 0);
    ASSERT_TRUE(eventually([] { return starts() == 1; }));
    run("sleep 0.2");  // the shell sets its trap just after it has written its number
    const int pid = std::stoi(read("/tmp/started"));
    EXPECT_EQ(run(kUnload).status, 0);
    EXPECT_FALSE(isAlive(pid));
}

TEST(Launchctl, ComplainsOnlyOnStandardError) {
    write("/tmp/broken.plist", "no property list");
    for (const char* command : {"load /tmp/missing.plist", "load /tmp/broken.plist",
                                "unload /tmp/missing.plist", "list nobody", "dance"}) {
        const Outcome quiet = run(std::string("launchctl ") + command + " 2>/dev/null");
        EXPECT_NE(quiet.status, 0) << command;
        EXPECT_EQ(quiet.output, "") << command;
        EXPECT_NE(run(std::string("launchctl ") + command + " 2>&1").output, "") << command;
    }
}

TEST(Launchctl, DoesAsItsModeSays) {
    writeAgent("exec sleep 60");
    write("/run/launchd/mode", "silent");
    EXPECT_EQ(run(kLoad).status, 0);
    EXPECT_NE(run(kList).status, 0);
    write("/run/launchd/mode", "noisy");
    EXPECT_NE(run(kList).output, "");
    write("/run/launchd/mode", "failing");
    EXPECT_NE(run(kLoad).status, 0);
    write("/run/launchd/mode", "no-aqua");
    EXPECT_NE(run("launchctl load -S Aqua /tmp/agent.plist 2>/dev/null").status, 0);
    EXPECT_EQ(starts(), 0);
    EXPECT_EQ(run(kLoad).status, 0);
    EXPECT_TRUE(eventually([] { return starts() == 1; }));
}

TEST(Launchctl, RecordsEveryCall) {
    run("launchctl list a 2>/dev/null; launchctl load -S Aqua /tmp/no.plist 2>/dev/null");
    EXPECT_EQ(read("/run/launchd/calls"), "list a\nload -S Aqua /tmp/no.plist\n");
}

}  // namespace

// The sandbox from inside: nobody outside can be reached or changed, and the product meets a
// machine that has never seen it.
#include <gtest/gtest.h>

#include <string>

#include "harness/harness.h"
#include "velnor_deployment.h"

namespace {

TEST(Sandbox, IsAMachineOfItsOwn) {
    const std::string host = velnor::deployment::kConfigurationHost;
    const std::pair<std::string, const char*> rows[] = {
        {"tail -n +3 /proc/net/dev | cut -d: -f1 | tr -d ' '", "lo\n"},
        {"getent hosts " + host.substr(0, host.find(':')) + " | cut -d' ' -f1", "127.0.0.1\n"},
        {"getent hosts elsewhere.example || echo unknown", "unknown\n"},
        {"id -un; id -u; grep CapEff /proc/self/status",
         "rehearsal\n1000\nCapEff:\t0000000000000000\n"},
        {"ls -A /Applications; ls ~; ls ~/Library; command -v launchctl",
         "Library\n/bin/launchctl\n"},
        {"mkdir -m 0777 /Applications/Velnor && touch /Applications/Velnor/x ~/x && echo written",
         "written\n"},
        {"touch /x '" CHECKOUT "/x' /usr/x /etc/x 2>/dev/null; ls /x '" CHECKOUT
         "/x' /usr/x /etc/x 2>/dev/null",
         ""},
    };
    for (const auto& [command, output] : rows) {
        EXPECT_EQ(harness::run(command).output, output) << command;
    }
}

}  // namespace

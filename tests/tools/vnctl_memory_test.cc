// vnctl without memory, at every allocation since main() began: it does what it does otherwise, or
// says so and fails, in order.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <set>
#include <sstream>

#include "api/scripted_client.h"
#include "harness/harness.h"

namespace {

// What a run ends with in order, and the status. The library has one code for all that keeps it
// from the client.
const std::set<std::pair<std::string, int>> kInOrder = {
    {"vnctl: out of memory\n", 1},
    {"{\"code\":4,\"error\":\"out of memory\"}\n", 1},
    {"{\"code\":4,\"error\":\"Insufficient Memory\"}\n", 1},
    {"{\"code\":2,\"error\":\"Not Installed. The client does not run. 'vnctl install' installs it "
     "and starts it.\"}\n",
     3},
};

TEST(VnctlMemory, EveryFailedAllocationEndsInOrder) {
    harness::writeFile("/tmp/film.mov", "content");
    for (const auto& [arguments, status] : {std::pair("no-subcommand-of-such-a-length", 2),
                                            {"delete --json --keep-file http://h/x", 0}}) {
        const test::ScriptedClient client(test::ScriptedClient::Replies{
            {"getFileAttributes", {R"({"status":"COMPLETE","path":"/tmp/film.mov","size":7})"}},
            {"deleteFile", {R"({"http://h/x":null})"}}});
        std::istringstream said(
            harness::run(std::string("LD_PRELOAD='" FAILING_ALLOCATIONS "' '" VNCTL "' ") +
                         arguments + " 2>&1")
                .output);
        // The last run is whole.
        std::vector<std::pair<std::string, int>> runs;
        std::string output;
        for (int ended = 0; std::getline(said, output, '\x1e') && said >> ended; said.get()) {
            runs.emplace_back(output, WIFEXITED(ended) ? WEXITSTATUS(ended) : -1);
        }
        ASSERT_GT(runs.size(), 30U) << arguments;
        EXPECT_EQ(runs.back().second, status) << runs.back().first;
        for (const auto& run : runs) {
            EXPECT_TRUE(run == runs.back() || kInOrder.contains(run))
                << arguments << ", run " << &run - runs.data() << ": " << run.second << '\n'
                << run.first;
        }
    }
    EXPECT_EQ(harness::run("cd /tmp; cat film.mov; ls -d film*").output, "contentfilm.mov\n");
}

}  // namespace

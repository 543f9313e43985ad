// vnctl without memory, at every allocation since its main() began, for that one or from then on:
// it does what it does otherwise, or says so and fails, in order.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <set>
#include <vector>

#include "api/scripted_client.h"
#include "harness/harness.h"

extern "C" {
int __real_main(int argc, char** argv);  // vnctl's
int __wrap_main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
}

namespace {

using Ending = std::pair<std::string, int>;  // what was said, and the status

// Ends that are in order. The library has one code for all that keeps it from the client.
const std::set<Ending> kInOrder = {
    {"vnctl: out of memory\n", 1},
    {"{\"code\":4,\"error\":\"out of memory\"}\n", 1},
    {"{\"code\":4,\"error\":\"Insufficient Memory\"}\n", 1},
    {"{\"code\":2,\"error\":\"Not Installed. The client does not run. 'vnctl install' installs it "
     "and starts it.\"}\n",
     3},
};

// In a process of its own, which leaves a file once it lacks nothing.
Ending runWithout(size_t number, bool lasts, std::vector<const char*> arguments) {
    const pid_t child = fork();
    if (child == 0) {
        dup2(creat("/tmp/said", 0600), STDOUT_FILENO);
        dup2(STDOUT_FILENO, STDERR_FILENO);
        harness::failAllocation(number, lasts);
        const int status = __real_main(static_cast<int>(arguments.size()) - 1,
                                       const_cast<char**>(arguments.data()));
        if (!harness::hasFailedAllocation()) harness::writeFile("/tmp/whole", "");
        std::cout.flush();
        _exit(status);
    }
    int ended = 0;
    waitpid(child, &ended, 0);
    return {harness::readFile("/tmp/said"), WIFEXITED(ended) ? WEXITSTATUS(ended) : -1};
}

TEST(VnctlMemory, EveryFailedAllocationEndsInOrder) {
    const std::pair<std::vector<const char*>, int> rows[] = {
        {{"vnctl", "no-subcommand-of-such-a-length", nullptr}, 2},
        {{"vnctl", "delete", "--json", "--keep-file", "http://h/x", nullptr}, 0}};
    harness::writeFile("/tmp/film.mov", "content");
    for (const auto& [arguments, status] : rows) {
        const test::ScriptedClient client(test::ScriptedClient::Replies{
            {"getFileAttributes", {R"({"status":"COMPLETE","path":"/tmp/film.mov","size":7})"}},
            {"deleteFile", {R"({"http://h/x":null})"}}});
        std::vector<Ending> all;
        do {
            all.push_back(runWithout(all.size() / 2 + 1, all.size() % 2 != 0, arguments));
        } while (!std::filesystem::remove("/tmp/whole"));
        ASSERT_GT(all.size(), 30U) << arguments[1];
        EXPECT_EQ(all.back().second, status) << all.back().first;
        for (const Ending& ending : all) {
            EXPECT_TRUE(ending == all.back() || kInOrder.contains(ending))
                << arguments[1] << ", run " << &ending - all.data() << ": " << ending.second << '\n'
                << ending.first;
        }
    }
    EXPECT_EQ(harness::run("cd /tmp; cat film.mov; ls -d film*").output, "contentfilm.mov\n");
}

}  // namespace

// The shells' completions of vnctl offer what its help lists, no more and no less.
#include <gtest/gtest.h>

#include <sstream>

#include "harness/harness.h"
#include "tools/client_world.h"

namespace {

// What the Perl expression finds in the output, in alphabetical order.
std::string wordsOf(const std::string& command, const std::string& expression) {
    return harness::run(command + " | grep -oP -e '" + expression + "' | sort -u").output;
}

// What bash offers behind `line`, whose last word is being typed.
std::string offeredByBash(const std::string& line) {
    return wordsOf("bash -c 'source \"" COMPLETION_FOLDER "/vnctl.bash\"; COMP_WORDS=(" + line +
                       "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vnctl; "
                       "printf \"%s\\n\" \"${COMPREPLY[@]}\"'",
                   ".+");
}

const std::string kOption = R"(^  (-\w,)?\K--[a-z0-9-]+)";

TEST(VnctlCompletion, OffersWhatTheHelpLists) {
    const std::string zsh = "cat '" COMPLETION_FOLDER "/_vnctl'";
    const std::string help = "'" VNCTL "' --help | sed '1,/^Subcommands:/d'";
    const std::string subcommands = wordsOf(help, R"(^  \K[a-z-]+)");
    EXPECT_EQ(wordsOf(zsh, R"(^        .\K[a-z-]+(?=:))"), subcommands);
    std::istringstream each(subcommands);
    std::string all = "{ echo '  --version'";
    for (std::string subcommand; each >> subcommand;) {
        const std::string options = "'" VNCTL "' " + subcommand + " --help";
        EXPECT_EQ(offeredByBash("vnctl " + subcommand + " --"), wordsOf(options, kOption))
            << subcommand;
        all += "; " + options;
    }
    EXPECT_EQ(wordsOf(zsh, R"(--[a-z0-9-]+(?=(\}.)?\[))"), wordsOf(all + "; }", kOption));
    harness::writeFile("/tmp/a file", "");
    const std::pair<const char*, std::string> rows[] = {
        {"vnctl \"\"", subcommands},
        {"vnctl un", "uninstall\n"},
        {"vnctl --", "--cid\n--help\n--json\n--quiet\n--version\n"},
        {"vnctl download --path \"/tmp/a fi\"", "/tmp/a file\n"},
        {"vnctl download --speed \"\"", ""},
    };
    for (const auto& [line, offered] : rows) EXPECT_EQ(offeredByBash(line), offered) << line;
}

}  // namespace

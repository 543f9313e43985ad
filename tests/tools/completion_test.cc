// The shells' completions of vnctl offer what its help lists, no more and no less.
#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "harness/harness.h"
#include "tools/client_world.h"

namespace {

using Words = std::set<std::string>;

Words wordsOf(const std::string& text, const std::string& pattern) {
    const std::regex word(pattern);
    Words words;
    for (std::sregex_iterator match(text.begin(), text.end(), word), end; match != end; ++match) {
        words.insert(match->str(1));
    }
    return words;
}

// What bash offers behind `line`, whose last word is being typed.
Words offeredByBash(const std::string& line) {
    const std::string script = "source \"" COMPLETION_FOLDER "/vnctl.bash\"; COMP_WORDS=(" + line +
                               "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vnctl; "
                               "printf \"%s\\n\" \"${COMPREPLY[@]}\"";
    return wordsOf(harness::run("bash -c '" + script + "'").output, R"((\S+))");
}

TEST(VnctlCompletion, OffersWhatTheHelpLists) {
    const std::string zsh = harness::readFile(COMPLETION_FOLDER "/_vnctl");
    const std::string help = vnctl("--help").output;
    const Words subcommands = wordsOf(help.substr(help.find("Subcommands:")), R"(\n  ([a-z-]+))");
    EXPECT_EQ(subcommands.size(), 8U);
    EXPECT_EQ(wordsOf(zsh, "\n        '([a-z-]+):"), subcommands);
    Words all;
    for (const std::string& subcommand : subcommands) {
        const Words options =
            wordsOf(vnctl(subcommand + " --help").output, R"(\n  (?:-h,)?(--[a-z0-9-]+))");
        EXPECT_TRUE(options.contains("--help")) << subcommand;
        EXPECT_EQ(offeredByBash("vnctl " + subcommand + " --"), options) << subcommand;
        all.insert(options.begin(), options.end());
    }
    all.insert("--version");
    EXPECT_EQ(wordsOf(zsh, R"((--[a-z0-9-]+)\[)"), all);
    harness::writeFile("/tmp/a file", "");
    const std::pair<const char*, Words> rows[] = {
        {"vnctl \"\"", subcommands},
        {"vnctl un", {"uninstall"}},
        {"vnctl --", {"--help", "--version"}},
        {"vnctl download --path \"/tmp/a fi\"", {"/tmp/a", "file"}},
        {"vnctl download --speed \"\"", {}},
    };
    for (const auto& [line, offered] : rows) EXPECT_EQ(offeredByBash(line), offered) << line;
}

}  // namespace

// The shells' completions of vnctl offer what its help lists, no more and no less.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "harness/files.h"
#include "harness/shell.h"

namespace {

using Words = std::set<std::string>;

const std::string kSubcommands[] = {"install",    "uninstall", "status", "download",
                                    "attributes", "pause",     "delete", "run-tasks"};

Words wordsOf(const std::string& text, const char* pattern) {
    const std::regex word(pattern);
    Words words;
    for (std::sregex_iterator match(text.begin(), text.end(), word), end; match != end; ++match) {
        words.insert(match->str(1));
    }
    return words;
}

std::string helpOf(const std::string& subcommand) {
    return harness::run("'" VNCTL "' " + subcommand + " --help").output;
}

// The options that stand at the beginning of a line of the help.
Words optionsOf(const std::string& subcommand) {
    return wordsOf(helpOf(subcommand), R"(\n  (?:-h,)?(--[a-z0-9-]+))");
}

Words subcommandsInHelp() {
    const std::string help = helpOf("");
    return wordsOf(help.substr(help.find("Subcommands:")), R"(\n  ([a-z-]+))");
}

// What bash offers behind `line`, whose last word is being typed.
Words offeredByBash(const std::string& line) {
    const std::string output =
        harness::run("bash -c 'source \"" COMPLETION_FOLDER "/vnctl.bash\"; COMP_WORDS=(" + line +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vnctl; "
                     "printf \"%s\\n\" \"${COMPREPLY[@]}\"'")
            .output;
    return wordsOf(output, R"((\S+))");
}

// The part of the zsh function that is about one subcommand, with the options that several share.
std::string zshPartOf(const std::string& subcommand) {
    const std::string text = harness::readFile(COMPLETION_FOLDER "/_vnctl");
    const std::regex label("\n        (?:[a-z-]+ \\| )*" + subcommand + "(?: \\| [a-z-]+)*\\)");
    std::smatch found;
    if (!std::regex_search(text, found, label)) return "";
    std::string part = found.suffix().str();
    part = part.substr(0, part.find(";;"));
    if (part.find("$common") == std::string::npos) return part;
    const size_t common = text.find("common=(");
    return part + text.substr(common, text.find("\n    )", common) - common);
}

TEST(VnctlCompletion, KnowsAllSubcommands) {
    const Words expected(std::begin(kSubcommands), std::end(kSubcommands));
    EXPECT_EQ(subcommandsInHelp(), expected);
    EXPECT_EQ(offeredByBash("vnctl \"\""), expected);
    EXPECT_EQ(offeredByBash("vnctl un"), Words{"uninstall"});
    const std::string zsh = harness::readFile(COMPLETION_FOLDER "/_vnctl");
    EXPECT_EQ(wordsOf(zsh, "\n        '([a-z-]+):"), expected);
}

TEST(VnctlCompletion, KnowsAllOptions) {
    for (const std::string& subcommand : kSubcommands) {
        const Words options = optionsOf(subcommand);
        EXPECT_TRUE(options.contains("--help")) << subcommand;
        EXPECT_EQ(offeredByBash("vnctl " + subcommand + " --"), options) << subcommand;
        Words inZsh = wordsOf(zshPartOf(subcommand), R"('(--[a-z0-9-]+)\[)");
        EXPECT_EQ(inZsh, options) << subcommand;
    }
    EXPECT_EQ(offeredByBash("vnctl --"), optionsOf(""));
    harness::writeFile("/tmp/a file", "");
    EXPECT_EQ(offeredByBash("vnctl download --path \"/tmp/a fi\""), (Words{"/tmp/a", "file"}));
    EXPECT_EQ(offeredByBash("vnctl download --speed \"\""), Words{});
}

}  // namespace

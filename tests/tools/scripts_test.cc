// The scripts: the shells' completions of vnctl offer what its help lists, no more and no less; and
// tools/install_packages, with stand-ins for dpkg-query, sudo, dpkg-deb and apt-get.
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

void addProgram(const std::string& name, const std::string& script) {
    harness::writeFile("/tmp/bin/" + name, "#!/bin/sh\n" + script);
    harness::run("chmod 700 /tmp/bin/" + name);
}

// It says this at last, and ends with this status.
void expectEnd(const std::string& end) {
    const std::string said =
        harness::run("PATH=/tmp/bin bash '" INSTALL_PACKAGES "' /tmp/list 2>&1 </dev/null; echo $?")
            .output;
    EXPECT_TRUE(said.ends_with(end)) << said;
}

// On a system with the package bash. apt-get knows the package nginx once /tmp/lists is there,
// which root's "update" makes.
TEST(InstallPackages, InstallsOrUnpacksWhatIsMissingOrNamesIt) {
    harness::run(
        "mkdir /tmp/bin; cd /usr/bin; "
        "for i in bash cat dirname env grep mkdir mv rm sed; do ln -s $PWD/$i /tmp/bin; done");
    addProgram("dpkg-query", "echo 'bash installed'; echo 'perl not-installed'; exit 1\n");
    addProgram("dpkg-deb", "mkdir \"$3\" && cat \"$2\" >\"$3/file\"\n");
    addProgram("apt-get",
               "echo \"$DEBIAN_FRONTEND $*\" >>/tmp/calls; case $1 in\n"
               "update) test ! -e /tmp/offline && : >/tmp/lists;;\n"
               "download) test -e /tmp/lists && echo content >nginx_1_all.deb;; esac\n");
    harness::writeFile("/tmp/list", "bash unpacked\nnginx unpacked  # a server\n");
    expectEnd("\n  apt-get update\n0\n");  // only root may
    harness::writeFile("/tmp/list",
                       "# What for\ncmake\n\nbash    # a shell\nperl\nnginx unpacked\n");
    const std::string advice =
        "\nRun this as root, then try again:\n  apt-get install cmake perl\n1\n";
    expectEnd("there is no sudo here, and only root can install them." + advice);
    addProgram("sudo", "test \"$1\" = -n && shift && exec \"$@\"\n");
    harness::run("touch /tmp/offline");
    expectEnd("could not be installed." + advice);
    // What a run that was interrupted has left.
    harness::run("rm /tmp/offline /tmp/calls; mkdir -p /tmp/build/packages/.nginx/root/old");
    expectEnd("it is not installed.\n0\n");
    EXPECT_TRUE(harness::readFile("/tmp/calls")
                    .starts_with("noninteractive update -qq\nnoninteractive install -qq -y "
                                 "--no-install-recommends -o Dpkg::Use-Pty=0 "
                                 "-o DPkg::Lock::Timeout=300 cmake perl\n"));
    EXPECT_EQ(
        harness::run("cd /tmp/build/packages; find . -print -exec cat '{}' ';' 2>/dev/null").output,
        ".\n./nginx\n./nginx/file\ncontent\n");
}

}  // namespace

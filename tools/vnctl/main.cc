// vnctl: the client API from a terminal.
#include <csignal>
#include <memory>

#include "program/command_line.h"
#include "program/help.h"
#include "vnctl/commands.h"

namespace {

program::Body setUp(CLI::App& app) {
    app.require_subcommand(1);
    const auto chosen = std::make_shared<program::Body>();
    vnctl::addInstall(app, *chosen);
    vnctl::addUninstall(app, *chosen);
    vnctl::addStatus(app, *chosen);
    vnctl::addDownload(app, *chosen);
    vnctl::addAttributes(app, *chosen);
    vnctl::addPause(app, *chosen);
    vnctl::addDelete(app, *chosen);
    vnctl::addRunTasks(app, *chosen);
    vnctl::addDiagnose(app, *chosen);
    program::addHelp(app, *chosen);
    const auto common = std::make_shared<vnctl::Request>();
    vnctl::addCommonOptions(app, *common);
    app.footer(
        "Exit status: 0 done, 2 wrong command line; 'vnctl help SUBCOMMAND' tells the others.");
    return [chosen, common] { return (*chosen)(); };
}

}  // namespace

int main(int argc, char** argv) {
    // As the installer application does: a peer that hangs up is an error and no reason to die.
    std::signal(SIGPIPE, SIG_IGN);
    return program::run("vnctl", "Drives the Velnor Corvane client of the current user.", setUp,
                        argc, argv);
}

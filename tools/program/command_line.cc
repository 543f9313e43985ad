// The frame around a command-line program.
#include "program/command_line.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace program {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

void explainExitStatus(CLI::App& app) {
    if (app.get_footer().empty()) {
        app.footer("Exit status: 0 done, 1 failed, 2 wrong command line.");
    }
    for (CLI::App* command : app.get_subcommands(nullptr)) explainExitStatus(*command);
}

// An argument that nobody expects is told before what is missing: it may stand in its place.
std::string complaint(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> unexpected = app.remaining(true);
    return unexpected.empty() ? error.what() : "'" + unexpected.front() + "' was not expected";
}

int stop(const char* name, const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help and the like
    std::cerr << name << ": " << complaint(app, error)
              << "\nRun with --help for more information.\n";
    return kWrongUsage;
}

}  // namespace

int run(const char* name, const char* description, SetUp setUp, int argc, char** argv) try {
    CLI::App app(description, name);
    const Body body = setUp(app);
    explainExitStatus(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return stop(name, app, error);
    }
    return body();
} catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return kFailed;
}

void finishOutput() {
    if (std::cout.flush() && std::fflush(stdout) == 0) return;
    throw std::system_error(errno, std::generic_category(), "cannot write the output");
}

}  // namespace program

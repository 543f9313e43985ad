// The frame around a command-line program.
#include "program/command_line.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <system_error>

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

}  // namespace

int run(const char* name, const char* description, SetUp setUp, int argc, char** argv) try {
    CLI::App app(description, name);
    const Body body = setUp(app);
    explainExitStatus(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
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

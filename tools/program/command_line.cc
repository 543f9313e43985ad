#include "program/command_line.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
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

const char* g_name = "";
bool g_hasLackedMemory = false;

int sayOutOfMemory() {
    std::cerr << g_name << ": " << kOutOfMemory << '\n';
    return kFailed;
}

void noteLackOfMemory() {
    g_hasLackedMemory = true;
    throw std::bad_alloc();
}

// CLI11 looks names up in functions that must not throw, and copies them there.
[[noreturn]] void onTerminate() {
    const std::exception_ptr thrown = std::current_exception();
    try {
        if (thrown) std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        _exit(sayOutOfMemory());
    } catch (...) {
        std::abort();
    }
    std::abort();
}

int stop(const CLI::App& app, const CLI::ParseError& error) {
    const bool isWrong = error.get_exit_code() != 0;  // and not --help or the like
    std::ostringstream text;
    if (isWrong) {
        text << g_name << ": " << complaint(app, error)
             << "\nRun with --help for more information.\n";
    } else {
        app.exit(error, text, text);
    }
    // A stream leaves out what it has no memory for, and CLI11 does not look.
    if (g_hasLackedMemory) throw std::bad_alloc();
    (isWrong ? std::cerr : std::cout) << text.str();
    return isWrong ? kWrongUsage : 0;
}

}  // namespace

int run(const char* name, const char* description, SetUp setUp, int argc, char** argv) try {
    g_name = name;
    std::set_new_handler(noteLackOfMemory);
    std::set_terminate(onTerminate);
    CLI::App app(description, name);
    const Body body = setUp(app);
    explainExitStatus(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return stop(app, error);
    }
    return body();
} catch (const std::bad_alloc&) {
    return sayOutOfMemory();
} catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << '\n';
    return kFailed;
}

void finishOutput() {
    if (std::cout.flush() && std::fflush(stdout) == 0) return;
    throw std::system_error(errno, std::generic_category(), "cannot write the output");
}

}  // namespace program

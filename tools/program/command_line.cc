#include "program/command_line.h"

#include <fcntl.h>
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

#include "program/help.h"

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
    if (unexpected.empty()) return error.what();
    const std::vector<CLI::App*> chosen = app.get_subcommands();
    const std::string meant = closest(chosen.empty() ? app : *chosen.front(), unexpected.front());
    return "'" + unexpected.front() + "' was not expected" +
           (meant.empty() ? "" : "; did you mean '" + meant + "'?");
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
    if (isWrong) {
        std::cerr << text.str();
    } else {
        std::cout << wrapped(text.str(), terminalColumns(STDOUT_FILENO));
    }
    return isWrong ? kWrongUsage : 0;
}

// Where the caller has closed one of the three, the next file or socket that is opened would take
// its place and get what is meant for the user. What stands there now fails when it is used.
void occupyStandardFiles() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
        if (open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) return;
    }
}

// A reader that has had enough, such as head(1), wants no complaint, and what was done is done.
int finish(int status) try {
    finishOutput();
    return status;
} catch (const std::system_error& error) {
    if (error.code() == std::errc::broken_pipe) return status;
    throw;
}

int parseAndRun(CLI::App& app, const Body& body, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return finish(stop(app, error));
    }
    return finish(body());
}

}  // namespace

int run(const char* name, const char* description, SetUp setUp, int argc, char** argv) try {
    g_name = name;
    occupyStandardFiles();
    std::set_new_handler(noteLackOfMemory);
    std::set_terminate(onTerminate);
    CLI::App app(description, name);
    app.set_version_flag("--version", std::string(name) + " " VELNOR_VERSION, "Print the version");
    const Body body = setUp(app);
    explainExitStatus(app);
    return parseAndRun(app, body, argc, argv);
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

// Starting, looking and pressing.
#include "app/screen.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "harness/files.h"
#include "harness/shell.h"

using harness::eventually;
using harness::run;

Screen::Screen() {
    pids_ = run("Xvfb -displayfd 1 -screen 0 1024x768x24 -nolisten tcp -noreset"
                " </dev/null >/tmp/screen 2>/dev/null & echo $!")
                .output;
    EXPECT_TRUE(eventually([] { return harness::readFile("/tmp/screen").ends_with('\n'); }));
    setenv("DISPLAY", (":" + std::to_string(std::stoi(harness::readFile("/tmp/screen")))).c_str(),
           1);
    pids_ += run("openbox --sm-disable </dev/null >/dev/null 2>&1 & echo $!").output;
    EXPECT_TRUE(eventually([] { return run("xdotool get_num_desktops 2>/dev/null").status == 0; }));
}

Screen::~Screen() {
    run("kill $(echo '" + pids_ + "')");
    unsetenv("DISPLAY");
}

std::vector<std::string> Screen::windows() {
    std::istringstream lines(
        run("xdotool search --onlyvisible --classname '^Installer$' 2>/dev/null | sort -n").output);
    std::vector<std::string> ids;
    for (std::string id; std::getline(lines, id);) ids.push_back(id);
    return ids;
}

std::string Screen::window(size_t count) {
    std::vector<std::string> ids;
    eventually([&] { return (ids = windows()).size() == count; });
    return ids.size() == count ? ids.back() : "";
}

std::string Screen::pixels(const std::string& window) {
    return run("import -silent -window " + window + " -depth 8 rgb:-").output;
}

void Screen::press(const std::string& what) { EXPECT_EQ(run("xdotool " + what).status, 0) << what; }

Application::Application(const std::string& program, std::vector<std::string> arguments)
    : pid_(fork()) {
    if (pid_ != 0) return;
    arguments.insert(arguments.begin(), program);
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    const int output = open("/tmp/said", O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    // Classes of Objective-C are never released (sanitizer_options.cc).
    setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
    execv(program.c_str(), words.data());
    _exit(127);
}

int Application::status(int seconds) {
    int status = 0;
    for (int waits = 0; waits < seconds * 100; ++waits) {
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(pid_, SIGKILL);
    waitpid(pid_, &status, 0);
    return 124;
}

std::string Application::said() { return harness::readFile("/tmp/said"); }

// Running commands from a test, as a user would type them.
#ifndef TESTS_SANDBOX_SHELL_H
#define TESTS_SANDBOX_SHELL_H

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

struct Outcome {
    int status = -1;  // as the shell's $?
    std::string output;
};

/// Runs `command`, collecting what it writes to its standard output.
inline Outcome run(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) outcome.output += static_cast<char>(c);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

inline std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// Asks every 10 ms, for at most five seconds.
inline bool eventually(const std::function<bool()>& holds) {
    for (int i = 0; i < 500; ++i) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

#endif

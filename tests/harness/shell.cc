// Commands and waits.
#include "harness/shell.h"

#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <thread>

namespace harness {

CommandResult run(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    std::string output;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output};
}

bool eventually(const std::function<bool()>& holds) {
    for (int i = 0; i < 6000; ++i) {
        if (holds()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace harness

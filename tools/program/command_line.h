// What every command-line program of this project does with its arguments and its failures.
#ifndef VELNOR_TOOLS_PROGRAM_COMMAND_LINE_H
#define VELNOR_TOOLS_PROGRAM_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <functional>

namespace program {

/// What a program says that has no memory left.
inline constexpr char kOutOfMemory[] = "out of memory";

/// Does the work once the command line is parsed; returns the exit status.
using Body = std::function<int()>;

/// Adds a program's options to `app` and returns what to do with them.
using SetUp = Body (*)(CLI::App& app);

/// Runs a program. Returns the exit status: the body's; 1 when anything throws or what was printed
/// got lost, with the exception's message, or kOutOfMemory, on standard error behind the program's
/// name, but for what the reader of a pipe did not stay for; 2 for a command line that is wrong,
/// with the reason behind the name and advice; 0 for --version, and for --help, to which the exit
/// statuses are added unless it ends with a footer of its own.
int run(const char* name, const char* description, SetUp setUp, int argc, char** argv);

/// Flushes standard output, which is done at the end in any case. Throws std::system_error when
/// something that was printed got lost.
void finishOutput();

}  // namespace program

#endif

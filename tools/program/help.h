// What a program says about its command line: help that fits the terminal, and a guess at what a
// mistyped word was meant to be.
#ifndef VELNOR_TOOLS_PROGRAM_HELP_H
#define VELNOR_TOOLS_PROGRAM_HELP_H

#include <string>

#include "program/command_line.h"

namespace program {

/// Columns of the terminal at the file descriptor `fd`; 80 where there is none, or where it does
/// not say.
size_t terminalColumns(int fd);

/// Adds the subcommand "help" to `app`: with the name of another, what --help says behind that.
/// `app` must outlive what then is `chosen`.
void addHelp(CLI::App& app, Body& chosen);

/// `text` of a help in lines of at most `columns`, as far as its words allow; what goes on in
/// another line stands below the beginning of its description.
std::string wrapped(const std::string& text, size_t columns);

/// The subcommand, or the option where `word` begins with "-", of `app` that is spelt almost like
/// `word`; empty when none is.
std::string closest(const CLI::App& app, const std::string& word);

}  // namespace program

#endif

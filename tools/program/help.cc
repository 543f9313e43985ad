#include "program/help.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <numeric>
#include <sstream>
#include <vector>

namespace program {
namespace {

constexpr size_t kUsualColumns = 80;
// Two letters that changed places are two changes.
constexpr size_t kMostChanges = 2;

// Where a line goes on: below its description, or its text when it has none.
size_t indentOf(const std::string& line) {
    const size_t text = std::min(line.find_first_not_of(' '), line.size());
    const size_t gap = line.find("  ", text);
    if (gap == std::string::npos) return text;
    return std::min(line.find_first_not_of(' ', gap), line.size());
}

std::string wrappedLine(std::string line, size_t columns) {
    const size_t indent = indentOf(line);
    std::string result;
    while (line.size() > columns && indent < columns) {
        size_t end = line.rfind(' ', columns);
        if (end == std::string::npos || end <= indent) end = line.find(' ', columns);
        if (end == std::string::npos) break;
        result += line.substr(0, end) + '\n';
        line = std::string(indent, ' ') + line.substr(end + 1);
    }
    return result + line + '\n';
}

// How many letters have to be inserted, deleted or replaced (Levenshtein's distance).
size_t changes(const std::string& from, const std::string& to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const char letter : from) {
        size_t diagonal = row[0]++;
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t replaced = diagonal + (letter == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::vector<std::string> namesIn(const CLI::App& app, bool areOptions) {
    std::vector<std::string> names;
    if (areOptions) {
        for (const CLI::Option* option : app.get_options()) {
            for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        }
    } else {
        for (const CLI::App* command : app.get_subcommands(nullptr)) {
            names.push_back(command->get_name());
        }
    }
    return names;
}

std::string orMeant(const std::string& word) {
    return word.empty() ? "." : "; did you mean '" + word + "'?";
}

std::string checkSubcommand(const CLI::App& app, const std::string& name) {
    const auto isMeant = [&](const CLI::App* command) { return command->get_name() == name; };
    if (!app.get_subcommands(isMeant).empty()) return "";
    return "There is no subcommand '" + name + "'" + orMeant(closest(app, name));
}

int help(const CLI::App& app, const std::string& name) {
    const CLI::App& about = name.empty() ? app : *app.get_subcommand(name);
    const std::string called = name.empty() ? app.get_name() : app.get_name() + " " + name;
    // Not about.help(), which for the whole program is the help of the subcommand that was chosen.
    const std::string text =
        about.get_formatter()->make_help(&about, called, CLI::AppFormatMode::Normal);
    std::cout << wrapped(text, terminalColumns(STDOUT_FILENO));
    return 0;
}

}  // namespace

void addHelp(CLI::App& app, Body& chosen) {
    const auto name = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand("help", "Show this, or the help of a subcommand");
    command->add_option("SUBCOMMAND", *name, "The subcommand")
        ->type_name("")
        ->check([&app](const std::string& word) { return checkSubcommand(app, word); });
    command->callback(
        [&app, &chosen, name] { chosen = [&app, name] { return help(app, *name); }; });
}

size_t terminalColumns(int fd) {
    winsize size{};
    const bool known = ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return known ? size.ws_col : kUsualColumns;
}

std::string wrapped(const std::string& text, size_t columns) {
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);) result += wrappedLine(line, columns);
    return result;
}

std::string closest(const CLI::App& app, const std::string& word) {
    std::string best;
    size_t fewest = std::min(kMostChanges, word.size() / 2) + 1;
    for (const std::string& name : namesIn(app, word.starts_with('-'))) {
        const size_t count = changes(word, name);
        if (count >= fewest) continue;
        fewest = count;
        best = name;
    }
    return best;
}

}  // namespace program

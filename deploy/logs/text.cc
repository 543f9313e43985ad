#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <sstream>

#include "logs/report.h"
#include "program/help.h"
#include "program/text.h"

namespace logs {
namespace {

constexpr size_t kDays = 14;
constexpr size_t kRows = 10;
constexpr size_t kColumn = 11;
constexpr size_t kNarrowest = 20;

void print(const Row& row, size_t columns) {
    std::string before;
    for (const std::string& number : row.numbers) {
        before += std::string(kColumn - std::min(kColumn, number.size()), ' ') + number;
    }
    before += "  ";
    const size_t left = std::max(columns - std::min(columns, before.size()), kNarrowest);
    std::istringstream lines(program::wrapped(program::printable(row.text), left) +
                             program::wrapped(row.note, left));
    for (std::string line; std::getline(lines, line);) {
        std::cout << before << line << '\n';
        before.assign(before.size(), ' ');
    }
}

}  // namespace

void print(const Statistics& statistics) {
    const size_t columns = program::terminalColumns(STDOUT_FILENO);
    for (const Row& row : summary(statistics).rows) print(row, columns);
    for (const Table& table :
         {durations(statistics), days(statistics, kDays), releases(statistics, kRows),
          failures(statistics, kRows), unfinished(statistics, kRows)}) {
        if (table.rows.empty()) continue;
        std::cout << '\n';
        print(table.head, columns);
        for (const Row& row : table.rows) print(row, columns);
    }
}

}  // namespace logs

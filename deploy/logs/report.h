// What vn-logs says, in its three forms.
#ifndef VELNOR_DEPLOY_LOGS_REPORT_H
#define VELNOR_DEPLOY_LOGS_REPORT_H

#include <string>
#include <vector>

#include "logs/statistics.h"

namespace logs {

/// Numbers in columns, and behind them a text, which may have come from a log.
struct Row {
    std::vector<std::string> numbers;
    std::string text;
    std::string note = {};  // in a line of its own, or empty
};
struct Table {
    Row head;
    std::vector<Row> rows;
};

// The tables, without a row where nothing was counted.

/// How much of what there is; its head is empty.
Table summary(const Statistics& statistics);
Table durations(const Statistics& statistics);

/// `most` rows at most, and what else there is together.
Table days(const Statistics& statistics, size_t most);
Table releases(const Statistics& statistics, size_t most);
Table failures(const Statistics& statistics, size_t most);
Table unfinished(const Statistics& statistics, size_t most);

/// Which days of the statistics are shown: the last `most`, but none that is still to come. Clocks
/// may be wrong.
Tally::Selection lastDays(const Statistics& statistics, size_t most);

/// Writes the tables to standard output, as wide as its terminal.
void print(const Statistics& statistics);

/// The tables and two plots as one page of HTML that needs nothing else.
std::string page(const Statistics& statistics);

/// Writes an installation as one line of JSON to standard output. All texts are readable ones.
void printJSON(const Installation& installation, const std::string& machine,
               const std::string& file);

}  // namespace logs

#endif

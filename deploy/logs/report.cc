#include "logs/report.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace logs {
namespace {

using std::to_string;

constexpr std::array kColumns{Outcome::Succeeded, Outcome::Failed, Outcome::Unfinished};

std::string percentage(uint64_t part, uint64_t whole) {
    if (whole == 0) return "-";
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%.1f %%",
                  100.0 * static_cast<double>(part) / static_cast<double>(whole));
    return text.data();
}

Table byOutcome(const char* title, const Tally::Selection& selection, const char* whenEmpty) {
    Table table{{{}, title}, {}};
    for (const Outcome outcome : kColumns) table.head.numbers.emplace_back(nameOf(outcome));
    const auto add = [&table](const Count& count, const std::string& name) {
        Row& row = table.rows.emplace_back();
        for (const Outcome outcome : kColumns) row.numbers.push_back(to_string(count.of(outcome)));
        row.text = name;
    };
    for (const auto& [name, count] : selection.rows) add(count, name.empty() ? whenEmpty : name);
    if (selection.others.installations() > 0) add(selection.others, "others");
    return table;
}

Table byFrequency(const char* title, const Tally::Selection& selection, const char* whenEmpty) {
    Table table{{{"times", "machines"}, title}, {}};
    for (const auto& [name, count] : selection.rows) {
        table.rows.push_back({{to_string(count.installations()), to_string(count.machines)},
                              name.empty() ? whenEmpty : name,
                              "such as " + count.machine});
    }
    const uint64_t others = selection.others.installations();
    if (others > 0) table.rows.push_back({{to_string(others), ""}, "others"});
    return table;
}

}  // namespace

Table summary(const Statistics& statistics) {
    const uint64_t machines = statistics.machines, clients = statistics.machinesWithClient;
    const uint64_t installations = statistics.all.installations();
    Table table{{}, {}};
    const auto add = [&table](uint64_t count, const std::string& share, const char* text) {
        table.rows.push_back({{to_string(count), share}, text});
    };
    add(machines, "", "machines");
    add(clients, percentage(clients, machines), "of them have the client in the end");
    add(installations, "", "installations");
    for (const Outcome outcome : kColumns) {
        const uint64_t count = statistics.all.of(outcome);
        add(count, percentage(count, installations), nameOf(outcome));
    }
    add(statistics.all.of(Outcome::Joined), "", "times an application found the client running");
    const auto addUnlessNone = [&add](uint64_t count, const char* text) {
        if (count > 0) add(count, "", text);
    };
    addUnlessNone(statistics.cutLogs, "logs were cut off in the middle of a line");
    addUnlessNone(statistics.noLogs, "files were no logs");
    addUnlessNone(statistics.unreadable, "logs could not be read");
    return table;
}

Table durations(const Statistics& statistics) {
    Table table{{{"median", "95 %", "longest"}, "Seconds, of those that succeeded"}, {}};
    const auto add = [&table](const Durations& durations, const char* text) {
        if (durations.count() == 0) return;
        table.rows.push_back({{to_string(durations.quantile(0.5)),
                               to_string(durations.quantile(0.95)), to_string(durations.longest())},
                              text});
    };
    add(statistics.installation, "the installation");
    add(statistics.start, "and in it, the client's start");
    if (statistics.withoutDuration > 0) {
        table.rows.push_back({{"", "", to_string(statistics.withoutDuration)},
                              "more, whose clock was put back meanwhile"});
    }
    return table;
}

Tally::Selection lastDays(const Statistics& statistics, size_t most) {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    return statistics.days.lastUpTo(dateOf(now + std::chrono::days(1)), most);
}

Table days(const Statistics& statistics, size_t most) {
    return byOutcome("Day (UTC)", lastDays(statistics, most), "");
}

Table releases(const Statistics& statistics, size_t most) {
    return byOutcome("Release", statistics.releases.mostFrequent(most), "(did not get so far)");
}

Table failures(const Statistics& statistics, size_t most) {
    return byFrequency("Why they failed", statistics.failures.mostFrequent(most),
                       "(no error line)");
}

Table unfinished(const Statistics& statistics, size_t most) {
    return byFrequency("The last line of those that never finished",
                       statistics.unfinished.mostFrequent(most), "");
}

}  // namespace logs

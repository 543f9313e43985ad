#include "logs/plots.h"
#include "logs/report.h"

namespace logs {
namespace {

constexpr size_t kDays = 30;
constexpr size_t kRows = 30;

// Nothing in it is fetched or run, whatever a log says.
constexpr char kHead[] = R"(<!DOCTYPE html>
<html lang="en"><head><meta charset="utf-8"><title>The fleet</title>
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width"><style>
body { font: 15px/1.45 sans-serif; color: #222; max-width: 720px; margin: 2em auto; padding: 0 1em }
h1 { font-size: 1.6em; margin: 0 } h2 { font-size: 1.1em; margin: 1.6em 0 .4em }
div { display: flex; flex-wrap: wrap; gap: .8em 2em; margin: 1em 0 }
b { display: block; font-size: 1.5em } small { color: #666 }
table { border-collapse: collapse; width: 100%; margin: 1.6em 0 }
td, th { padding: .2em .8em .2em 0; vertical-align: top; text-align: left; overflow-wrap: anywhere }
th { border-bottom: 1px solid #bbb } tr + tr td { border-top: 1px solid #eee }
.n { text-align: right; white-space: nowrap; width: 6em }
svg { width: 100%; font-size: 12px; fill: #444 } .grid { stroke: #ddd }
text.x { text-anchor: middle } text.y { text-anchor: end }
.succeeded { fill: #4878a8 } .failed { fill: #c8502f } .unfinished { fill: #e3b341 }
.installation { fill: #4878a8; stroke: #4878a8 } .start { fill: #6b9a4b; stroke: #6b9a4b }
path.installation, path.start { fill: none; stroke-width: 2 }
</style></head><body><h1>The fleet</h1>
)";

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const bool isMarkup = c == '&' || c == '<' || c == '>' || c == '"';
        result += isMarkup ? "&#" + std::to_string(c) + ";" : std::string(1, c);
    }
    return result;
}

// `cell` is "td" or "th".
std::string html(const Row& row, const std::string& cell) {
    const std::string open = "<" + cell, close = "</" + cell + ">";
    std::string text = "<tr>";
    for (const std::string& number : row.numbers) {
        text.append(open).append(" class=\"n\">").append(number).append(close);
    }
    text.append(open).append(">").append(escaped(row.text));
    if (!row.note.empty()) text.append("<br><small>").append(escaped(row.note)).append("</small>");
    return text.append(close).append("</tr>\n");
}

std::string html(const Table& table) {
    if (table.rows.empty()) return "";
    std::string text = "<table>\n" + html(table.head, "th");
    for (const Row& row : table.rows) text += html(row, "td");
    return text + "</table>\n";
}

// The share where there is one, else the number.
std::string facts(const Table& table) {
    std::string text = "<div>\n";
    for (const Row& row : table.rows) {
        const std::string& share = row.numbers.back();
        text += "<span><b>" + (share.empty() ? row.numbers.front() : share) + "</b>" +
                escaped(row.text) + "</span>\n";
    }
    return text + "</div>\n";
}

}  // namespace

std::string page(const Statistics& statistics) {
    std::string text = kHead + facts(summary(statistics));
    const auto shown = lastDays(statistics, kDays).rows;
    if (!shown.empty()) text += "<h2>Outcomes per day</h2>\n" + plotDays(shown);
    if (statistics.installation.count() > 0) {
        text += "<h2>How long the ones that succeeded took</h2>\n" +
                plotDurations(statistics.installation, statistics.start);
    }
    for (const Table& table :
         {durations(statistics), failures(statistics, kRows), unfinished(statistics, kRows),
          releases(statistics, kRows), days(statistics, kDays)}) {
        text += html(table);
    }
    return text +
           "<small>Logs are sent by anyone: believe them no more than a letter.</small>\n"
           "</body></html>\n";
}

}  // namespace logs

// The two pictures of the page, as SVG.
#ifndef VELNOR_DEPLOY_LOGS_PLOTS_H
#define VELNOR_DEPLOY_LOGS_PLOTS_H

#include <string>
#include <vector>

#include "logs/statistics.h"

namespace logs {

/// A bar for each day from the first to the last one of `days`, 30 at most, in the colours of the
/// classes "succeeded", "failed" and "unfinished". `days` are in their order, and not none.
std::string plotDays(const std::vector<Tally::Row>& days);

/// Which share of the installations was done within how many seconds, and of the client's starts,
/// in the colours of the classes "installation" and "start".
std::string plotDurations(const Durations& installation, const Durations& start);

}  // namespace logs

#endif

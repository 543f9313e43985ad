// What many installations have in common, counted in memory that does not grow with their number.
#ifndef VELNOR_DEPLOY_LOGS_STATISTICS_H
#define VELNOR_DEPLOY_LOGS_STATISTICS_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "logs/installation.h"

namespace logs {

/// What was counted of one day, release or failure.
struct Count {
    std::array<uint64_t, kOutcomeNames.size()> byOutcome{};
    uint64_t machines = 0;
    std::string machine;  // the last one

    uint64_t of(Outcome outcome) const { return byOutcome.at(static_cast<size_t>(outcome)); }
    /// All but those that joined.
    uint64_t installations() const;
    void add(const Count& other);
};

/// Counts by name. Of more than kMost names the rarer ones are counted together from time to time,
/// so that a log full of made-up names does not displace what many machines tell.
class Tally {
  public:
    static constexpr size_t kMost = 2048;
    using Row = std::pair<std::string, Count>;
    struct Selection {
        std::vector<Row> rows;
        Count others;  // all that are not in a row
    };

    /// All installations of one machine have to come one after another.
    void add(const std::string& name, Outcome outcome, const std::string& machine);

    /// The `most` most frequent ones, beginning with the first of them.
    Selection mostFrequent(size_t most) const;

    /// The last `most` of those not behind `limit`, in the order of their names.
    Selection lastUpTo(const std::string& limit, size_t most) const;

  private:
    std::map<std::string, Count> counts_;
    Count others_;
};

/// Durations in seconds. What is read back is below 128 exact, and above at most 1 % off.
class Durations {
  public:
    void add(uint64_t seconds);
    uint64_t count() const { return count_; }
    uint64_t longest() const { return longest_; }

    /// What the part `share`, 0 to 1, of all durations does not exceed; 0 without any.
    uint64_t quantile(double share) const;

    /// Each duration that occurred, and which share does not exceed it.
    std::vector<std::pair<uint64_t, double>> shares() const;

  private:
    static constexpr unsigned kExactBits = 7;
    static constexpr size_t kSteps = size_t{1} << (kExactBits - 1);  // in each doubling
    static constexpr uint64_t kLongest = UINT32_MAX;
    static size_t bucketOf(uint64_t seconds);
    static uint64_t secondsOf(size_t bucket);

    std::array<uint64_t, kSteps*(32 - kExactBits + 2)> buckets_{};
    uint64_t count_ = 0;
    uint64_t longest_ = 0;
};

struct Statistics {
    void add(const Installation& told, const std::string& machine);

    /// Counts the machine by how the last one of its installations ended.
    void endMachine(Outcome last);

    uint64_t machines = 0;
    uint64_t machinesWithClient = 0;
    uint64_t withoutDuration = 0;  // succeeded, with a clock that was put back
    Count all;
    Tally days;
    Tally releases;
    Tally failures;
    Tally unfinished;  // by the last line
    Durations installation;
    Durations start;

    // Files: logs that end in the middle of a line, and what told nothing at all.
    uint64_t cutLogs = 0;
    uint64_t noLogs = 0;
    uint64_t unreadable = 0;
};

}  // namespace logs

#endif

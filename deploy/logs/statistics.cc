#include "logs/statistics.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <iterator>
#include <tuple>

#include "logs/readable.h"

namespace logs {
namespace {

// By machines first: one sender can make up as many installations as he likes.
bool isMoreFrequent(const Tally::Row& a, const Tally::Row& b) {
    const auto rank = [](const Tally::Row& row) {
        return std::tuple(~row.second.machines, ~row.second.installations(), row.first);
    };
    return rank(a) < rank(b);
}

}  // namespace

uint64_t Count::installations() const {
    return of(Outcome::Succeeded) + of(Outcome::Failed) + of(Outcome::Unfinished);
}

void Count::add(const Count& other) {
    std::ranges::transform(byOutcome, other.byOutcome, byOutcome.begin(), std::plus());
    machines += other.machines;
    machine = other.machine;
}

void Tally::add(const std::string& name, Outcome outcome, const std::string& machine) {
    Count& count = counts_[name];
    ++count.byOutcome.at(static_cast<size_t>(outcome));
    if (count.machine != machine) ++count.machines;
    count.machine = machine;
    if (counts_.size() < 2 * kMost) return;
    const Selection kept = mostFrequent(kMost);
    counts_ = {kept.rows.begin(), kept.rows.end()};
    others_ = kept.others;
}

Tally::Selection Tally::mostFrequent(size_t most) const {
    Selection selection{{counts_.begin(), counts_.end()}, others_};
    std::ranges::sort(selection.rows, isMoreFrequent);
    while (selection.rows.size() > most) {
        selection.others.add(selection.rows.back().second);
        selection.rows.pop_back();
    }
    return selection;
}

Tally::Selection Tally::lastUpTo(const std::string& limit, size_t most) const {
    Selection selection{{}, others_};
    const auto end = counts_.upper_bound(limit);
    const auto known = static_cast<size_t>(std::distance(counts_.begin(), end));
    const auto begin = std::prev(end, static_cast<ptrdiff_t>(std::min(most, known)));
    selection.rows.assign(begin, end);
    for (auto it = counts_.begin(); it != begin; ++it) selection.others.add(it->second);
    for (auto it = end; it != counts_.end(); ++it) selection.others.add(it->second);
    return selection;
}

size_t Durations::bucketOf(uint64_t seconds) {
    const auto bits = static_cast<unsigned>(std::bit_width(seconds));
    const unsigned shift = bits > kExactBits ? bits - kExactBits : 0;
    return kSteps * shift + (seconds >> shift);
}

// The middle of what falls into the bucket.
uint64_t Durations::secondsOf(size_t bucket) {
    if (bucket < 2 * kSteps) return bucket;
    const size_t shift = bucket / kSteps - 1;
    return ((bucket - kSteps * shift) << shift) + (size_t{1} << shift) / 2;
}

void Durations::add(uint64_t seconds) {
    seconds = std::min(seconds, kLongest);
    ++buckets_.at(bucketOf(seconds));
    ++count_;
    longest_ = std::max(longest_, seconds);
}

uint64_t Durations::quantile(double share) const {
    for (const auto& [seconds, reached] : shares()) {
        if (reached >= share) return seconds;
    }
    return 0;
}

std::vector<std::pair<uint64_t, double>> Durations::shares() const {
    std::vector<std::pair<uint64_t, double>> shares;
    uint64_t passed = 0;
    for (size_t bucket = 0; bucket < buckets_.size(); ++bucket) {
        if (buckets_[bucket] == 0) continue;
        passed += buckets_[bucket];
        shares.emplace_back(std::min(secondsOf(bucket), longest_),
                            static_cast<double>(passed) / static_cast<double>(count_));
    }
    return shares;
}

void Statistics::add(const Installation& told, const std::string& machine) {
    ++all.byOutcome.at(static_cast<size_t>(told.outcome));
    if (told.outcome == Outcome::Joined) return;
    days.add(dateOf(told.begin), told.outcome, machine);
    releases.add(told.release, told.outcome, machine);
    if (told.outcome == Outcome::Failed) {
        const std::string why = told.error + (told.cause.empty() ? "" : ": " + told.cause);
        failures.add(withoutParticulars(why), told.outcome, machine);
    }
    if (told.outcome == Outcome::Unfinished) {
        unfinished.add(withoutParticulars(told.last), told.outcome, machine);
    }
    if (told.outcome == Outcome::Succeeded && !told.seconds) ++withoutDuration;
    if (told.seconds) installation.add(*told.seconds);
    if (told.startSeconds) start.add(*told.startSeconds);
}

void Statistics::endMachine(Outcome last) {
    ++machines;
    const bool hasClient = last == Outcome::Succeeded || last == Outcome::Joined;
    if (hasClient) ++machinesWithClient;
}

}  // namespace logs

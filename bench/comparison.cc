// Running pairs in turns and printing them side by side.
#include "comparison.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <utility>
#include <vector>

namespace bench {
namespace {

struct Pair {
    std::string name;
    std::string peerName;  // empty: a single figure
    Limit limit;
    std::string unit;  // empty: a time
};

std::vector<Pair> g_pairs;

constexpr char kOurs[] = "/ours";
constexpr char kPeer[] = "/peer";
constexpr int kRepetitions = 7;

// Figures of all repetitions by name: seconds an iteration, or the counter "value".
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::printf("%s: %s\n", run.run_name.function_name.c_str(),
                            run.error_message.c_str());
                failed = true;
            }
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const auto value = run.counters.find("value");
            figures[run.run_name.function_name].push_back(
                value != run.counters.end() ? double(value->second)
                                            : run.real_accumulated_time / double(run.iterations));
        }
        std::printf(".");
        std::fflush(stdout);
    }

    double median(const std::string& name) {
        std::vector<double>& values = figures[name];
        if (values.empty()) return 0;
        std::nth_element(values.begin(), values.begin() + long(values.size() / 2), values.end());
        return values[values.size() / 2];
    }

    std::map<std::string, std::vector<double>> figures;
    bool failed = false;
};

std::string toText(double seconds, const std::string& unit) {
    char text[32];
    if (!unit.empty()) {
        std::snprintf(text, sizeof text, "%.1f %s", seconds, unit.c_str());
    } else if (seconds < 1e-3) {
        std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
    } else {
        std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
    }
    return text;
}

bool keeps(const Limit& limit, double ours, double peer) {
    switch (limit.kind) {
        case Limit::Kind::MaxRatio:
            return ours <= limit.value * peer;
        case Limit::Kind::MaxExtraMillis:
            return (ours - peer) * 1e3 <= limit.value;
        default:
            return true;
    }
}

std::string toText(const Limit& limit) {
    char text[32] = "-";
    if (limit.kind == Limit::Kind::MaxRatio) std::snprintf(text, sizeof text, "%.2f", limit.value);
    if (limit.kind == Limit::Kind::MaxExtraMillis) {
        std::snprintf(text, sizeof text, "+%.1f ms", limit.value);
    }
    return text;
}

void printSingle(const Pair& single, Collector& collector) {
    const double value = collector.median(single.name + kOurs);
    const bool kept = value <= single.limit.value;
    std::printf("%-44s %13s %24s %8s  %11s  %s\n", single.name.c_str(),
                toText(value, single.unit).c_str(), "", "",
                toText(single.limit.value, single.unit).c_str(), kept ? "kept" : "missed");
}

void printPair(const Pair& pair, Collector& collector) {
    const double ours = collector.median(pair.name + kOurs);
    const double peer = collector.median(pair.name + kPeer);
    const bool kept = keeps(pair.limit, ours, peer);
    const bool limited = pair.limit.kind != Limit::Kind::None;
    std::printf("%-44s %13s %13s %-10s %8.2f  %11s  %s\n", pair.name.c_str(),
                toText(ours, pair.unit).c_str(), toText(peer, pair.unit).c_str(),
                pair.peerName.c_str(), peer > 0 ? ours / peer : 0, toText(pair.limit).c_str(),
                !limited ? ""
                : kept   ? "kept"
                         : "missed");
}

benchmark::internal::Benchmark* add(const std::string& name, Body body) {
    auto* added = benchmark::RegisterBenchmark(name.c_str(), std::move(body));
    return added->Repetitions(kRepetitions);
}

}  // namespace

void compare(const std::string& name, Body ours, const std::string& peerName, Body peer,
             Limit limit, bool manualTime, int iterations) {
    for (auto& [side, body] : {std::pair{kOurs, ours}, {kPeer, peer}}) {
        auto* added = add(name + side, body);
        manualTime ? added->UseManualTime() : added->UseRealTime();
        if (iterations > 0) added->Iterations(iterations);
    }
    g_pairs.push_back({name, peerName, limit, ""});
}

void compareKiB(const std::string& name, Body ours, const std::string& peerName, Body peer) {
    add(name + kOurs, std::move(ours))->Iterations(1)->Repetitions(1);
    add(name + kPeer, std::move(peer))->Iterations(1)->Repetitions(1);
    g_pairs.push_back({name, peerName, {}, "KiB"});
}

void measure(const std::string& name, const std::string& unit, Body body, double limit) {
    add(name + kOurs, std::move(body))->Iterations(1)->Repetitions(3);
    g_pairs.push_back({name, "", {Limit::Kind::None, limit}, unit});
}

bool runAndPrint() {
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    std::printf("\n\nMedians of %d runs each, both sides in turns. Ratio: ours / peer.\n\n",
                kRepetitions);
    std::printf("%-44s %13s %13s %-10s %8s  %11s\n", "", "ours", "peer", "", "ratio", "limit");
    for (const Pair& pair : g_pairs) {
        if (collector.figures[pair.name + kOurs].empty()) continue;  // filtered out
        pair.peerName.empty() ? printSingle(pair, collector) : printPair(pair, collector);
    }
    return !collector.failed;
}

}  // namespace bench

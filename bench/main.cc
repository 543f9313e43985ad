// Runs the benchmarks and prints each figure beside its peer. Takes Google Benchmark's options, for
// example --benchmark_filter=download. Exit status 1 when a side failed to do its work.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "comparison.h"
#include "groups.h"
#include "servers.h"

int main(int argc, char** argv) {
    // Both sides of a pair in turns, so that a machine that slows down slows both.
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string minTime = "--benchmark_min_time=0.1";
    arguments.insert(arguments.begin() + 1, {interleaving.data(), minTime.data()});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

    bench::startServers();
    bench::addDownloads();
    bench::addSocketHttp();
    bench::addMemory();
    bench::addInstallation();
    bench::addLogLine();
    bench::addJson();
    bench::addApiRequests();
    return bench::runAndPrint() ? EXIT_SUCCESS : EXIT_FAILURE;
}

// The groups of benchmarks; each function registers one.
#ifndef BENCH_GROUPS_H
#define BENCH_GROUPS_H

namespace bench {

void addDownloads();
void addSocketHttp();
void addMemory();
void addInstallation();
void addLogLine();
void addJson();
void addApiRequests();

}  // namespace bench

#endif

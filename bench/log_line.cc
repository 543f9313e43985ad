// A log line against a bare open, write and close of the same bytes.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "comparison.h"
#include "groups.h"
#include "support/log_file.h"

namespace bench {
namespace {

constexpr char kPath[] = "/Applications/Velnor/bare.txt";

// Other benchmarks remove the folder.
void makeFolder() { std::filesystem::create_directories("/Applications/Velnor"); }

void writeLogLine(benchmark::State& state) {
    makeFolder();
    for (auto _ : state) VN_LOG_INFO("vn_install", "Downloaded %s", "https://origin.example/file");
}

void writeBareLine(benchmark::State& state) {
    makeFolder();
    const std::string line =
        "V1001:261121_120000: [info] Installer:vn_install(100): Downloaded "
        "https://origin.example/file\n";
    for (auto _ : state) {
        const int fd = open(kPath, O_WRONLY | O_CREAT | O_APPEND, 0666);
        if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
            state.SkipWithError("the line was not written");
        }
        close(fd);
    }
}

}  // namespace

void addLogLine() {
    compare("log line", writeLogLine, "bare", writeBareLine, {Limit::Kind::MaxRatio, 1.5});
}

}  // namespace bench

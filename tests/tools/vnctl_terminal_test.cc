// The progress bar on a terminal.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace {

// What a terminal of so many columns receives from an installation that finds no server.
std::string shownOn(unsigned short columns) {
    const winsize size{24, columns, 0, 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        execl(VNCTL, "vnctl", "install", nullptr);
        _exit(127);
    }
    std::string shown;
    char chunk[4096];
    for (ssize_t count = 0; (count = read(terminal, chunk, sizeof chunk)) > 0;) {
        shown.append(chunk, static_cast<size_t>(count));
    }
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
    return shown;
}

std::string bar(size_t filled, size_t width, const std::string& number) {
    return "\r[" + std::string(filled, '#') + std::string(width - filled, ' ') + "] " + number;
}

TEST(VnctlTerminal, RedrawsOneBarInPlace) {
    const struct {
        unsigned short columns;
        size_t width;
    } rows[] = {{80, 50}, {200, 50}, {28, 20}, {8, 0}, {1, 0}, {0, 50}};
    for (const auto& [columns, width] : rows) {
        const std::string expected = bar(width * 5 / 100, width, "  5%") +
                                     bar(width * 10 / 100, width, " 10%") +
                                     bar(width * 15 / 100, width, " 15%") + "\r\nvnctl: ";
        EXPECT_EQ(shownOn(columns).substr(0, expected.size()), expected) << columns;
    }
}

}  // namespace

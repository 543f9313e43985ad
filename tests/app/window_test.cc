// The installer application as its user meets it.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "app/screen.h"
#include "harness/files.h"
#include "harness/shell.h"
#include "install/world.h"
#include "sandbox/servers/silent_port.h"
#include "velnor_deployment.h"

namespace {

using harness::eventually;
using harness::installed;
using harness::run;
using Clock = std::chrono::steady_clock;

constexpr size_t kWidth = 300;
constexpr size_t kHeight = 14;

// A configuration server that never answers: the bar stays at 15 percent.
std::unique_ptr<sandbox::SilentPort> silentServer() {
    const std::string host = velnor::deployment::kConfigurationHost;
    return std::make_unique<sandbox::SilentPort>(std::stoi(host.substr(host.find(':') + 1)));
}

// Points in the middle row that are as the first one is.
size_t filledPoints(const std::string& window) {
    const std::string pixels = Screen::pixels(window);
    if (pixels.size() != kWidth * kHeight * 3) return 0;
    const auto point = [&](size_t x) { return pixels.substr((kHeight / 2 * kWidth + x) * 3, 3); };
    size_t count = 0;
    while (count < kWidth && point(count) == point(0)) ++count;
    return count;
}

// The bar is 304 points wide and begins 2 points left of the window.
bool showsPercentage(const std::string& window, size_t percentage) {
    const size_t expected = 304 * percentage / 100 - 2;
    return eventually([&] {
        const size_t filled = filledPoints(window);
        return filled + 3 >= expected && filled <= expected + 3;
    });
}

// With the window manager's own button, which is above the window's right corner.
void closeWindow(const std::string& window, size_t width = kWidth) {
    Screen::press("mousemove --sync --window " + window + " " + std::to_string(width - 10) +
                  " -10 sleep 0.1 click 1");
}

bool hasUninstalled() {
    return run("grep -c '^unload' /run/launchd/calls 2>/dev/null").output == "1\n";
}

TEST(Window, HasItsTitleSizeAndBar) {
    const Screen screen;
    const auto server = silentServer();
    Application application;
    const std::string window = Screen::window(1);
    EXPECT_EQ(run("xdotool getwindowname " + window).output, "Installing Velnor Corvane\n");
    EXPECT_NE(run("xdotool getwindowgeometry " + window).output.find("Geometry: 300x14\n"),
              std::string::npos);
    EXPECT_TRUE(showsPercentage(window, 15)) << filledPoints(window);
    const Clock::time_point start = Clock::now();
    closeWindow(window);
    EXPECT_EQ(application.status(), 0);
    EXPECT_LE(Clock::now() - start, std::chrono::seconds(5)) << "while a download runs";
    EXPECT_EQ(Application::said(), "");
    EXPECT_FALSE(hasUninstalled());
}

// As GNUstep hands on what the user has chosen for all programs.
TEST(Window, IsInTheUsersLanguageAndScale) {
    const Screen screen;
    const auto server = silentServer();
    const struct {
        const char* language;
        const char* scale;
        const char* title;
        const char* size;
    } rows[] = {
        {"(German)", "1", "Velnor Corvane wird installiert", "300x14"},
        {"(French)", "2", "Installation de Velnor Corvane", "600x28"},
        {"(Spanish)", "1", "Instalación de Velnor Corvane", "300x14"},
        {"(Japanese)", "2", "Velnor Corvane をインストール中", "600x28"},
    };
    for (const auto& [language, scale, title, size] : rows) {
        Application application(INSTALLER, {"-NSLanguages", language, "-GSScaleFactor", scale});
        const std::string window = Screen::window(1);
        EXPECT_EQ(run("xdotool getwindowname " + window).output, std::string(title) + "\n");
        EXPECT_NE(run("xdotool getwindowgeometry " + window)
                      .output.find(std::string("Geometry: ") + size + "\n"),
                  std::string::npos);
        closeWindow(window, std::stoul(size));
        EXPECT_EQ(application.status(), 0);
        EXPECT_EQ(Application::said(), "");
    }
}

TEST(Window, FollowsTheInstallation) {
    const Screen screen;
    World world;
    world.publish();
    harness::writeFile("/tmp/standin_client.mode", "refuse");
    Application application;
    EXPECT_TRUE(showsPercentage(Screen::window(1), 85)) << filledPoints(Screen::window(1));
    std::filesystem::remove("/tmp/standin_client.mode");
    const Clock::time_point start = Clock::now();
    run("cd /tmp; " + installed("ksmac_1.6.5") + " </dev/null >/dev/null 2>&1 &");
    EXPECT_TRUE(showsPercentage(Screen::window(1), 100));
    EXPECT_EQ(application.status(), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1)) << "for which the bar is full";
    EXPECT_EQ(Application::said(), "");
    EXPECT_EQ(harness::readFile(installed("appregistry.dat")), "Velnor\n");
}

TEST(Alert, IsAnsweredAndTheUninstallRuns) {
    const Screen screen;
    // The user's own, where the program is started.
    std::filesystem::create_directory("/tmp/installer.txt");
    harness::writeFile("/tmp/installer.txt/letter", "");
    std::filesystem::current_path("/tmp");
    Application application;  // no server is there
    EXPECT_NE(Screen::window(2), "");
    EXPECT_FALSE(hasUninstalled());
    Screen::press("key Return");
    EXPECT_EQ(application.status(), 0);
    EXPECT_TRUE(hasUninstalled());
    EXPECT_TRUE(harness::exists("/tmp/installer.txt/letter"));
}

TEST(Alert, LeavesTheWindowToBeClosed) {
    const Screen screen;
    Application application;
    const std::string alert = Screen::window(2);
    Screen::press("windowmove --sync " + alert + " 10 450");
    closeWindow(Screen::windows().front());
    EXPECT_EQ(application.status(), 0);
    EXPECT_FALSE(hasUninstalled());
}

// As when a window manager closes the alert in its own way, or the user logs out.
TEST(Alert, EndsWithItsDisplayAndTheUninstallRuns) {
    auto screen = std::make_unique<Screen>();
    Application application;
    EXPECT_NE(Screen::window(2), "");
    screen.reset();
    EXPECT_EQ(application.status(), 0);
    EXPECT_TRUE(hasUninstalled());
}

TEST(Alert, IsLeftOutWhenItsTextsAreMissing) {
    const Screen screen;
    std::filesystem::create_directory("/tmp/Installer.app");
    std::filesystem::copy_file(INSTALLER, "/tmp/Installer.app/Installer");
    Application application("/tmp/Installer.app/Installer");
    EXPECT_EQ(application.status(), 0);
    EXPECT_TRUE(hasUninstalled());
}

TEST(Installer, InstallsNothingWithoutADisplay) {
    for (const char* display : {static_cast<const char*>(nullptr), ":99"}) {
        if (display != nullptr) setenv("DISPLAY", display, 1);
        Application application;
        EXPECT_EQ(application.status(), 0);
        EXPECT_EQ(Application::said(),
                  "The installer needs a display and finds none. Nothing was installed.\n");
        EXPECT_TRUE(std::filesystem::is_empty("/Applications"));
    }
}

TEST(Installer, EndsWithItsDisplay) {
    auto screen = std::make_unique<Screen>();
    const auto server = silentServer();
    Application application;
    EXPECT_NE(Screen::window(1), "");
    screen.reset();
    EXPECT_EQ(application.status(), 0);
    EXPECT_EQ(Application::said(), "");
}

// With a client that is there already, the whole installation runs while the window is made.
TEST(Installer, StartsFiftyTimes) {
    const Screen screen;
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    for (int start = 0; start < 50; ++start) {
        Application application;
        ASSERT_EQ(application.status(), 0) << start;
        ASSERT_EQ(Application::said(), "") << start;
    }
}

}  // namespace

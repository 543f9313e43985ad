// The installer application as its user meets it: on a screen in memory with a window manager.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "harness/harness.h"
#include "install/world.h"
#include "sandbox/servers/silent_port.h"
#include "velnor_deployment.h"

namespace {

using harness::eventually;
using harness::installed;
using harness::run;

constexpr size_t kWidth = 300;
constexpr int kBarWidth = 304;  // from 2 points left of the window on

// From construction to destruction, as the DISPLAY of whatever is started.
struct Screen {
    explicit Screen(const std::string& size = "1024x768") {
        static int number = 0;
        const std::string display = ":" + std::to_string(++number);
        setenv("DISPLAY", display.c_str(), 1);
        start("Xvfb " + display + " -screen 0 " + size + "x24 -nolisten tcp -noreset");
        EXPECT_TRUE(eventually([] { return run("xdotool getdisplaygeometry 2>&1").status == 0; }));
        start("openbox --sm-disable");
        EXPECT_TRUE(eventually([] { return run("xdotool get_num_desktops 2>&1").status == 0; }));
    }
    ~Screen() { run("kill " + pids); }
    void start(const std::string& program) {
        pids += run(program + " </dev/null >/dev/null 2>&1 & printf '%s ' $!").output;
    }
    std::string pids;
};

// Starts the application. Classes of Objective-C are never released (harness/sanitizer_options.cc).
void start(const std::string& command = INSTALLER) {
    run("rm -f /tmp/status; (LSAN_OPTIONS=detect_leaks=0 " + command +
        " >/tmp/said 2>&1; echo $? >/tmp/status) </dev/null >/dev/null 2>&1 &");
}

// Waits for its end, and gives its status as the shell has it and what it has written.
std::string end() {
    EXPECT_TRUE(eventually([] { return harness::readFile("/tmp/status").ends_with('\n'); }));
    return harness::readFile("/tmp/status") + harness::readFile("/tmp/said");
}

// Waits until the application shows `count` windows, and gives them in the order of their making.
std::vector<std::string> windows(size_t count) {
    const std::string search =
        "xdotool search --onlyvisible --classname '^Installer$' 2>&1 | sort -n";
    std::vector<std::string> ids(count);
    EXPECT_TRUE(eventually([&] {
        std::istringstream words(run(search).output);
        for (std::string& id : ids) words >> id;
        return words && (words >> std::ws).eof();
    }));
    return ids;
}

// With the window manager's own button, which is above the window's right corner. Once more when it
// was not there yet.
void closeWindow(const std::string& window, size_t width = kWidth) {
    EXPECT_TRUE(eventually([&] {
        run("xdotool mousemove --window " + window + " " + std::to_string(width - 10) +
            " -10 sleep 0.1 click 1 sleep 0.1 2>&1");
        return run("xdotool getwindowname " + window + " 2>&1").status != 0;
    }));
}

// Whether the points in the middle row, up to this percentage of the bar, are as the first one is.
bool showsPercentage(const std::string& window, int percentage) {
    const std::string points = "import -silent -window " + window + " -crop 300x1+0+7 txt:- | " +
                               "tail -n +2 | awk '{ print $3 }' | uniq -c";
    return eventually([&] {
        const int filled = std::atoi(run(points).output.c_str());
        return std::abs(filled - (kBarWidth * percentage / 100 - 2)) <= 3;
    });
}

// A configuration server that never answers: the bar stays at 15 percent.
auto silentServer() {
    const std::string host = velnor::deployment::kConfigurationHost;
    return std::make_unique<sandbox::SilentPort>(std::stoi(host.substr(host.find(':') + 1)));
}

bool hasUninstalled() {
    return run("grep -c '^unload' /run/launchd/calls 2>/dev/null").output == "1\n";
}

// The language and the scale as GNUstep hands on what the user has chosen for all programs.
TEST(Window, IsInTheUsersLanguageAndScaleAndCanBeClosed) {
    const Screen screen;
    const auto server = silentServer();
    const char* const rows[][3] = {
        {"", "Installing Velnor Corvane", "300x14"},
        {" -NSLanguages '(German)'", "Velnor Corvane installieren", "300x14"},
        {" -NSLanguages '(French)' -GSScaleFactor 2", "Installer Velnor Corvane", "600x28"},
        {" -NSLanguages '(Spanish)'", "Instalación de Velnor Corvane", "300x14"},
        {" -NSLanguages '(Japanese)'", "Velnor Corvane をインストール中", "300x14"},
    };
    for (const auto& [arguments, title, size] : rows) {
        start(std::string(INSTALLER) + arguments);
        const std::string window = windows(1)[0];
        EXPECT_EQ(run("xdotool getwindowname " + window).output, std::string(title) + "\n");
        EXPECT_TRUE(run("xdotool getwindowgeometry " + window)
                        .output.ends_with(std::string("Geometry: ") + size + "\n"));
        EXPECT_TRUE(*size == '6' || showsPercentage(window, 15));
        closeWindow(window, std::stoul(size));
        EXPECT_EQ(end(), "0\n");
    }
    EXPECT_FALSE(hasUninstalled());
}

TEST(Window, FollowsTheInstallation) {
    const Screen screen;
    World world;
    world.publish();
    harness::writeFile("/tmp/standin_client.mode", "refuse");
    start();
    EXPECT_TRUE(showsPercentage(windows(1)[0], 85));
    std::filesystem::remove("/tmp/standin_client.mode");
    const auto before = std::chrono::steady_clock::now();
    run("cd /tmp; " + installed("ksmac_1.6.5") + " </dev/null >/dev/null 2>&1 &");
    EXPECT_TRUE(showsPercentage(windows(1)[0], 100));
    EXPECT_EQ(end(), "0\n");
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(1)) << "full";
    EXPECT_EQ(harness::readFile(installed("appregistry.dat")), "Velnor\n");
}

// How many lines of letters a part of the window shows; none when its first or its last row of
// points cuts through one, or through a frame.
int linesOfText(const std::string& window, const std::string& part) {
    const std::string count =
        "import -silent -window " + window + " miff:- | convert - -shave 4x0 " + part +
        " +repage -colorspace gray -threshold 40% -scale '1x!' txt:- | tail -n +2 | awk '"
        "{ ink = !/#FFFFFF/; cut = cut || NR == 1 && ink; lines += ink && !was; was = ink } "
        "END { print cut || ink ? 0 : lines }'";
    return std::atoi(run(count).output.c_str());
}

// With as long a detail as there is, which no screen cuts off.
TEST(Alert, ShowsItsTextOnEveryScreen) {
    World world;
    world.ini["MacOSClientURL"] = World::originUrl(std::string(300, 'x'));
    world.publish();
    const struct {
        const char* screen;
        double scale;
        const char* language;
        const char* title;
    } rows[] = {
        {"1366x768", 2, "English", "Installation Failed"},
        {"1280x720", 2, "English", "Installation Failed"},
        {"1024x768", 2, "English", "Installation Failed"},
        {"800x600", 2, "English", "Installation Failed"},
        {"640x480", 1, "English", "Installation Failed"},
        {"1024x768", 1.5, "English", "Installation Failed"},
        {"640x480", 2, "German", "Installation fehlgeschlagen"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.screen) + " " + std::to_string(row.scale));
        const Screen screen(row.screen);
        start(std::string(INSTALLER) + " -GSScaleFactor " + std::to_string(row.scale) +
              " -NSLanguages '(" + row.language + ")'");
        const std::string alert = windows(2)[1];
        EXPECT_EQ(run("xdotool getwindowname " + alert).output, std::string(row.title) + "\n");
        const auto points = [&](int count) { return std::to_string(int(count * row.scale)); };
        const std::string belowHeading = "-chop 0x" + points(68);
        const std::string aboveButton = " -gravity south -chop 0x" + points(34);
        const std::string secondWord = "-crop 0x" + points(60) + "+" + points(165) + "+4";
        EXPECT_TRUE(
            eventually([&] { return linesOfText(alert, belowHeading + aboveButton) >= 6; }));
        EXPECT_EQ(linesOfText(alert, secondWord), 1);
        run("xdotool key Return");
        EXPECT_EQ(end(), "0\n");
    }
}

TEST(Alert, LeavesTheWindowToBeClosed) {
    const Screen screen;
    start();
    const std::vector<std::string> ids = windows(2);
    run("xdotool windowmove --sync " + ids[1] + " 10 450");
    closeWindow(ids[0]);
    EXPECT_TRUE(end().starts_with("0\n"));
    EXPECT_FALSE(hasUninstalled());
}

// Started where the user has a folder with the name of the log.
TEST(Alert, IsLeftOutWhenItsTextsAreMissing) {
    const Screen screen;
    run("cd /tmp; mkdir Installer.app installer.txt; touch installer.txt/letter; "
        "cp '" INSTALLER "' Installer.app");
    start("env -C /tmp /tmp/Installer.app/Installer");
    EXPECT_TRUE(end().starts_with("0\n"));
    EXPECT_TRUE(hasUninstalled());
    EXPECT_TRUE(harness::exists("/tmp/installer.txt/letter"));
}

TEST(Installer, InstallsNothingWithoutADisplay) {
    for (const char* display : {"", "DISPLAY=:99 "}) {
        start(std::string(display) + INSTALLER);
        EXPECT_EQ(end(),
                  "0\nThe installer needs a display and finds none. Nothing was installed.\n");
        EXPECT_TRUE(std::filesystem::is_empty("/Applications"));
    }
}

// As when a window manager closes the alert in its own way, or the user logs out.
TEST(Installer, EndsWithItsDisplayAndRemovesWhatFailed) {
    for (const bool fails : {false, true}) {
        auto screen = std::make_unique<Screen>();
        const auto server = fails ? nullptr : silentServer();
        start();
        windows(fails ? 2 : 1);
        screen.reset();
        EXPECT_TRUE(end().starts_with("0\n"));
        EXPECT_EQ(hasUninstalled(), fails);
    }
}

// With a client that is there already, the whole installation runs while the window is made.
TEST(Installer, StartsFiftyTimes) {
    const Screen screen;
    World world;
    world.publish();
    ASSERT_EQ(install().result, 0);
    for (int i = 0; i < 50; ++i) {
        start();
        ASSERT_EQ(end(), "0\n") << i;
    }
}

}  // namespace

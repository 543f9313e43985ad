// A screen in memory with a window manager, and the installer application on it.
#ifndef TESTS_APP_SCREEN_H
#define TESTS_APP_SCREEN_H

#include <sys/types.h>

#include <string>
#include <vector>

/// From construction to destruction, as the DISPLAY of whatever is started.
class Screen {
  public:
    Screen();
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Visible windows of the application, in the order of their making.
    static std::vector<std::string> windows();

    /// Waits until there are `count` of them, and gives the last one; empty when that never comes.
    static std::string window(size_t count);

    /// Red, green and blue of a window's points, row by row.
    static std::string pixels(const std::string& window);

    /// Presses a key or a button of the mouse, as xdotool writes it.
    static void press(const std::string& what);

  private:
    std::string pids_;
};

/// The installer application, started at once.
class Application {
  public:
    explicit Application(const std::string& program = INSTALLER,
                         std::vector<std::string> arguments = {});

    /// Waits for its end and gives its status as the shell's $?; 124 after `seconds`.
    int status(int seconds = 20);

    /// What it has written to either output.
    static std::string said();

  private:
    pid_t pid_;
};

#endif

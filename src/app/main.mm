// The installer's process entry.
#include <unistd.h>

#include <csignal>
#include <iostream>

#import "app/installer_controller.h"
#include "platform/desktop.h"

namespace {

void runInstaller() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    velnor::platform::showWindowsAlone();
    InstallerController* controller = [InstallerController getGlobalInstance];
    NSApplication* application = [NSApplication sharedApplication];
    [application activateIgnoringOtherApps:YES];
    [application setDelegate:controller];
    [application run];
    [pool release];
}

}  // namespace

int main() {
    std::signal(SIGPIPE, SIG_IGN);
    velnor::platform::watchDisplay([] { [InstallerController displayHasGone]; });
    // Asked first, because the controller installs as soon as it exists.
    if (!velnor::platform::hasDisplay()) {
        std::cerr << "The installer needs a display and finds none. Nothing was installed.\n";
        return 0;
    }
    // An uninstall deletes in the current directory what has the name of the log.
    if (chdir("/") == 0) runInstaller();
    return 0;
}

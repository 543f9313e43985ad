// The window server's desktop. Most of what it needs to be told elsewhere it knows by itself: fonts
// stand in for each other, events are not forgotten, and a program brings no window but its own.
#import <AppKit/AppKit.h>

#include <cstdlib>

#include "platform/desktop.h"
#include "platform/mac/old_calls.h"

namespace velnor::platform {

bool hasDisplay() { return CGMainDisplayID() != kCGNullDirectDisplay; }

// A user who logs out ends the program, which AppKit does by exit(3).
void watchDisplay(void (*onGone)()) { std::atexit(onGone); }

void showWindowsAlone() {}

void useFontFor(const char* /*text*/) {}

void showAlert(const char* title, const char* message, const char* button) {
    old::runAlertPanel([NSString stringWithUTF8String:title],
                       [NSString stringWithUTF8String:message],
                       [NSString stringWithUTF8String:button]);
}

void keepEventsFlowing() {}

}  // namespace velnor::platform

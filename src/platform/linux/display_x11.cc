// The display that clients of the X Window System use.
#include <X11/Xlib.h>

#include "platform/desktop.h"

namespace velnor::platform {
namespace {

void (*g_onGone)() = nullptr;

}  // namespace

bool hasDisplay() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return false;
    XCloseDisplay(display);
    return true;
}

void watchDisplay(void (*onGone)()) {
    g_onGone = onGone;
    XSetIOErrorHandler([](Display*) {
        g_onGone();
        return 0;
    });
}

}  // namespace velnor::platform

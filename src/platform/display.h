// The screen that windows are shown on.
#ifndef VELNOR_PLATFORM_DISPLAY_H
#define VELNOR_PLATFORM_DISPLAY_H

namespace velnor {

/// Whether the window system that the user works with can be reached.
bool hasDisplay();

/// From now on `onGone` is called when the display goes: the user has logged out, or a window
/// manager has cut the connection to close a window. `onGone` uses no display and ends the process.
void watchDisplay(void (*onGone)());

}  // namespace velnor

#endif

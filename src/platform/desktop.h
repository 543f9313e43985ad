// The screen that windows are shown on, and what a program has to say so that they look right
// there.
#ifndef VELNOR_PLATFORM_DESKTOP_H
#define VELNOR_PLATFORM_DESKTOP_H

namespace velnor::platform {

/// Whether the window system that the user works with can be reached.
bool hasDisplay();

/// From now on `onGone` is called when the display goes: the user has logged out, or a window
/// manager has cut the connection to close a window. `onGone` uses no display and ends the process.
void watchDisplay(void (*onGone)());

/// Nothing but the program's windows appears. To be called before the application object exists.
void showWindowsAlone();

/// Chooses a font that has every character of `text` (UTF-8) when the user's own has not. To be
/// called once the application object exists and before it shows a text.
void useFontFor(const char* text);

/// Shows a modal alert with one button and waits until it is dismissed. The texts are UTF-8. To be
/// called on the main thread once the application has launched.
void showAlert(const char* title, const char* message, const char* button);

/// No click waits for the next one before it is seen. To be called on the main thread once the
/// application object exists.
void keepEventsFlowing();

}  // namespace velnor::platform

#endif

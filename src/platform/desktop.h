// What a program has to say so that its windows look right on the desktop it is on.
#ifndef VELNOR_PLATFORM_DESKTOP_H
#define VELNOR_PLATFORM_DESKTOP_H

namespace velnor {

/// Nothing but the program's windows appears. To be called before the application object exists.
void showWindowsAlone();

/// Chooses a font that has every character of `text` (UTF-8) when the user's own has not. To be
/// called once the application object exists and before it shows a text.
void useFontFor(const char* text);

/// No click waits for the next one before it is seen. To be called on the main thread once the
/// application object exists.
void keepEventsFlowing();

}  // namespace velnor

#endif

// The installer's one object: delegate of the application, owner of the window with its progress
// bar, and of the thread that installs.
#ifndef VELNOR_APP_INSTALLER_CONTROLLER_H
#define VELNOR_APP_INSTALLER_CONTROLLER_H

#import <AppKit/AppKit.h>

#include <cstdint>

@interface InstallerController : NSResponder <NSApplicationDelegate, NSWindowDelegate> {
    NSProgressIndicator* progressIndicator;
}

/// The one instance. The first call creates it, which starts the installation on a thread of its
/// own; that call is the main thread's.
+ (InstallerController*)getGlobalInstance;

/// Ends the process with status 0. An installation that has failed is removed first, as it would be
/// after its alert.
+ (void)displayHasGone;

/// Shows `percentage` in the bar, or as soon as there is a bar. Any thread may call it.
- (void)setProgress:(int32_t)percentage;

@end

#endif

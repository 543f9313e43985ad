// GNUstep's settings, given as defaults beneath the user's own.
#import <AppKit/AppKit.h>

#include <initializer_list>

#include "platform/desktop.h"

namespace velnor::platform {
namespace {

void registerDefault(NSString* value, NSString* key) {
    NSDictionary* settings = [NSDictionary dictionaryWithObject:value forKey:key];
    [[NSUserDefaults standardUserDefaults] registerDefaults:settings];
}

BOOL covers(NSFont* font, NSCharacterSet* characters) {
    return [[font coveredCharacterSet] isSupersetOfSet:characters];
}

NSCharacterSet* lettersOf(const char* text) {
    NSMutableCharacterSet* letters = [[[NSMutableCharacterSet alloc] init] autorelease];
    [letters addCharactersInString:[NSString stringWithUTF8String:text]];
    [letters formIntersectionWithCharacterSet:[NSCharacterSet letterCharacterSet]];
    return letters;
}

}  // namespace

void showWindowsAlone() { registerDefault(@"YES", @"GSSuppressAppIcon"); }

// GNUstep draws a text in one font alone, and a question mark for what that font does not have.
void useFontFor(const char* text) {
    NSCharacterSet* letters = lettersOf(text);
    if (covers([NSFont systemFontOfSize:0], letters)) return;
    NSEnumerator* names = [[[NSFontManager sharedFontManager] availableFonts] objectEnumerator];
    while (NSString* name = [names nextObject]) {
        if (!covers([NSFont fontWithName:name size:0], letters)) continue;
        registerDefault(name, @"NSFont");
        registerDefault(name, @"NSBoldFont");
        return;
    }
}

// GNUstep's event loop can fall asleep on an event that it has read with the answer to something
// else, and would sleep until the next one comes.
void keepEventsFlowing() {
    NSTimer* timer = [NSTimer timerWithTimeInterval:0.1
                                             target:NSApp
                                           selector:@selector(self)
                                           userInfo:nil
                                            repeats:YES];
    for (NSString* mode :
         {NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode}) {
        [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
    }
}

}  // namespace velnor::platform

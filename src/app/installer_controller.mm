#import "app/installer_controller.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "app/failure_message.h"
#include "platform/desktop.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace {

constexpr char kApplicationName[] = "Velnor";

// The same style on both systems, but under two names.
constexpr auto kBarStyle = static_cast<NSProgressIndicatorStyle>(0);

InstallerController* g_instance = nil;

// The latest percentage; the bar may come later, or be too busy to show each one.
std::atomic<int32_t> g_progress{0};

// An alert that came before the window would stand in the way of the launch that makes the window.
std::atomic<bool> g_hasLaunched{false};

// From then on there is something to remove before the process ends.
std::atomic<bool> g_hasFailed{false};
std::mutex g_removal;  // never unlocked

// One thread ends the process while the other one draws or installs. Destructors of static objects,
// the toolkit's among them, would pull the ground from under it, so none run.
[[noreturn]] void endProcess() { _exit(EXIT_SUCCESS); }

void onProgress(uint32_t percentage, uint32_t /*reserved*/) {
    [[InstallerController getGlobalInstance] setProgress:static_cast<int32_t>(percentage)];
}

// Empty when the string tables have no text of their own for the key.
NSString* localized(NSString* key) {
    NSString* text = [[NSBundle mainBundle] localizedStringForKey:key value:@"" table:nil];
    // A key that is in no table comes back as it is.
    return [text isEqualToString:key] ? @"" : text;
}

const char* localizedText(const char* key) {
    return [localized([NSString stringWithUTF8String:key]) UTF8String];
}

velnor::OwnedText makeDetailBuffer() {
    velnor::OwnedText buffer(static_cast<char*>(_vn_malloc(VN_ERROR_DETAIL_SIZE)));
    if (buffer) std::memset(buffer.get(), 0, VN_ERROR_DETAIL_SIZE);
    return buffer;
}

struct Failure {
    uint32_t code;
    const char* detail;  // null when there is none
};

// What is there to be removed depends on how far the installation came. What rm, find and launchctl
// say about the rest would alarm the user and is no news to anyone.
void silenceCommands() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere != -1) dup2(nowhere, STDERR_FILENO);
}

// By the thread that comes first. It ends the process, for which the other one waits here.
void removeWhatFailed() {
    g_removal.lock();
    silenceCommands();
    vn_uninstall(kApplicationName, VN_UNINSTALL_KEEP_IDENTITY);
}

}  // namespace

/// A window that can be closed while the alert is up.
@interface InstallerWindow : NSWindow
@end

@implementation InstallerWindow

- (BOOL)worksWhenModal {
    return YES;
}

@end

@interface InstallerController (Steps)
- (NSWindow*)makeWindow;
- (void)showProgress;
- (void)installClient:(id)unused;
- (BOOL)install;
- (void)reportFailure:(const Failure&)failure;
- (void)showFailure:(NSValue*)failure;
@end

@implementation InstallerController

+ (InstallerController*)getGlobalInstance {
    if (g_instance == nil) g_instance = [[self alloc] init];
    return g_instance;
}

- (id)init {
    self = [super init];
    if (self == nil) return nil;
    // Known before the worker is, which asks for it perhaps before this method has returned.
    g_instance = self;
    [NSThread detachNewThreadSelector:@selector(installClient:) toTarget:self withObject:nil];
    return self;
}

+ (void)displayHasGone {
    if (g_hasFailed) removeWhatFailed();
    endProcess();
}

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
    (void)notification;
    velnor::platform::useFontFor(localizedText("FAILED_TO_INSTALL"));
    velnor::platform::keepEventsFlowing();
    progressIndicator = [[NSProgressIndicator alloc] init];
    [progressIndicator setStyle:kBarStyle];
    [progressIndicator setIndeterminate:NO];
    [self showProgress];
    [[self makeWindow] makeKeyAndOrderFront:nil];
    g_hasLaunched = true;
    g_hasLaunched.notify_one();
}

- (NSWindow*)makeWindow {
    const NSRect content = NSMakeRect(0, 0, 300, 14);
    NSWindow* window = [[InstallerWindow alloc]
        initWithContentRect:content
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                    backing:NSBackingStoreBuffered
                      defer:YES];
    [window setDelegate:self];
    [window setTitle:localized(@"INSTALL_TITLE")];
    [window center];
    NSView* view = [[NSView alloc] initWithFrame:content];
    [view addSubview:progressIndicator];
    // Beyond the view's edges, where the bar's own border does not show.
    [progressIndicator setFrame:NSMakeRect(-2, -4, 304, 18)];
    [window setContentView:view];
    [view release];
    return window;
}

- (void)windowWillClose:(NSNotification*)notification {
    (void)notification;
    endProcess();
}

- (void)setProgress:(int32_t)percentage {
    g_progress = percentage;
    // What is on the screen belongs to the main thread.
    [self performSelectorOnMainThread:@selector(showProgress) withObject:nil waitUntilDone:NO];
}

- (void)showProgress {
    [progressIndicator setDoubleValue:g_progress];
}

- (void)installClient:(id)unused {
    (void)unused;
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    if ([self install]) {
        [self setProgress:100];
        [NSThread sleepForTimeInterval:1.0];
    } else {
        removeWhatFailed();
    }
    [pool release];
    endProcess();
}

- (BOOL)install {
    const velnor::OwnedText detail = makeDetailBuffer();
    InstallContext context{};
    context.structSize = sizeof context;
    context.progress = onProgress;
    context.errorDetail = detail.get();
    if (vn_install(kApplicationName, 0, nullptr, &context) == 0) return YES;
    [self reportFailure:Failure{vn_getLastError(), detail.get()}];
    return NO;
}

- (void)reportFailure:(const Failure&)failure {
    g_hasFailed = true;
    g_hasLaunched.wait(false);
    // The pointer is good for as long as this thread waits.
    [self performSelectorOnMainThread:@selector(showFailure:)
                           withObject:[NSValue valueWithPointer:&failure]
                        waitUntilDone:YES];
}

- (void)showFailure:(NSValue*)value {
    const auto* failure = static_cast<const Failure*>([value pointerValue]);
    velnor::OwnedText buffer;
    const char* message =
        velnor::failureMessage(failure->code, failure->detail, localizedText, buffer);
    if (message == nullptr) return;
    const char* button = localizedText("OK");
    velnor::platform::showAlert(localizedText("INSTALL_ERROR_TITLE"), message,
                                *button != '\0' ? button : "OK");
}

@end

// The AppKit classes that the application uses, as in Foundation.h.
#ifndef VELNOR_SDK_APPKIT_H
#define VELNOR_SDK_APPKIT_H

#import <Foundation/Foundation.h>

#define VELNOR_OLD_MAC(version) \
    __attribute__((availability(macos, introduced = 10.0, deprecated = version)))

@class NSNotification, NSResponder, NSWindow;
#ifdef __cplusplus
extern "C" {
#endif
NSInteger NSRunAlertPanel(NSString* title, NSString* format, NSString* button, NSString* other,
                          NSString* third, ...) VELNOR_OLD_MAC(10.10);
#ifdef __cplusplus
}
#endif

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
@end
@protocol NSWindowDelegate <NSObject>
@optional
- (void)windowWillClose:(NSNotification*)notification;
@end

@interface NSResponder : NSObject
@end
@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame;
- (void)setFrame:(NSRect)frame;
- (void)addSubview:(NSView*)view;
@end
typedef NSUInteger NSProgressIndicatorStyle;
static const NSProgressIndicatorStyle NSProgressIndicatorStyleBar = 0;
VELNOR_OLD_MAC(10.14) static const NSProgressIndicatorStyle NSProgressIndicatorBarStyle = 0;
@interface NSProgressIndicator : NSView
- (void)setStyle:(NSProgressIndicatorStyle)style;
- (void)setIndeterminate:(BOOL)flag;
- (void)setDoubleValue:(double)value;
@end
typedef NSUInteger NSWindowStyleMask;
enum : NSWindowStyleMask { NSWindowStyleMaskTitled = 1, NSWindowStyleMaskClosable = 2 };
typedef NSUInteger NSBackingStoreType;
enum : NSBackingStoreType { NSBackingStoreBuffered = 2 };
@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;
- (void)setDelegate:(id<NSWindowDelegate>)delegate;
- (void)setTitle:(NSString*)title;
- (void)center;
- (void)setContentView:(NSView*)view;
- (void)makeKeyAndOrderFront:(id)sender;
- (BOOL)worksWhenModal;
@end
@interface NSApplication : NSResponder
+ (NSApplication*)sharedApplication;
- (void)activateIgnoringOtherApps:(BOOL)flag;
- (void)setDelegate:(id<NSApplicationDelegate>)delegate;
- (void)run;
@end
#endif

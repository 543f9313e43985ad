// The AppKit and Foundation classes that the application uses, and no more. Written for this
// project from their documented interfaces, and laxer than those; on a Mac its own headers are
// used.
#ifndef VELNOR_SDK_APPKIT_H
#define VELNOR_SDK_APPKIT_H

#import <objc/NSObject.h>
#import <objc/objc.h>
#include <stdint.h>

#define VELNOR_OLD_MAC(version) \
    __attribute__((availability(macos, introduced = 10.0, deprecated = version)))

@class NSNotification, NSResponder, NSString, NSWindow;
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double CGFloat;
typedef double NSTimeInterval;
typedef struct CGPoint {
    CGFloat x, y;
} NSPoint;
typedef struct CGSize {
    CGFloat width, height;
} NSSize;
typedef struct CGRect {
    NSPoint origin;
    NSSize size;
} NSRect;
static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    NSRect rect = {{x, y}, {w, h}};
    return rect;
}

typedef uint32_t CGDirectDisplayID;
enum { kCGNullDirectDisplay = 0 };
#ifdef __cplusplus
extern "C" {
#endif
CGDirectDisplayID CGMainDisplayID(void);
NSInteger NSRunAlertPanel(NSString* title, NSString* format, NSString* button, NSString* other,
                          NSString* third, ...) VELNOR_OLD_MAC(10.10);
#ifdef __cplusplus
}
#endif

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
- (const char*)UTF8String;
- (NSUInteger)length;
- (BOOL)isEqualToString:(NSString*)other;
@end
@interface NSConstantString : NSString
@end
@interface NSValue : NSObject
+ (NSValue*)valueWithPointer:(const void*)pointer;
- (void*)pointerValue;
@end
@interface NSAutoreleasePool : NSObject
@end
@interface NSBundle : NSObject
+ (NSBundle*)mainBundle;
- (NSString*)localizedStringForKey:(NSString*)key value:(NSString*)value table:(NSString*)table;
@end
@interface NSThread : NSObject
+ (void)detachNewThreadSelector:(SEL)selector toTarget:(id)target withObject:(id)argument;
+ (void)sleepForTimeInterval:(NSTimeInterval)seconds;
@end
@interface NSObject (NSThreadPerformAdditions)
- (void)performSelectorOnMainThread:(SEL)selector withObject:(id)argument waitUntilDone:(BOOL)wait;
@end

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

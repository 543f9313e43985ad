// The Foundation classes that the application uses, and no more. Written for this project from
// their documented interfaces, and laxer than those; on a Mac its own headers are used.
#ifndef VELNOR_SDK_FOUNDATION_H
#define VELNOR_SDK_FOUNDATION_H

#import <CoreGraphics/CoreGraphics.h>
#import <objc/NSObject.h>
#import <objc/objc.h>

@class NSString;
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef CGRect NSRect;
static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
    NSRect rect = {{x, y}, {w, h}};
    return rect;
}

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
#endif

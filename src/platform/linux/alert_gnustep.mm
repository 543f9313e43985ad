// The alert on GNUstep. It looks like GNUstep's own, which puts a text that takes more than three
// fifths of the screen into a scroller and shows nothing of it.
#import <AppKit/AppKit.h>

#include <algorithm>
#include <cmath>

#include "platform/desktop.h"

namespace velnor::platform {
namespace {

// Lengths are in points, of which a screen has the fewer the larger the user has things drawn.
constexpr CGFloat kMargin = 8;
constexpr CGFloat kIconSide = 48;
constexpr CGFloat kTitleLeft = kMargin + kIconSide + kMargin;
constexpr CGFloat kLine = 2;
constexpr CGFloat kHeader = kMargin + kIconSide + kMargin + kLine;
constexpr CGFloat kMessageMargin = 6;
constexpr NSSize kSmallestButton{72, 24};
constexpr CGFloat kSmallestHeight = 161;
constexpr CGFloat kTitleFont = 18;
constexpr CGFloat kMessageFont = 14;
constexpr CGFloat kSmallestFont = 4;
// Of the screen, in tenths. What is left is for the window's frame.
constexpr int kUsualShare = 6;
constexpr int kLargestShare = 9;

struct Alert {
    NSTextField* title;
    NSTextField* message;
    NSButton* button;
    NSSize size;
};

NSTextField* makeText(const char* text) {
    NSTextField* field = [[[NSTextField alloc] init] autorelease];
    [field setStringValue:[NSString stringWithUTF8String:text]];
    [field setEditable:NO];
    // For a user who sends it to the support.
    [field setSelectable:YES];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    return field;
}

NSButton* makeButton(const char* title) {
    NSButton* button = [[[NSButton alloc] init] autorelease];
    [button setTitle:[NSString stringWithUTF8String:title]];
    [button setTarget:NSApp];
    [button setAction:@selector(stopModal)];
    [button setKeyEquivalent:@"\r"];
    [button setImagePosition:NSImageRight];
    [button setImage:[NSImage imageNamed:@"common_ret"]];
    [button setAlternateImage:[NSImage imageNamed:@"common_retH"]];
    [button sizeToFit];
    const NSSize size = [button frame].size;
    [button setFrameSize:NSMakeSize(std::max(size.width, kSmallestButton.width),
                                    std::max(size.height, kSmallestButton.height))];
    return button;
}

CGFloat scale() { return [[NSScreen mainScreen] userSpaceScaleFactor]; }

NSSize shareOfScreen(int tenths) {
    const NSSize pixels = [[NSScreen mainScreen] visibleFrame].size;
    const CGFloat factor = tenths / (10 * scale());
    return NSMakeSize(pixels.width * factor, pixels.height * factor);
}

// Gives the text the size that it needs in this font and in lines of at most `width`.
//
// Letters that GNUstep scales it puts where those of the smaller font would be, on top of each
// other even. So the text is measured and drawn in pixels, in a font that needs no scaling.
NSSize fitText(NSTextField* text, NSString* fontName, CGFloat fontSize, CGFloat width) {
    [text setFont:[NSFont fontWithName:fontName size:fontSize * scale()]];
    const NSRect bounds =
        [[text attributedStringValue] boundingRectWithSize:NSMakeSize(width * scale(), 1e6)
                                                   options:NSStringDrawingUsesLineFragmentOrigin];
    const NSSize pixels = NSMakeSize(std::ceil(NSWidth(bounds)), std::ceil(NSHeight(bounds)));
    const NSSize points = NSMakeSize(pixels.width / scale(), pixels.height / scale());
    [text setFrameSize:points];
    [text setBoundsSize:pixels];
    return points;
}

void fitTitle(NSTextField* title) {
    const CGFloat room = shareOfScreen(kLargestShare).width - kTitleLeft - kMargin;
    CGFloat font = kTitleFont;
    NSString* name = [[NSFont systemFontOfSize:font] fontName];
    while (fitText(title, name, font, 1e6).width > room && font > kSmallestFont) --font;
}

bool fitsInto(Alert& alert, CGFloat font, NSSize room) {
    NSString* name = [[NSFont messageFontOfSize:font] fontName];
    const NSSize message = fitText(alert.message, name, font, room.width - 2 * kMargin);
    const CGFloat title = kTitleLeft + NSWidth([alert.title frame]) + kMargin;
    const CGFloat height = kHeader + kMessageMargin + message.height + kMessageMargin +
                           NSHeight([alert.button frame]) + kMargin;
    alert.size =
        NSMakeSize(std::max(message.width + 2 * kMargin, title), std::max(height, kSmallestHeight));
    return height <= room.height;
}

// The message takes more of the screen before it is written smaller.
void fitMessage(Alert& alert) {
    int tenths = kUsualShare;
    CGFloat font = kMessageFont;
    while (!fitsInto(alert, font, shareOfScreen(tenths)) && font > kSmallestFont) {
        if (tenths < kLargestShare) {
            ++tenths;
        } else {
            --font;
        }
    }
}

NSView* makeIcon(CGFloat top) {
    NSImageView* icon = [[[NSImageView alloc] init] autorelease];
    [icon setFrame:NSMakeRect(kMargin, top - kMargin - kIconSide, kIconSide, kIconSide)];
    [icon setImage:[NSApp applicationIconImage]];
    return icon;
}

NSView* makeLine(NSSize size) {
    NSBox* line = [[[NSBox alloc] init] autorelease];
    [line setFrame:NSMakeRect(0, size.height - kHeader, size.width, kLine)];
    [line setTitlePosition:NSNoTitle];
    [line setBorderType:NSGrooveBorder];
    return line;
}

void place(const Alert& alert, NSView* content) {
    const NSSize size = alert.size;
    const NSSize title = [alert.title frame].size;
    const NSSize message = [alert.message frame].size;
    const NSSize button = [alert.button frame].size;
    const CGFloat aboveButton = kMargin + button.height;
    const CGFloat room = size.height - kHeader - aboveButton;
    [alert.title setFrameOrigin:NSMakePoint(kTitleLeft, size.height - kMargin -
                                                            (kIconSide + title.height) / 2)];
    [alert.message setFrameOrigin:NSMakePoint((size.width - message.width) / 2,
                                              aboveButton + (room - message.height) / 2)];
    [alert.button setFrameOrigin:NSMakePoint(size.width - kMargin - button.width, kMargin)];
    [content addSubview:makeIcon(size.height)];
    [content addSubview:makeLine(size)];
    [content addSubview:alert.title];
    [content addSubview:alert.message];
    [content addSubview:alert.button];
}

}  // namespace

void showAlert(const char* title, const char* message, const char* button) {
    Alert alert{makeText(title), makeText(message), makeButton(button), NSZeroSize};
    [[alert.message cell] setWraps:YES];
    fitTitle(alert.title);
    fitMessage(alert);
    NSPanel* panel =
        [[[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, alert.size.width, alert.size.height)
                                    styleMask:NSWindowStyleMaskTitled
                                      backing:NSBackingStoreBuffered
                                        defer:YES] autorelease];
    [panel setReleasedWhenClosed:NO];
    [panel setHidesOnDeactivate:NO];
    [panel setTitle:[alert.title stringValue]];
    place(alert, [panel contentView]);
    [panel makeFirstResponder:alert.button];
    [NSApp runModalForWindow:panel];
    [panel orderOut:nil];
}

}  // namespace velnor::platform

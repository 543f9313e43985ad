// The Core Foundation calls that the Mac backend makes. Written for this project from their
// documented signatures, to build where there is no Mac SDK; on a Mac its own headers are used.
#ifndef VELNOR_SDK_COREFOUNDATION_H
#define VELNOR_SDK_COREFOUNDATION_H

#include <stdint.h>

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef uint16_t UInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef int32_t OSStatus;
typedef UInt32 FourCharCode;
typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef UInt32 CFStringEncoding;
typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFData* CFDataRef;
typedef const struct __CFURL* CFURLRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFNumber* CFNumberRef;
typedef const struct __CFBoolean* CFBooleanRef;
typedef struct __CFReadStream* CFReadStreamRef;
typedef struct __CFError* CFErrorRef;

enum { kCFStringEncodingASCII = 0x0600, kCFStringEncodingUTF8 = 0x08000100 };
typedef CFIndex CFComparisonResult;
enum { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };
typedef CFOptionFlags CFStringCompareFlags;
typedef CFIndex CFNumberType;
enum { kCFNumberSInt32Type = 3 };
typedef CFIndex CFStreamStatus;
enum {
    kCFStreamStatusNotOpen = 0,
    kCFStreamStatusOpening,
    kCFStreamStatusOpen,
    kCFStreamStatusReading,
    kCFStreamStatusWriting,
    kCFStreamStatusAtEnd,
    kCFStreamStatusClosed,
    kCFStreamStatusError
};
typedef struct {
    CFIndex domain;
    SInt32 error;
} CFStreamError;
typedef struct VelnorDictionaryKeyCallBacks CFDictionaryKeyCallBacks;
typedef struct VelnorDictionaryValueCallBacks CFDictionaryValueCallBacks;
#ifdef __APPLE__
#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))
#else
// Of the double in tests/mac: the compiler makes such constants for a Mac alone.
extern "C" CFStringRef VelnorConstantString(const char* text);
#define CFSTR(text) VelnorConstantString("" text "")
#endif

#ifdef __cplusplus
extern "C" {
#endif
extern const CFBooleanRef kCFBooleanTrue;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
void CFRelease(CFTypeRef object);
CFTypeRef CFRetain(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex size, CFStringEncoding encoding);
SInt32 CFStringGetIntValue(CFStringRef text);
CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFStringCompareFlags flags);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex size);
CFStringRef CFURLCopyScheme(CFURLRef url);
CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef text, CFURLRef base);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
Boolean CFReadStreamOpen(CFReadStreamRef stream);
void CFReadStreamClose(CFReadStreamRef stream);
CFStreamStatus CFReadStreamGetStatus(CFReadStreamRef stream);
Boolean CFReadStreamHasBytesAvailable(CFReadStreamRef stream);
CFIndex CFReadStreamRead(CFReadStreamRef stream, UInt8* buffer, CFIndex size);
CFErrorRef CFReadStreamCopyError(CFReadStreamRef stream);
CFStringRef CFErrorCopyDescription(CFErrorRef error);
CFTypeRef CFReadStreamCopyProperty(CFReadStreamRef stream, CFStringRef name);
Boolean CFReadStreamSetProperty(CFReadStreamRef stream, CFStringRef name, CFTypeRef value);
#ifdef __cplusplus
}
#endif
#endif

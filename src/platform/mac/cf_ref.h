// Core Foundation objects that belong to one owner: what a call with "Create" or "Copy" in its name
// gives, and nothing that one with "Get" gives.
#ifndef VELNOR_PLATFORM_MAC_CF_REF_H
#define VELNOR_PLATFORM_MAC_CF_REF_H

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace velnor::platform {

struct CfReleaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Gives its reference back when it goes; null holds none. CfRef<CFStringRef> text(CFString...());
template <class Ref>
using CfRef = std::unique_ptr<std::remove_pointer_t<Ref>, CfReleaser>;

/// Null for a text that is not in `encoding`.
inline CfRef<CFStringRef> makeString(const char* text,
                                     CFStringEncoding encoding = kCFStringEncodingASCII) {
    return CfRef<CFStringRef>(CFStringCreateWithCString(nullptr, text, encoding));
}

}  // namespace velnor::platform

#endif

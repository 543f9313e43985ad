// References; strings, numbers, data, URLs and dictionaries.
#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "mac/objects.h"
#include "platform/linux/curl_handle.h"

namespace {

bool isIn(CFStringEncoding encoding, const std::string& text) {
    return encoding != kCFStringEncodingASCII ||
           std::none_of(text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; });
}

enum Types : CFTypeID { kString = 1, kNumber, kOther };

}  // namespace

void mac::complain(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

const std::string* mac::find(const Fields& fields, const std::string& name) {
    for (const auto& [key, value] : fields) {
        if (strcasecmp(key.c_str(), name.c_str()) == 0) return &value;
    }
    return nullptr;
}

__CFDictionary::~__CFDictionary() {
    for (const auto& [key, value] : entries) CFRelease(key), CFRelease(value);
}

void __CFDictionary::add(CFTypeRef key, CFTypeRef value) {
    entries.emplace_back(static_cast<CFStringRef>(CFRetain(key)), CFRetain(value));
}

struct VelnorDictionaryKeyCallBacks {};
struct VelnorDictionaryValueCallBacks {};

extern "C" {

const CFBooleanRef kCFBooleanTrue = mac::make<__CFBoolean>();
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeRef CFRetain(CFTypeRef object) {
    ++static_cast<const mac::Object*>(object)->references;
    return object;
}

void CFRelease(CFTypeRef object) {
    const auto* known = static_cast<const mac::Object*>(object);
    if (--known->references == 0) delete known;
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    const auto* known = static_cast<const mac::Object*>(object);
    if (dynamic_cast<const __CFString*>(known) != nullptr) return kString;
    return dynamic_cast<const __CFNumber*>(known) != nullptr ? kNumber : kOther;
}
CFTypeID CFStringGetTypeID() { return kString; }
CFTypeID CFNumberGetTypeID() { return kNumber; }

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    return isIn(encoding, text) ? mac::make<__CFString>(text) : nullptr;
}

Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex size,
                           CFStringEncoding encoding) {
    if (static_cast<CFIndex>(text->text.size()) >= size || !isIn(encoding, text->text)) return 0;
    std::strcpy(buffer, text->text.c_str());
    return 1;
}

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFStringCompareFlags) {
    return std::clamp(a->text.compare(b->text), -1, 1);
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    if (type != kCFNumberSInt32Type) mac::complain("a number of a type that is not known here");
    std::memcpy(value, &number->value, sizeof number->value);
    return 1;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex size) {
    return mac::make<__CFData>(std::string(bytes, bytes + size));
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef text, CFURLRef) {
    return velnor::platform::isUrl(text->text.c_str()) ? mac::make<__CFURL>(text->text) : nullptr;
}

CFStringRef CFURLCopyScheme(CFURLRef url) {
    return mac::make<__CFString>(url->text.substr(0, url->text.find(':')));
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef, const void** keys, const void** values,
                                   CFIndex count, const CFDictionaryKeyCallBacks*,
                                   const CFDictionaryValueCallBacks*) {
    auto* dictionary = mac::make<__CFDictionary>();
    for (CFIndex i = 0; i < count; ++i) dictionary->add(keys[i], values[i]);
    return dictionary;
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
    for (const auto& [name, value] : dictionary->entries) {
        if (name == key) return value;
    }
    return nullptr;
}

}  // extern "C"

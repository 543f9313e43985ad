// Objects and their references; strings, numbers, data, URLs and dictionaries.
#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>

#include "mac/objects.h"
#include "platform/linux/curl_handle.h"

namespace {

struct Loans {
    ~Loans() {
        if (things.size() > constants) mac::complain("not everything has been released");
    }
    std::mutex mutex;
    std::set<const void*> things;
    size_t constants = 0;
};

// Made by the first constant, in whichever file that is.
Loans& loans() {
    static Loans all;
    return all;
}

const mac::Object& checked(CFTypeRef object) {
    const auto* known = static_cast<const mac::Object*>(object);
    const std::lock_guard lock(loans().mutex);
    if (!loans().things.contains(known)) {
        mac::complain("what is no object, or none any longer, is used");
    }
    return *known;
}

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

void mac::lend(const void* thing, bool isOwned) {
    const std::lock_guard lock(loans().mutex);
    loans().things.insert(thing);
    if (!isOwned) ++loans().constants;
}

void mac::takeBack(const void* thing) {
    const std::lock_guard lock(loans().mutex);
    if (loans().things.erase(thing) == 0) complain("what is not lent is given back");
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

const CFBooleanRef kCFBooleanTrue = mac::constant<__CFBoolean>();
const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks{};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks{};

CFTypeRef CFRetain(CFTypeRef object) {
    ++checked(object).references;
    return object;
}

void CFRelease(CFTypeRef object) {
    const mac::Object& known = checked(object);
    if (known.isConstant || --known.references > 0) return;
    mac::takeBack(object);
    delete &known;
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    if (dynamic_cast<const __CFString*>(&checked(object)) != nullptr) return kString;
    return dynamic_cast<const __CFNumber*>(&checked(object)) != nullptr ? kNumber : kOther;
}
CFTypeID CFStringGetTypeID() { return kString; }
CFTypeID CFNumberGetTypeID() { return kNumber; }

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
    return isIn(encoding, text) ? mac::make<__CFString>(text) : nullptr;
}

Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex size,
                           CFStringEncoding encoding) {
    checked(text);
    if (static_cast<CFIndex>(text->text.size()) >= size || !isIn(encoding, text->text)) return 0;
    std::strcpy(buffer, text->text.c_str());
    return 1;
}

CFComparisonResult CFStringCompare(CFStringRef a, CFStringRef b, CFStringCompareFlags) {
    checked(a), checked(b);
    return std::clamp(a->text.compare(b->text), -1, 1);
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
    checked(number);
    if (type != kCFNumberSInt32Type) mac::complain("a number of a type that is not known here");
    std::memcpy(value, &number->value, sizeof number->value);
    return 1;
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex size) {
    return mac::make<__CFData>(std::string(bytes, bytes + size));
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef text, CFURLRef) {
    checked(text);
    return velnor::platform::isUrl(text->text.c_str()) ? mac::make<__CFURL>(text->text) : nullptr;
}

CFStringRef CFURLCopyScheme(CFURLRef url) {
    checked(url);
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
    checked(dictionary);
    for (const auto& [name, value] : dictionary->entries) {
        if (name == key) return value;
    }
    return nullptr;
}

}  // extern "C"

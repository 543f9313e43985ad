// A double of the Mac's frameworks: the calls that the Mac backend makes, on the Linux backend, so
// that the Mac's sources run here as they are. Where nothing promises what a framework does, it
// does the worst. Who counts references wrongly is told so by the sanitizers: an object is a block
// of its own, which goes with the last of them.
#ifndef TESTS_MAC_OBJECTS_H
#define TESTS_MAC_OBJECTS_H

// The calls alone can be seen from outside: beneath them is the other backend, under the same
// names.
#pragma GCC visibility push(default)
#include <CFNetwork/CFNetwork.h>
#include <Security/Security.h>
#include <SystemConfiguration/SystemConfiguration.h>
#pragma GCC visibility pop

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/keychain.h"
#include "platform/system_proxies.h"

namespace mac {

struct Object {
    Object() = default;
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    mutable int references = 1;
};

struct Text : Object {
    explicit Text(std::string content) : text(std::move(content)) {}
    std::string text;
};

[[noreturn]] void complain(const char* what);

/// A new object with one reference, which is the caller's; a constant's is nobody's.
template <class T, class... Arguments>
T* make(Arguments&&... arguments) {
    return new T(std::forward<Arguments>(arguments)...);
}

using Fields = std::vector<std::pair<std::string, std::string>>;

/// The value of the first field of this name, in any letter case.
const std::string* find(const Fields& fields, const std::string& name);

}  // namespace mac

struct __CFString : mac::Text {
    using Text::Text;
};
struct __CFData : mac::Text {
    using Text::Text;
};
struct __CFURL : mac::Text {
    using Text::Text;
};
struct __CFError : mac::Text {
    using Text::Text;
};
struct __CFBoolean : mac::Object {};
struct __CFNumber : mac::Object {
    explicit __CFNumber(SInt32 number) : value(number) {}
    SInt32 value;
};

struct __CFDictionary : mac::Object {
    ~__CFDictionary() override;
    void add(CFTypeRef key, CFTypeRef value);

    std::vector<std::pair<CFStringRef, CFTypeRef>> entries;
    velnor::platform::OwnedProxies proxies;  // of the system's settings: what they come from
};

struct __CFHTTPMessage : mac::Object {
    std::string method, url;  // of a request
    std::optional<std::string> body;
    long status = 0;  // of a response
    mac::Fields fields;
};

#endif

// Requests, responses, and what a proxy demands in one. Of passwords the plain kind does: what is
// made of one is the frameworks' own affair.
#include <openssl/evp.h>

#include "mac/objects.h"

struct _CFHTTPAuthentication : mac::Text {
    using Text::Text;
};

namespace {

std::string basic(const std::string& account) {
    unsigned char encoded[256];
    const int size =
        EVP_EncodeBlock(encoded, reinterpret_cast<const unsigned char*>(account.data()),
                        static_cast<int>(account.size()));
    return "Basic " + std::string(encoded, encoded + size);
}

}  // namespace

extern "C" {

const CFStringRef kCFHTTPVersion1_1 = mac::make<__CFString>("HTTP/1.1");
const CFStringRef kCFHTTPAuthenticationUsername = mac::make<__CFString>("name");
const CFStringRef kCFHTTPAuthenticationPassword = mac::make<__CFString>("password");

CFHTTPMessageRef CFHTTPMessageCreateRequest(CFAllocatorRef, CFStringRef method, CFURLRef url,
                                            CFStringRef) {
    auto* request = mac::make<__CFHTTPMessage>();
    request->method = method->text;
    request->url = url->text;
    return request;
}

void CFHTTPMessageSetHeaderFieldValue(CFHTTPMessageRef message, CFStringRef name,
                                      CFStringRef value) {
    message->fields.emplace_back(name->text, value->text);
}

void CFHTTPMessageSetBody(CFHTTPMessageRef message, CFDataRef body) { message->body = body->text; }

CFIndex CFHTTPMessageGetResponseStatusCode(CFHTTPMessageRef message) { return message->status; }

CFStringRef CFHTTPMessageCopyHeaderFieldValue(CFHTTPMessageRef message, CFStringRef name) {
    const std::string* value = mac::find(message->fields, name->text);
    return value != nullptr ? mac::make<__CFString>(*value) : nullptr;
}

CFHTTPAuthenticationRef CFHTTPAuthenticationCreateFromResponse(CFAllocatorRef,
                                                               CFHTTPMessageRef response) {
    const std::string* challenge = mac::find(response->fields, "Proxy-Authenticate");
    return challenge != nullptr ? mac::make<_CFHTTPAuthentication>(*challenge) : nullptr;
}

Boolean CFHTTPAuthenticationRequiresUserNameAndPassword(CFHTTPAuthenticationRef demand) {
    return demand->text.starts_with("Basic ");
}

Boolean CFHTTPMessageApplyCredentialDictionary(CFHTTPMessageRef request, CFHTTPAuthenticationRef,
                                               CFDictionaryRef credentials, CFStreamError*) {
    const auto text = [&](CFStringRef key) {
        return static_cast<CFStringRef>(CFDictionaryGetValue(credentials, key))->text;
    };
    const std::string account =
        text(kCFHTTPAuthenticationUsername) + ":" + text(kCFHTTPAuthenticationPassword);
    request->fields.emplace_back("Proxy-Authorization", basic(account));
    return 1;
}

}  // extern "C"

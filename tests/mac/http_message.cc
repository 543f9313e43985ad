// Requests, responses, and what a proxy demands in one.
#include <openssl/evp.h>

#include "mac/objects.h"

struct _CFHTTPAuthentication : mac::Text {
    using Text::Text;
    bool isDigest() const { return text.starts_with("Digest "); }
    // The quoted value of a parameter.
    std::string operator[](const std::string& name) const {
        const size_t begin = text.find(name + "=\"") + name.size() + 2;
        return text.substr(begin, text.find('"', begin) - begin);
    }
};

namespace {

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string md5(const std::string& text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr);
    std::string hex;
    for (unsigned i = 0; i < 2 * size; ++i) {
        hex += "0123456789abcdef"[digest[i / 2] >> (i % 2 == 0 ? 4 : 0) & 15];
    }
    return hex;
}

std::string basic(const std::string& account) {
    unsigned char encoded[256];
    const int size = EVP_EncodeBlock(encoded, bytesOf(account), static_cast<int>(account.size()));
    return "Basic " + std::string(encoded, encoded + size);
}

std::string digest(const _CFHTTPAuthentication& demand, const __CFHTTPMessage& request,
                   const std::string& user, const std::string& password) {
    const std::string realm = demand["realm"], nonce = demand["nonce"];
    const size_t host = request.url.find("://") + 3;
    const bool tunnels = request.url.starts_with("https");
    const std::string method = tunnels ? "CONNECT" : request.method;
    const std::string target =
        tunnels ? request.url.substr(host, request.url.find('/', host) - host) : request.url;
    const std::string answer = md5(md5(user + ":" + realm + ":" + password) + ":" + nonce +
                                   ":00000001:0a4f113b:auth:" + md5(method + ":" + target));
    return "Digest username=\"" + user + "\", realm=\"" + realm + "\", nonce=\"" + nonce +
           "\", uri=\"" + target + "\", qop=auth, nc=00000001, cnonce=\"0a4f113b\", response=\"" +
           answer + "\"";
}

}  // namespace

extern "C" {

const CFStringRef kCFHTTPVersion1_1 = mac::constant<__CFString>("HTTP/1.1");
const CFStringRef kCFHTTPAuthenticationUsername = mac::constant<__CFString>("name");
const CFStringRef kCFHTTPAuthenticationPassword = mac::constant<__CFString>("password");

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
    return demand->isDigest() || demand->text.starts_with("Basic ");
}

Boolean CFHTTPMessageApplyCredentialDictionary(CFHTTPMessageRef request,
                                               CFHTTPAuthenticationRef demand,
                                               CFDictionaryRef credentials, CFStreamError*) {
    const auto text = [&](CFStringRef key) {
        return static_cast<CFStringRef>(CFDictionaryGetValue(credentials, key))->text;
    };
    const std::string user = text(kCFHTTPAuthenticationUsername);
    const std::string password = text(kCFHTTPAuthenticationPassword);
    request->fields.emplace_back("Proxy-Authorization",
                                 demand->isDigest() ? digest(*demand, *request, user, password)
                                                    : basic(user + ":" + password));
    return 1;
}

}  // extern "C"

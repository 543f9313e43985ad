// The kinds of URLs that there are here, and how one is taken apart. Every decision about a URL's
// text is one of these; what a request is really sent to, the system's HTTP stack parses.
#ifndef VELNOR_SUPPORT_URL_H
#define VELNOR_SUPPORT_URL_H

#include <cstdint>

/// Splits `url` at "://" and the first "/" behind it. Returns 1 with
///   *copyOut  a copy of the URL, cut into pieces, owned by the caller
///   *hostOut  the host, without a port, within the copy
///   *portOut  the number behind the host's first ":"; left alone when there is none
///   *pathOut  what follows the "/", within the copy; null when there is no "/"
/// Nothing is decoded or checked further: "user@", an IPv6 literal or a port that is no number end
/// up as a host or port that does not exist. Returns 0 with code 1 for a null argument or a URL
/// without "://", 4 without memory; the three texts are null then.
int32_t _vn_getHostName(const char* url, char** copyOut, char** hostOut, int32_t* portOut,
                        char** pathOut);

namespace velnor {

/// What follows the first "://" in `url`; null when it has none.
const char* behindScheme(const char* url);

/// True when `url` begins with "http://", or "https://", in any letter case.
bool hasHttpScheme(const char* url);
bool hasHttpsScheme(const char* url);

/// True when `url` begins with "http://" (in lower case).
bool isHttpUrl(const char* url);

/// The same, and there is a "/" behind that.
bool isHttpUrlWithPath(const char* url);

/// True when `url` begins with "https://" (in lower case).
bool isHttpsUrl(const char* url);

/// True when `text` begins with "http://" or "https://", in any letter case.
bool hasWebScheme(const char* text);

/// True when `text` is not empty and holds only the characters of a URI (RFC 3986, section 2), with
/// "%" only before two hexadecimal digits. Its structure is not examined.
bool isUrlText(const char* text);

/// True when such a text begins with "http://" or "https://", in any letter case, and a character
/// that is no slash. Readers of URLs differ in what they make of fewer or more slashes, and then
/// the host that was checked is not the one that is asked.
bool isWebUrl(const char* text);

}  // namespace velnor

#endif

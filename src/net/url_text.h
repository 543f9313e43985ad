// Which texts can be URLs.
#ifndef VELNOR_NET_URL_TEXT_H
#define VELNOR_NET_URL_TEXT_H

namespace velnor {

/// True when `text` is not empty and holds only the characters of a URI (RFC 3986, section 2), with
/// "%" only before two hexadecimal digits. Its structure is not examined.
bool isUrlText(const char* text);

}  // namespace velnor

#endif

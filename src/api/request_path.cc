#include "api/request_path.h"

#include <cstdio>
#include <cstring>

#include "support/encodings.h"
#include "support/owned.h"
#include "support/product.h"

namespace velnor {

RequestPath::RequestPath(const char* function, int32_t cid) {
    add("api?function=");
    add(function);
    add("&cid=");
    addNumber(cid);
    add("&apiversion=");
    add(kApiVersion);
}

RequestPath::RequestPath(const char* function, int32_t cid, const char* url)
    : RequestPath(function, cid) {
    add("&url=");
    addEncoded(url);
}

void RequestPath::add(const char* text) {
    const size_t length = std::strlen(text);
    if (spoilt_ || length >= sizeof text_ - size_) {
        spoilt_ = true;
        return;
    }
    std::memcpy(text_ + size_, text, length + 1);
    size_ += length;
}

void RequestPath::addNumber(int32_t number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%d", number);
    add(digits);
}

void RequestPath::addEncoded(const char* text) {
    const OwnedText encoded(_vn_urlEncode(text));
    if (encoded) {
        add(encoded.get());
    } else {
        spoilt_ = true;
    }
}

}  // namespace velnor

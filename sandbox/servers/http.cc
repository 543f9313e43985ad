// Looking a header up.
#include "http.h"

#include <strings.h>

std::string sandbox::Request::header(const std::string& name) const {
    for (const auto& [key, value] : headers)
        if (strcasecmp(key.c_str(), name.c_str()) == 0) return value;
    return {};
}

// Filling result texts.
#include "vnctl/result_text.h"

#include "velnor/capi.h"
#include "vnctl/printable.h"

namespace vnctl {

std::string resultText(uint32_t code, const char* detail) {
    static constexpr char kPlace[] = "%s";
    std::string text = vn_errorToString(code);
    const size_t place = text.find(kPlace);
    if (place != std::string::npos) text.replace(place, sizeof kPlace - 1, printable(detail));
    return text;
}

}  // namespace vnctl

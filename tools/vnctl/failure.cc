// Result codes with advice.
#include "vnctl/failure.h"

#include "velnor/capi.h"
#include "vnctl/result_text.h"

namespace vnctl {
namespace {

constexpr struct {
    uint32_t code;
    const char* advice;
} kAdvice[] = {
    {INSTALL_ERROR_INVALIDARGUMENT, "The client does not take the URL or one of the options."},
    {INSTALL_ERROR_NOTINSTALLED,
     "The client does not run. 'vnctl install' installs it and starts it."},
    {INSTALL_ERROR_INTERNAL, "The client's reply makes no sense."},
    {INSTALL_ERROR_NETWORK, "The connection to the client broke. Try again."},
    {INSTALL_ERROR_FILEINUSE, "Close the programs that have the file open, and try again."},
    {INSTALL_ERROR_FILE_NOT_FOUND, "The client knows no such download."},
    {INSTALL_ERROR_ALREADY_DOWNLOADED,
     "'vnctl attributes' shows where it is. To download it once more, first 'vnctl delete' it; "
     "--keep-file leaves the file."},
    {INSTALL_ERROR_THROTTLED, "The client did them a short while ago. Try again later."},
    {INSTALL_ERROR_DOWNLOAD_RESET, "'vnctl download' begins it anew."},
};

}  // namespace

Failure failureOf(uint32_t code) {
    std::string message = resultText(code, "");
    for (const auto& [known, advice] : kAdvice) {
        if (known == code) message += std::string(". ") + advice;
    }
    return {code, message};
}

void check(int32_t result) {
    if (result != 0) throw failureOf(vn_getLastError());
}

}  // namespace vnctl

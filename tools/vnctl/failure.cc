#include "vnctl/failure.h"

#include <algorithm>
#include <iterator>

#include "program/text.h"
#include "velnor/capi.h"

namespace vnctl {
namespace {

// An exit status with its meaning, and the code and the state that lead to it.
struct Kind {
    ExitStatus status;
    const char* meaning;
    uint32_t code = INSTALL_ERROR_OK;  // which only the first kind stands for
    int32_t state = -1;
};

constexpr Kind kKinds[] = {
    {kDone, "done", INSTALL_ERROR_OK, FILE_STATUS_COMPLETE},
    {kFailed, "failed for a reason that is not listed here"},
    {kWrongUsage, "wrong command line"},
    {kNotRunning, "the client does not run", INSTALL_ERROR_NOTINSTALLED},
    {kNetwork, "network", INSTALL_ERROR_NETWORK},
    {kNotFound, "not found", INSTALL_ERROR_FILE_NOT_FOUND, FILE_STATUS_NOTFOUND},
    {kForbidden, "forbidden", INSTALL_ERROR_OK, FILE_STATUS_FORBIDDEN},
    {kDisk, "disk, or the client could not go on", INSTALL_ERROR_DISK,
     FILE_STATUS_INSUFFICIENTDISKSPACE},
    {kAlreadyDownloaded, "already downloaded", INSTALL_ERROR_ALREADY_DOWNLOADED},
    {kTooSoon, "too soon after the last time", INSTALL_ERROR_THROTTLED},
    {kInUse, "the file is in use", INSTALL_ERROR_FILEINUSE},
    {kPaused, "the download was paused", INSTALL_ERROR_OK, FILE_STATUS_PAUSED},
    {kInterrupted, "interrupted; the download goes on"},
};
// Every request can end with those up to here.
constexpr ExitStatus kLastOfAll = kNetwork;

// Codes of an installation with the same meanings.
constexpr struct {
    uint32_t code;
    ExitStatus status;
} kOfInstallation[] = {
    {INSTALL_ERROR_CLIENT_NOTRESPONDING, kNotRunning},
    {INSTALL_ERROR_DOWNLOAD_FAILURE, kNetwork},
    {INSTALL_ERROR_DISK_WRITE, kDisk},
    {INSTALL_ERROR_DISK_PATH_OPEN, kDisk},
    {INSTALL_ERROR_FILE_ACCESS, kDisk},
};

template <class Matches>
ExitStatus firstStatus(const Matches& matches) {
    const Kind* kind = std::find_if(std::begin(kKinds), std::end(kKinds), matches);
    return kind != std::end(kKinds) ? kind->status : kFailed;
}

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
     "'vnctl attributes' shows where it is; 'vnctl download --force' fetches it anew."},
    {INSTALL_ERROR_THROTTLED, "The client did them a short while ago. Try again later."},
    {INSTALL_ERROR_DOWNLOAD_RESET, "'vnctl download' begins it anew."},
};

}  // namespace

ExitStatus exitStatusOfCode(uint32_t code) {
    for (const auto& [known, status] : kOfInstallation) {
        if (known == code) return status;
    }
    return firstStatus([code](const Kind& kind) { return kind.code == code; });
}

ExitStatus exitStatusOfState(int32_t state) {
    return firstStatus([state](const Kind& kind) { return kind.state == state; });
}

std::string exitStatusHelp(std::initializer_list<ExitStatus> statuses) {
    std::string help = "Exit status:";
    for (const Kind& kind : kKinds) {
        const bool isOwn =
            std::find(statuses.begin(), statuses.end(), kind.status) != statuses.end();
        if (kind.status > kLastOfAll && !isOwn) continue;
        const std::string number = std::to_string(kind.status);
        help += "\n" + std::string(5 - number.size(), ' ') + number + "  " + kind.meaning;
    }
    return help;
}

std::string resultText(uint32_t code, const char* detail) {
    static constexpr char kPlace[] = "%s";
    std::string text = vn_errorToString(code);
    const size_t place = text.find(kPlace);
    if (place != std::string::npos)
        text.replace(place, sizeof kPlace - 1, program::printable(detail));
    return text;
}

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

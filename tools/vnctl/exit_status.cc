// The exit statuses as one table: number, meaning, the code and the state that lead to it, and the
// subcommands that end with it.
#include "vnctl/exit_status.h"

#include <algorithm>
#include <string_view>

#include "velnor/capi.h"

namespace vnctl {
namespace {

constexpr int kFailed = 1;

struct Kind {
    int status;
    const char* meaning;
    uint32_t code = INSTALL_ERROR_OK;  // which only the first kind stands for
    int32_t state = -1;
    std::string_view subcommands = {};  // empty for all
};

constexpr Kind kKinds[] = {
    {.status = 0, .meaning = "done", .state = FILE_STATUS_COMPLETE},
    {.status = kFailed, .meaning = "failed for a reason that is not listed here"},
    {.status = kWrongUsage, .meaning = "wrong command line"},
    {.status = 3, .meaning = "the client does not run", .code = INSTALL_ERROR_NOTINSTALLED},
    {.status = 4, .meaning = "network", .code = INSTALL_ERROR_NETWORK},
    {.status = 5,
     .meaning = "not found",
     .code = INSTALL_ERROR_FILE_NOT_FOUND,
     .state = FILE_STATUS_NOTFOUND,
     .subcommands = "download attributes pause delete"},
    {.status = 6,
     .meaning = "forbidden",
     .state = FILE_STATUS_FORBIDDEN,
     .subcommands = "download"},
    {.status = 7,
     .meaning = "disk, or the client could not go on",
     .code = INSTALL_ERROR_DISK,
     .state = FILE_STATUS_INSUFFICIENTDISKSPACE,
     .subcommands = "download delete"},
    {.status = 8,
     .meaning = "already downloaded",
     .code = INSTALL_ERROR_ALREADY_DOWNLOADED,
     .subcommands = "download pause"},
    {.status = 9,
     .meaning = "too soon after the last time",
     .code = INSTALL_ERROR_THROTTLED,
     .subcommands = "run-tasks"},
    {.status = 10,
     .meaning = "the file is in use",
     .code = INSTALL_ERROR_FILEINUSE,
     .subcommands = "delete"},
    {.status = 12,
     .meaning = "the download was paused",
     .state = FILE_STATUS_PAUSED,
     .subcommands = "download"},
    {.status = kInterrupted,
     .meaning = "interrupted; the download goes on",
     .subcommands = "download"},
};

template <class Matches>
int firstStatus(const Matches& matches) {
    const Kind* kind = std::find_if(std::begin(kKinds), std::end(kKinds), matches);
    return kind != std::end(kKinds) ? kind->status : kFailed;
}

}  // namespace

int exitStatusOfCode(uint32_t code) {
    return firstStatus([code](const Kind& kind) { return kind.code == code; });
}

int exitStatusOfState(int32_t state) {
    return firstStatus([state](const Kind& kind) { return kind.state == state; });
}

std::string exitStatusHelp(const std::string& subcommand) {
    std::string help = "Exit status:";
    for (const Kind& kind : kKinds) {
        const bool isOfAll = kind.subcommands.empty();
        if (!isOfAll && kind.subcommands.find(subcommand) == std::string_view::npos) continue;
        const std::string number = std::to_string(kind.status);
        help += "\n" + std::string(5 - number.size(), ' ') + number + "  " + kind.meaning;
    }
    return help;
}

}  // namespace vnctl

// The states of a download as one table: value, the client's keyword, English text.
#include "api/file_status.h"

#include <array>

#include "api/letter_case.h"
#include "velnor/capi.h"

namespace {

struct Status {
    int32_t value;
    const char* keyword;
    const char* text;
};

constexpr std::array<Status, 10> kStatuses{{
    {FILE_STATUS_SEARCHING, "SEARCHING", "Searching"},
    {FILE_STATUS_WAITING, "WAITING", "Waiting"},
    {FILE_STATUS_DOWNLOADING, "DOWNLOADING", "Downloading"},
    {FILE_STATUS_PAUSED, "PAUSED", "Paused"},
    {FILE_STATUS_COMPLETE, "COMPLETE", "Complete"},
    {FILE_STATUS_INSUFFICIENTDISKSPACE, "INSUFFICIENTDISKSPACE", "Insufficient Disk Space"},
    {FILE_STATUS_DISCONNECTED, "DISCONNECTED", "Disconnected"},
    {FILE_STATUS_NOTFOUND, "NOTFOUND", "Not Found"},
    {FILE_STATUS_FORBIDDEN, "FORBIDDEN", "Forbidden"},
    {FILE_STATUS_MOVING, "MOVING", "Moving"},
}};

}  // namespace

bool _vn_fileStatusFromKeyword(const char* keyword, int32_t* status) {
    for (const Status& known : kStatuses) {
        if (!velnor::equalIgnoringCase(keyword, known.keyword)) continue;
        *status = known.value;
        return true;
    }
    return false;
}

const char* vn_fileStatusToString(int32_t status) {
    for (const Status& known : kStatuses) {
        if (known.value == status) return known.text;
    }
    return "Unknown State";
}
